// Constant references in a line: "~NAME", "~[equation]", "~@1" to "~@4".
#include <cstring>
#include <string>

#include "base/catalog.h"
#include "base/diag.h"
#include "input/constants.h"
#include "input/names.h"

namespace sorvel {

int expand_variables(Source& src) {
  Run& run = src.run;
  int tilde = src.pos - 1;
  int c = src.cur();
  if (c == '[') {
    double value = 0.0;
    int r = parse_vequation(src, value);
    if (r) return r;
    return vexpand_in_buff(src, "equation", value, tilde);
  }
  if (c == '@') {
    // Only "~@" is replaced; the digit stays behind the number.
    float beats_per_sec = run.TEMPO / 60.0f;
    switch (char_at(src, src.pos + 1)) {
      case '1':
        return vexpand_in_buff(src, "@1 (Last IB Time)", run.LAST_IB_DUR, tilde);
      case '2':
        return vexpand_in_buff(src, "@2 (Cumulative Time)", run.CUM_TIME, tilde);
      case '3':
        return vexpand_in_buff(src, "@3 (Last IB Time [BEATS])",
                               static_cast<double>(beats_per_sec) * run.LAST_IB_DUR, tilde);
      case '4':
        return vexpand_in_buff(src, "@4 (Cumulative Time [BEATS])",
                               static_cast<double>(beats_per_sec) * run.CUM_TIME, tilde);
      default:
        return kErrBadAtDigit;  // the position stays on the "@"
    }
  }
  const Constant* found = nullptr;
  int r = find_vname(src, found);
  if (r != 1) return r;
  return vexpand_in_buff(src, found->name.c_str(), found->value, tilde);
}

int vexpand_in_buff(Source& src, const char* label, double value, int tilde) {
  // The expansion is announced first; only then is the new line's length
  // checked, so a line made too long shows its "Expanding const" line before
  // error 89 (the position is still where the reference was read to).
  if (!src.run.SUPRESS)
    Mprintf(src.run, "\n\tExpanding const \"%s\" (%f) into line %d...", label, value, src.line);
  std::string number = FtoA(value);
  int end = skip_vname_or_eq(src, tilde);
  size_t rest = std::strlen(src.buffer + end);
  if (static_cast<size_t>(tilde) + number.size() + rest > static_cast<size_t>(kMaxLineText))
    return kErrMacroTooLong;
  std::string text(src.buffer, static_cast<size_t>(tilde));
  text += number;
  text.append(src.buffer + end, rest);
  std::memset(src.buffer, 0, sizeof src.buffer);
  std::memcpy(src.buffer, text.data(), text.size());
  src.pos = tilde;
  return kOk;
}

int skip_vname_or_eq(const Source& src, int i) {
  ++i;  // the "~"
  int c = char_at(src, i);
  if (is_alpha(c)) {
    i = static_cast<int>(name_end(src.buffer, static_cast<size_t>(i)));
  } else if (c == '@') {
    ++i;
  } else {
    while (char_at(src, i) && char_at(src, i) != ']') ++i;
    if (char_at(src, i) == ']') ++i;
  }
  return i;
}

}  // namespace sorvel
