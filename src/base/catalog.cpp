// The numbered warning and error texts. They are printed exactly as they
// stand here, spelling and line breaks included: users and scripts know them.
#include "base/catalog.h"

#include <algorithm>
#include <iterator>

namespace sorvel {

namespace {

struct Entry {
  int number;
  const char* text;
};

constexpr Entry kWarnings[] = {
    {1, "P3 Duration < 0! (Event turned into rest...)"},
    {2, "I-block skipped! (i-no < 0)"},
    {10, "Reached end of i-time or i-events -- event(s) not added."},
    {11, "Reached end of i-time or i-events, DDF data truncated"},
    {12, "Reached end of i-time or i-events, (repeat truncated)"},
    {14, "Reached end of i-time of i-events, duration altered."},
    {15, "Previous loop terminated."},
    {19, "Are you sure you want that many p-fields?!"},
    {20, "Are you sure you want such a late start time?!"},
    {21, "Are you sure you want such a long duration?!"},
    {22, "EX Command: Division by a pfield may / by 0!"},
    {23, "Is this a duplicate macro name?!"},
    {24, "Be aware of p3 codes when using the EX command!"},
    {25, "Is this a duplicate constant name?!"},
    {26, "Yowza! Should RD be > 1 (100%)?"},
    {30, "Tempo1 is quite fast. Is that okay?"},
    {31, "Tempo1 is quite slow. Is that okay?"},
    {32, "Tempo2 is quite fast. Is that okay?"},
    {33, "Tempo2 is quite slow. Is that okay?"},
    {34, "This change starts quite late. Is that okay?"},
    {35, "This tempo change is quite long. Is that okay?"},
};

constexpr Entry kErrors[] = {
    {3, "Comments seemed to be mismatched... reached EOF."},
    {4, "P-fields don't match i-block header!"},
    {5, "Reached end-of-file before \"}\" was found."},
    {8, "EOF reached: missing macro body end (#)."},
    {9, "Ouch! Can't open the temporary file (huh?)."},
    {10, "\"i\" must be followed by a number"},
    {11, "Bad i-number."},
    {12, "Bad i-start time."},
    {13, "Bad number of beats."},
    {14, "Bad number of events."},
    {15, "P2 must be specifed first (others may be out of numerical order)."},
    {16, "Bad p-field number."},
    {17, "Invalid output specifier or precision out of range."},
    {18, "P2 and P3 must output floats."},
    {19, "Missing \")\"."},
    {20, "Invalid command."},
    {21, "P2 input must be \"re\", \"in\" or \"rh\"."},
    {22, "Invalid G-block command or character."},
    {23, "Value out of bounds or syntax error."},
    {24, "\"x\" operator must be followed by a digit."},
    {25, "Reached EOF! (missing comment \"*/\"?)"},
    {26, "P3 input must be \"re\" or \"in\"."},
    {27, "Data is out of bounds."},
    {28, "Format DV/RD(f): f = real number >= 0 and < 100 (1 = 100%)"},
    {29, "Format RS(ui): ui = UNSIGNED INT (0-65535)."},
    {30, "Missing i-block initiator ({)."},
    {31, "Missing i-block terminator (})."},
    {32, "Yikes, out of memory!"},
    {33, "Premature end-of-file!"},
    {34, "Instrument number must be followed by \"=\"."},
    {35, "Bad number of parameters?"},
    {36, "Illegal characters between DDF name and \"(\"."},
    {37, "A maximum of two values expected."},
    {38, "Percentage value expected. (Missing \")\" in last DDF?)"},
    {39, "Value missing in []s, bad input type, or out of bounds"},
    {40, "Bad number of beats or events."},
    {41, "Value(s) or []s missing?"},
    {42, "Percentages must add up to 1.0."},
    {43, "Bad loop syntax (missing \"<\" or bad placement?)"},
    {44, "P-field out of bounds! (More than specified in i-header)"},
    {45, "misplaced \"<\" (or memory error)."},
    {46, "Format te(f): f = real number."},
    {47, "Invalid global-block data"},
    {48, "Error in EX data (equations need to be in []s)."},
    {49, "Multiple ':'s! "},
    {50, "RW command: Window % value out of range (must be 0-1)."},
    {51, "RW command: Starting value out of range."},
    {52, "RW command: Bad range value."},
    {53, "TIME Varibale: Bad time percentage."},
    {54, "Must specify EVENTS when using a start interval of 0."},
    {55, "EX command: Missing or bad operation: use +, -, /, or *."},
    {56, "EX command: Equation must be enclosed in []s."},
    {57, "EX command: Error getting p-field (must be previously defined)."},
    {58, "EX command: A pfield must be used at least once."},
    {59, "EX command: Yikes, can't divide by 0!"},
    {60, "EX command: Division by pfield produces a / 0 error!"},
    {61, "HO command: Missing final \")\"."},
    {62, "S2 command may only be used in P4 and above."},
    {63, "Bad user-defined curve type (must be > 0)."},
    {64, "Beat-related move (*) not allowed when DDF time = events or in TE)"},
    {65, "Format SR(uli): uli = UNSIGNED LONG INT (0-65535+)."},
    {70, "Duplicate p-fields are not allowed."},
    {71, "Whoops, some p-fields were skipped."},
    {72, "Can't have a P2 of 0 when specifying beats in a DDF."},
    {73, "Invalid I-block command or character."},
    {80, "Error in macro \"#define\" or \"#undef\" statement."},
    {81, "Macro body must be enclosed in #s"},
    {82, "Stray \"'\" found -- too many macro arguments in call?"},
    {83, "Duplicate macro name?!"},
    {84, "Oy! You've already defined a macro with that name!"},
    {85, "Error in macro call: missing (."},
    {86, "Error in macro syntax. (Bad # of arguments?)"},
    {87, "Wrong number of arguments in macro call."},
    {88, "Macro name (or argument name) must start with an alphabetic character."},
    {89, "Macro body exceeds maximum size."},
    {90, "Macro name exceeds memory allocation."},
    {91, "There are no macros to undefine."},
    {92, "Not a macro command."},
    {93, "You must precede the \"oc\" (octave-class) mode with the \"pc\" mode."},
    {94, "\"oc\" (octave-class) mode must be the last input mode in p-field!"},
    {95, "duplicate \"oc\" (octave-class) mode found (can only have one in a p-field)"},
    {96, "Illegal characters between command name and \"(\""},
    {97, "Didn't enter anything?"},
    {100, "Eeek! You've already defined a \"const\" with that name!"},
    {101, "Error in \"const\" statement."},
    {102, "Yikes, not enough memory to allocate constant!"},
    {103, "Sorry but you can't use a macro name in a \"const\" definition."},
    {105, "\"const\" equations must be contained on a single line, sorry :("},
    {106, "\"@\" must be followed by a 1, 2, 3, or 4"},
    {107, "Oops, illegal character in \"const\" equation."},
    {108, "Illegal number of terms or operations in\"const\" equation."},
    {109, "Constant name must start with an alphabetic character."},
    {113, "Error in \"#endif\" Statement. \n(N.B. #if and #endif must be isolated to their own lines\nwith no other data than whitespace.)"},
    {114, "Error in \"#if\" Statement. \n(N.B. #if and #endif must be isolated to their own lines \nwith no other data than whitespace.)"},
    {115, "\"#if\" Statement expects a floating-point value within ()s. "},
    {116, "\"#if\" statement is missing terminal \")\""},
    {117, "Reached EOF. \"#if\" statement is missing \"#endif\"? \n(N.B. #if and #endif must be isolated\nto their own lines with no other data than whitespace.)"},
    {118, "\"#if\" statement: mismatched \"#endif\". \n(N.B. #if and #endif must be isolated to their own\n lines with no other data than whitespace.)"},
    {119, "\"#if\" statement: missing an \"#endif\"? \n(N.B. #if and #endif must be isolated to their own\n lines with no other data than whitespace.)"},
    {120, "ZOINKS! You skipped the i-block duration!"},
    {121, "Ack! Error getting the i-block duration!"},
    {125, "Format PF(f): f = real number."},
    {126, "PF only valid in P3 and higher P-fields."},
    {150, "\"te\" term1, expecting a tempo or start time."},
    {151, "\"te\" term2, bad end time."},
    {152, "\"te\" term3, bad start tempo."},
    {153, "\"te\" term4, bad end tempo."},
    {154, "\"te\" term5, error getting curve type."},
    {155, "\"te\" term1 (start time), out of range."},
    {156, "\"te\" term2 (end time), out of range."},
    {157, "\"te\" term3 (start tempo), out of range."},
    {158, "\"te\" term4 (end tempo), out of range."},
    {159, "\"te\" term1 and term2 (times), are backwards!"},
    {200, "Not implemented yet..."},
    {500, "Expecting a digit or decimal point in floating-point number."},
};

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
