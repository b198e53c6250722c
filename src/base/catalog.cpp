// The numbered warning and error texts. They are printed exactly as they
// stand here, spelling and line breaks included: users and scripts know them.
#include "base/catalog.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace sorvel {

namespace {

struct Entry {
  int number;
  const char* text;
};

// One text a line, as it prints.
// clang-format off
constexpr Entry kWarnings[] = {
    {kWarnNegativeDuration, "P3 Duration < 0! (Event turned into rest...)"},
    {kWarnBlockSkipped, "I-block skipped! (i-no < 0)"},
    {kWarnEventsNotAdded, "Reached end of i-time or i-events -- event(s) not added."},
    {kWarnDdfTruncated, "Reached end of i-time or i-events, DDF data truncated"},
    {kWarnRepeatTruncated, "Reached end of i-time or i-events, (repeat truncated)"},
    {kWarnDurationAltered, "Reached end of i-time of i-events, duration altered."},
    {kWarnLoopTerminated, "Previous loop terminated."},
    {kWarnManyPfields, "Are you sure you want that many p-fields?!"},
    {kWarnLateStart, "Are you sure you want such a late start time?!"},
    {kWarnLongDuration, "Are you sure you want such a long duration?!"},
    {kWarnExMayDivideByZero, "EX Command: Division by a pfield may / by 0!"},
    {kWarnDuplicateMacro, "Is this a duplicate macro name?!"},
    {kWarnExP3Codes, "Be aware of p3 codes when using the EX command!"},
    {kWarnDuplicateConstant, "Is this a duplicate constant name?!"},
    {kWarnDeviationOverOne, "Yowza! Should RD be > 1 (100%)?"},
    {kWarnTempo1Fast, "Tempo1 is quite fast. Is that okay?"},
    {kWarnTempo1Slow, "Tempo1 is quite slow. Is that okay?"},
    {kWarnTempo2Fast, "Tempo2 is quite fast. Is that okay?"},
    {kWarnTempo2Slow, "Tempo2 is quite slow. Is that okay?"},
    {kWarnLateChange, "This change starts quite late. Is that okay?"},
    {kWarnLongChange, "This tempo change is quite long. Is that okay?"},
};

constexpr Entry kErrors[] = {
    {kErrCommentsMismatched, "Comments seemed to be mismatched... reached EOF."},
    {kErrPfieldsMismatchHeader, "P-fields don't match i-block header!"},
    {kErrEofBeforeBrace, "Reached end-of-file before \"}\" was found."},
    {kErrEofInMacroBody, "EOF reached: missing macro body end (#)."},
    {kErrTempFile, "Ouch! Can't open the temporary file (huh?)."},
    {kErrINeedsNumber, "\"i\" must be followed by a number"},
    {kErrBadINumber, "Bad i-number."},
    {kErrBadStartTime, "Bad i-start time."},
    {kErrBadBeats, "Bad number of beats."},
    {kErrBadEvents, "Bad number of events."},
    {kErrP2First, "P2 must be specifed first (others may be out of numerical order)."},
    {kErrBadPfieldNumber, "Bad p-field number."},
    {kErrBadOutputSpec, "Invalid output specifier or precision out of range."},
    {kErrP2P3Floats, "P2 and P3 must output floats."},
    {kErrMissingParen, "Missing \")\"."},
    {kErrInvalidCommand, "Invalid command."},
    {kErrBadP2Input, "P2 input must be \"re\", \"in\" or \"rh\"."},
    {kErrBadGblockCommand, "Invalid G-block command or character."},
    {kErrValueOrSyntax, "Value out of bounds or syntax error."},
    {kErrXNeedsDigit, "\"x\" operator must be followed by a digit."},
    {kErrEofInComment, "Reached EOF! (missing comment \"*/\"?)"},
    {kErrBadP3Input, "P3 input must be \"re\" or \"in\"."},
    {kErrDataOutOfBounds, "Data is out of bounds."},
    {kErrDeviationFormat, "Format DV/RD(f): f = real number >= 0 and < 100 (1 = 100%)"},
    {kErrSeedFormat, "Format RS(ui): ui = UNSIGNED INT (0-65535)."},
    {kErrMissingBlockStart, "Missing i-block initiator ({)."},
    {kErrMissingBlockEnd, "Missing i-block terminator (})."},
    {kErrOutOfMemory, "Yikes, out of memory!"},
    {kErrPrematureEof, "Premature end-of-file!"},
    {kErrINumberNeedsEquals, "Instrument number must be followed by \"=\"."},
    {kErrBadParameterCount, "Bad number of parameters?"},
    {kErrCharsBeforeDdfParen, "Illegal characters between DDF name and \"(\"."},
    {kErrTwoValuesExpected, "A maximum of two values expected."},
    {kErrNoWeight, "Percentage value expected. (Missing \")\" in last DDF?)"},
    {kErrBracketValue, "Value missing in []s, bad input type, or out of bounds"},
    {kErrBadBeatsOrEvents, "Bad number of beats or events."},
    {kErrValuesMissing, "Value(s) or []s missing?"},
    {kErrWeightsNotOne, "Percentages must add up to 1.0."},
    {kErrBadLoop, "Bad loop syntax (missing \"<\" or bad placement?)"},
    {kErrPfieldOutOfBounds, "P-field out of bounds! (More than specified in i-header)"},
    {kErrMisplacedLoop, "misplaced \"<\" (or memory error)."},
    {kErrTempoFormat, "Format te(f): f = real number."},
    {kErrBadGblockData, "Invalid global-block data"},
    {kErrExData, "Error in EX data (equations need to be in []s)."},
    {kErrMultipleColons, "Multiple ':'s! "},
    {kErrRwWindow, "RW command: Window % value out of range (must be 0-1)."},
    {kErrRwStart, "RW command: Starting value out of range."},
    {kErrRwRange, "RW command: Bad range value."},
    {kErrTimePercentage, "TIME Varibale: Bad time percentage."},
    {kErrZeroIntervalNeedsEvents, "Must specify EVENTS when using a start interval of 0."},
    {kErrExOperation, "EX command: Missing or bad operation: use +, -, /, or *."},
    {kErrExBrackets, "EX command: Equation must be enclosed in []s."},
    {kErrExPfield, "EX command: Error getting p-field (must be previously defined)."},
    {kErrExNoPfield, "EX command: A pfield must be used at least once."},
    {kErrExDivideByZero, "EX command: Yikes, can't divide by 0!"},
    {kErrExPfieldDivideByZero, "EX command: Division by pfield produces a / 0 error!"},
    {kErrHoParen, "HO command: Missing final \")\"."},
    {kErrS2BelowP4, "S2 command may only be used in P4 and above."},
    {kErrBadCurveType, "Bad user-defined curve type (must be > 0)."},
    {kErrBeatMoveNotAllowed, "Beat-related move (*) not allowed when DDF time = events or in TE)"},
    {kErrSampleRateFormat, "Format SR(uli): uli = UNSIGNED LONG INT (0-65535+)."},
    {kErrDuplicatePfield, "Duplicate p-fields are not allowed."},
    {kErrSkippedPfields, "Whoops, some p-fields were skipped."},
    {kErrZeroP2WithBeats, "Can't have a P2 of 0 when specifying beats in a DDF."},
    {kErrBadIblockCommand, "Invalid I-block command or character."},
    {kErrMacroStatement, "Error in macro \"#define\" or \"#undef\" statement."},
    {kErrMacroBodyHashes, "Macro body must be enclosed in #s"},
    {kErrStrayQuote, "Stray \"'\" found -- too many macro arguments in call?"},
    {kErrDuplicateMacroName, "Duplicate macro name?!"},
    {kErrMacroDefined, "Oy! You've already defined a macro with that name!"},
    {kErrMacroCallParen, "Error in macro call: missing (."},
    {kErrMacroSyntax, "Error in macro syntax. (Bad # of arguments?)"},
    {kErrMacroArgCount, "Wrong number of arguments in macro call."},
    {kErrMacroNameStart, "Macro name (or argument name) must start with an alphabetic character."},
    {kErrMacroTooLong, "Macro body exceeds maximum size."},
    {kErrMacroNameTooLong, "Macro name exceeds memory allocation."},
    {kErrNoMacrosToUndefine, "There are no macros to undefine."},
    {kErrNotMacroCommand, "Not a macro command."},
    {kErrOcBeforePc, "You must precede the \"oc\" (octave-class) mode with the \"pc\" mode."},
    {kErrOcNotLast, "\"oc\" (octave-class) mode must be the last input mode in p-field!"},
    {kErrDuplicateOc, "duplicate \"oc\" (octave-class) mode found (can only have one in a p-field)"},
    {kErrCharsBeforeCommandParen, "Illegal characters between command name and \"(\""},
    {kErrNothingEntered, "Didn't enter anything?"},
    {kErrConstDefined, "Eeek! You've already defined a \"const\" with that name!"},
    {kErrConstStatement, "Error in \"const\" statement."},
    {kErrConstMemory, "Yikes, not enough memory to allocate constant!"},
    {kErrMacroInConst, "Sorry but you can't use a macro name in a \"const\" definition."},
    {kErrConstMultiline, "\"const\" equations must be contained on a single line, sorry :("},
    {kErrBadAtDigit, "\"@\" must be followed by a 1, 2, 3, or 4"},
    {kErrConstBadChar, "Oops, illegal character in \"const\" equation."},
    {kErrConstTerms, "Illegal number of terms or operations in\"const\" equation."},
    {kErrConstNameStart, "Constant name must start with an alphabetic character."},
    {kErrEndifStatement, "Error in \"#endif\" Statement. \n(N.B. #if and #endif must be isolated to their own lines\nwith no other data than whitespace.)"},
    {kErrIfStatement, "Error in \"#if\" Statement. \n(N.B. #if and #endif must be isolated to their own lines \nwith no other data than whitespace.)"},
    {kErrIfValue, "\"#if\" Statement expects a floating-point value within ()s. "},
    {kErrIfParen, "\"#if\" statement is missing terminal \")\""},
    {kErrIfEof, "Reached EOF. \"#if\" statement is missing \"#endif\"? \n(N.B. #if and #endif must be isolated\nto their own lines with no other data than whitespace.)"},
    {kErrEndifMismatched, "\"#if\" statement: mismatched \"#endif\". \n(N.B. #if and #endif must be isolated to their own\n lines with no other data than whitespace.)"},
    {kErrIfMissingEndif, "\"#if\" statement: missing an \"#endif\"? \n(N.B. #if and #endif must be isolated to their own\n lines with no other data than whitespace.)"},
    {kErrNoBlockDuration, "ZOINKS! You skipped the i-block duration!"},
    {kErrBlockDuration, "Ack! Error getting the i-block duration!"},
    {kErrPfactorFormat, "Format PF(f): f = real number."},
    {kErrPfactorInP2, "PF only valid in P3 and higher P-fields."},
    {kErrTeStart, "\"te\" term1, expecting a tempo or start time."},
    {kErrTeEnd, "\"te\" term2, bad end time."},
    {kErrTeStartTempo, "\"te\" term3, bad start tempo."},
    {kErrTeEndTempo, "\"te\" term4, bad end tempo."},
    {kErrTeCurve, "\"te\" term5, error getting curve type."},
    {kErrTeStartRange, "\"te\" term1 (start time), out of range."},
    {kErrTeEndRange, "\"te\" term2 (end time), out of range."},
    {kErrTeStartTempoRange, "\"te\" term3 (start tempo), out of range."},
    {kErrTeEndTempoRange, "\"te\" term4 (end tempo), out of range."},
    {kErrTeBackwards, "\"te\" term1 and term2 (times), are backwards!"},
    {kErrNotImplemented, "Not implemented yet..."},
    {kErrDigitExpected, "Expecting a digit or decimal point in floating-point number."},
};
// clang-format on

// The look-up below halves the table, so each table stays in rising order of
// number, and a number names one text.
template <size_t N>
constexpr bool rising(const Entry (&table)[N]) {
  for (size_t i = 1; i < N; ++i)
    if (table[i - 1].number >= table[i].number) return false;
  return true;
}
static_assert(rising(kWarnings), "warnings out of order or listed twice");
static_assert(rising(kErrors), "errors out of order or listed twice");

const char* find(const Entry* first, const Entry* last, int number) {
  const Entry* it = std::lower_bound(first, last, number,
                                     [](const Entry& e, int n) { return e.number < n; });
  return (it != last && it->number == number) ? it->text : nullptr;
}

}  // namespace

const char* warning_text(int number) {
  const char* t = find(std::begin(kWarnings), std::end(kWarnings), number);
  return t ? t : "Unspecified warning...";
}

const char* error_text(int number) {
  const char* t = find(std::begin(kErrors), std::end(kErrors), number);
  return t ? t : "Unspecified error...";
}

bool is_catalogued_error(int number) {
  return find(std::begin(kErrors), std::end(kErrors), number) != nullptr;
}

}  // namespace sorvel
