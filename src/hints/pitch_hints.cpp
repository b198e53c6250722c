#include "hints/pitch_hints.h"

#include <cstdio>
#include <string>

#include "base/chars.h"
#include "base/vocabulary.h"
#include "hints/text.h"

namespace sorvel {

namespace {

// A pitch name as the run read it, in its parts: the letter, the accidentals
// ("s", "f", "n", and "+", "-" in "nox") and the octave digits.
struct PitchName {
  char letter = 0;
  std::string accidentals;
  std::string octave;
};

bool is_accidental(int ch) { return ch == 's' || ch == 'f' || ch == 'n' || ch == '+' || ch == '-'; }

PitchName split(const char* text, int begin, int end) {
  PitchName n;
  int i = begin;
  n.letter = text[i++];
  while (i < end && is_accidental(text[i])) n.accidentals += text[i++];
  while (i < end && is_digit(text[i])) n.octave += text[i++];
  return n;
}

char lower(char c) { return static_cast<char>(to_lower(c)); }

char upper(char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c; }

bool is_pitch_letter(int c) {
  switch (to_lower(c)) {
    case 'c': case 'd': case 'e': case 'f': case 'g': case 'a': case 'b':
      return true;
    default:
      return false;
  }
}

int pitch_class(char letter) {
  switch (to_lower(letter)) {
    case 'c': return 0;
    case 'd': return 2;
    case 'e': return 4;
    case 'f': return 5;
    case 'g': return 7;
    case 'a': return 9;
    default: return 11;
  }
}

}  // namespace

void PitchHints::value_read(int line, const char* text, int begin, int end, int IN_TYPE,
                            float /*value*/) {
  if (IN_TYPE != CMD_NO || end <= begin || !is_pitch_letter(text[begin])) return;
  const PitchName name = split(text, begin, end);
  const std::string as_read = span(text, begin, end);
  const std::string head = std::string(1, lower(name.letter)) + name.accidentals;
  const int next = text[end];

  if (next == '#') {
    // "#" is a command of its own here, and is passed over; the digits after
    // it are no octave of this note.
    int stop = end + 1;
    std::string octave = name.octave;
    if (octave.empty()) {
      while (is_digit(text[stop])) ++stop;
      octave = span(text, end + 1, stop);
    }
    const std::string fix = head + "s" + octave;
    std::string read_as = name.accidentals.empty()
                              ? std::string(1, name.letter) + name.octave + " natural"
                              : quoted(as_read);
    std::string aim = name.accidentals.empty()
                          ? std::string("For ") + upper(name.letter) + " sharp write "
                          : std::string("For a semitone higher write ");
    // The macro pass takes a "#" that no directive's letter follows for the
    // start of a macro body, and expands nothing until two more "#" close it.
    const int after = text[end + 1];
    const bool opens_body = after != 'u' && after != 'c' && after != 'i' && after != 'e';
    out.push_back(
        with_fix(hint(line, begin, stop, "H01",
                      quoted(span(text, begin, stop)) + " is read as " + read_as +
                          "; \"#\" is not an accidental here. " + aim + quoted(fix) +
                          " (flat: \"f\", as in \"bf\")." +
                          (opens_body ? " The \"#\" also opens what the macro pass reads as a "
                                        "macro body: macro calls and constants after it are not "
                                        "expanded until two more \"#\" have passed."
                                      : "")),
                 fix));
    return;
  }

  if (next == 'b' && name.octave.empty() && !(begin > 0 && is_alpha(text[begin - 1]))) {
    // "b" begins a note of its own: "eb4" is e, then b4. Within a run of
    // letters ("gab") the "b" is more likely meant as a note, and is left
    // alone.
    int stop = end + 1;
    while (is_digit(text[stop])) ++stop;
    if (is_alnum(text[stop]) || is_accidental(text[stop]) || text[stop] == '#') return;
    const std::string octave = span(text, end + 1, stop);
    const std::string fix = head + "f" + octave;
    std::string aim = name.accidentals.empty()
                          ? std::string("For ") + upper(name.letter) + " flat write "
                          : std::string("For a semitone lower write ");
    out.push_back(
        with_fix(hint(line, begin, stop, "H01",
                      quoted(span(text, begin, stop)) + " is read as two notes, " + as_read +
                          " and " + span(text, end, stop) + "; \"b\" is not an accidental here. " +
                          aim + quoted(fix) + " (sharp: \"s\", as in \"gs\")."),
                 fix));
    return;
  }

  if ((next == '+' || next == '-') && !name.octave.empty()) {
    // The mark after the octave is not part of the name; the data list then
    // fails on it.
    const std::string fix = head + static_cast<char>(next) + name.octave;
    out.push_back(
        with_fix(hint(line, begin, end + 1, "H02",
                      quoted(span(text, begin, end + 1)) + " is read as " + as_read + ", and \"" +
                          static_cast<char>(next) +
                          "\" after it is no part of the name: a quarter-tone mark stands "
                          "between the letter and the octave, as in " +
                          quoted(fix) + ", and is read only after \"nox\"."),
                 fix));
  }
}

void PitchHints::value_failed(int line, const char* text, int begin, int end, int IN_TYPE) {
  if (IN_TYPE != CMD_NO || end <= begin || !is_pitch_letter(text[begin])) return;

  if (text[end] == '+' || text[end] == '-') {
    // The reader stops at a quarter-tone mark only when "x" did not follow
    // "no".
    int stop = end;
    while (is_accidental(text[stop])) ++stop;
    while (is_digit(text[stop])) ++stop;
    out.push_back(hint(line, begin, stop, "H02",
                       quoted(span(text, begin, stop)) +
                           ": the quarter-tone marks \"+\" and \"-\" are read only after "
                           "\"nox\"; after \"no\" the value fails. Write \"nox\" where this "
                           "p-field's pitch names begin (its values are then not rounded to "
                           "whole semitones)."));
    return;
  }

  if (!is_digit(text[end - 1])) return;
  // The octave was read whole and is above 9.
  const PitchName name = split(text, begin, end);
  const std::string written = span(text, begin, end);
  std::string message = quoted(written) + ": octave " + name.octave +
                        " is above 9, the highest octave of a pitch name, so the value fails.";
  if (!name.octave.empty() && name.octave.size() <= 3 &&
      name.accidentals.find_first_of("+-") == std::string::npos) {
    int semitone = std::stoi(name.octave) * 12 + pitch_class(name.letter);
    for (char a : name.accidentals) semitone += a == 's' ? 1 : a == 'f' ? -1 : 0;
    if (run.MKMIDI) {
      message += " With MIDI output it would be key " + std::to_string(semitone + 12) +
                 "; the highest key, 127, is g9.";
    } else {
      char op[32];
      std::snprintf(op, sizeof op, "%d.%02d", semitone / 12 + 4, semitone % 12);
      message += " This pitch is " + std::to_string(semitone) + ": write it in \"op\" mode as " +
                 op + ", or as the number " + std::to_string(semitone) + " in \"in\" mode.";
    }
  }
  out.push_back(hint(line, begin, end, "H03", std::move(message)));
}

}  // namespace sorvel
