#include "pfield/values.h"

#include "base/chars.h"
#include "base/observer.h"
#include "base/rounding.h"
#include "base/vocabulary.h"
#include "base/x86_int.h"
#include "output/units.h"

namespace sorvel {

namespace {

// Reads decimal digits as a number that stops growing past `cap`.
int read_capped(Source& src, int cap) {
  int n = 0;
  while (is_digit(src.cur())) {
    if (n <= cap) n = n * 10 + (src.cur() - '0');
    ++src.pos;
  }
  return n;
}

// One rhythm code with its dots: 4 / |n| beats, each dot adding half the
// previous addition; negative for a negative n. A code of 0 is read like any
// other: 4 / 0 is +infinity beats in single precision, and the dots go on in
// float from there.
int get_one_rdc(Source& src, float& value) {
  int n;
  if (!src.get_i(n)) return 0;
  float add = 4.0f / static_cast<float>(n < 0 ? -n : n);
  float len = add;
  while (src.cur() == '.') {
    add = add * 0.5f;
    len = len + add;
    ++src.pos;
  }
  value = n < 0 ? -len : len;
  return 1;
}

}  // namespace

int is_last_variable(const char* buffer, int pos) {
  return buffer[pos] == 'z' || buffer[pos] == 'Z' ? 1 : 0;
}

int in_limits(const Ctx& c, int ch) {
  const bool sign = ch == '+' || ch == '-';
  const bool z = ch == 'z' || ch == 'Z';
  switch (c.pfield.IN_TYPE) {
    case CMD_RE:
    case CMD_RH:
    case CMD_DB:
      return is_digit(ch) || sign || ch == '.' || z;
    case CMD_IN:
      return is_digit(ch) || sign;
    case CMD_NO:
      return is_alpha(ch) || is_digit(ch);
    case CMD_OP:
      return is_digit(ch) || sign || z;
    default:
      return 0;
  }
}

int get_rdc(Source& src, float& value) {
  float total;
  if (!get_one_rdc(src, total)) return 0;
  // A "," right after a code (or its dots) ties the next code on. That code
  // is read by the integer scanner, which skips blanks within the line, so
  // "4, 4" is one value; a "," with no code after it fails the value.
  while (src.cur() == ',') {
    ++src.pos;
    float tied;
    if (!get_one_rdc(src, tied)) return 0;
    total = total + tied;
  }
  value = total;
  return 1;
}

int get_db(Source& src, float& value) {
  float db;
  if (!src.get_f(db)) return 0;
  if (db < 0.0f || db > 96.0f) return 0;
  value = static_cast<float>(db_to_amp(trunc_i32(db)));
  return 1;
}

int get_pitch(Ctx& c, float& value) {
  Source& src = c.src;
  const int letter = to_lower(src.cur());
  if (letter == 'r') {
    ++src.pos;
    value = -1.0f;
    return 1;
  }
  int pc;
  switch (letter) {
    case 'c': pc = 0; break;
    case 'd': pc = 2; break;
    case 'e': pc = 4; break;
    case 'f': pc = 5; break;
    case 'g': pc = 7; break;
    case 'a': pc = 9; break;
    case 'b': pc = 11; break;
    default: return 0;
  }
  ++src.pos;
  float acc = 0.0f;
  for (;; ++src.pos) {
    const int ch = src.cur();
    if (ch == 's') {
      acc = acc + 1.0f;
    } else if (ch == 'f') {
      acc = acc - 1.0f;
    } else if (ch == 'n') {
    } else if (ch == '+' || ch == '-') {
      if (!c.pfield.NX) return 0;  // quarter tones only in "nox"
      acc = acc + (ch == '+' ? 0.5f : -0.5f);
    } else {
      break;
    }
  }
  if (is_digit(src.cur())) {
    int octave = read_capped(src, 9);
    if (octave > 9) return 0;
    c.run.oct = octave;
  }
  value = static_cast<float>(c.run.oct * 12 + pc) + acc;
  if (c.run.MKMIDI) value = value + 12.0f;
  return 1;
}

int get_oct_pc(Source& src, int MKMIDI, float& value) {
  bool neg = false;
  if (src.cur() == '-' || src.cur() == '+') neg = src.buffer[src.pos++] == '-';
  if (!is_digit(src.cur())) return 0;
  const int octave = read_capped(src, 100000);
  if (src.cur() != '.') return 0;
  ++src.pos;
  const float fraction = read_fraction(src.buffer, src.pos, 0.0f);
  float v = static_cast<float>(octave * 12 - 48) + 100.0f * fraction;
  if (neg && !MKMIDI) v = -v;
  if (MKMIDI) v = v + 12.0f;
  value = v;
  return 1;
}

namespace {

// The input types whose value syntax has "z" (the last value again): "re",
// "rh", "db" and "op". In "in" and "no" a "z" is read by the type's own
// reader, which fails on it.
bool admits_last_value(int in_type) {
  return in_type == CMD_RE || in_type == CMD_RH || in_type == CMD_DB || in_type == CMD_OP;
}

// Reads one value in IN_TYPE: 1, or 0 on a syntax or range fault.
int read_value(Ctx& c, float& value) {
  Source& src = c.src;
  if (admits_last_value(c.pfield.IN_TYPE) && is_last_variable(src.buffer, src.pos)) {
    ++src.pos;
    value = c.pfield.LAST_VAL;
    return 1;
  }
  float v;
  switch (c.pfield.IN_TYPE) {
    case CMD_RE:
      if (!src.get_f(v)) return 0;
      break;
    case CMD_IN:
      if (!src.get_f(v)) return 0;
      v = RoundF(v);
      break;
    case CMD_RH:
      if (!get_rdc(src, v)) return 0;
      break;
    case CMD_DB:
      if (!get_db(src, v)) return 0;
      break;
    case CMD_NO:
      if (!get_pitch(c, v)) return 0;
      break;
    case CMD_OP:
      if (!get_oct_pc(src, c.run.MKMIDI, v)) return 0;
      break;
    default:
      return 0;
  }
  value = v;
  return 1;
}

// Tells the observer what was read where (or where the value failed).
void tell_observer(Ctx& c, int begin, int ok, const float& value) {
  const Source& src = c.src;
  if (ok)
    c.run.observer->value_read(src.line, src.buffer, begin, src.pos, c.pfield.IN_TYPE, value);
  else
    c.run.observer->value_failed(src.line, src.buffer, begin, src.pos, c.pfield.IN_TYPE);
}

}  // namespace

int get_input_type(Ctx& c, float& value) {
  const int begin = c.src.pos;
  const int ok = read_value(c, value);
  if (c.run.observer) tell_observer(c, begin, ok, value);
  return ok;
}

}  // namespace sorvel
