#include "input/source.h"

#include <cstring>

#include "base/chars.h"
#include "input/comments.h"
#include "input/preproc.h"

namespace sorvel {

int Source::get_buff() {
  if (!std::fgets(buffer, kLineSize, fin)) return -1;
  ++line;
  expansions = 0;
  std::memset(marks_, 0, sizeof marks_);
  int n = 0;
  for (; buffer[n]; ++n) {
    char c = buffer[n];
    if (c == '\n' || c == '\r' || static_cast<unsigned char>(c) == 255) buffer[n] = ' ';
  }
  // Whatever a NUL byte hid, or an earlier longer line left, reads as the end.
  std::memset(buffer + n, 0, static_cast<size_t>(kLineSize - n));
  pos = 0;
  if (in_if0(run)) return 0;

  skip_blanks();
  if (cur() == '#') {
    if (is_if(buffer, pos + 1)) {
      ++pos;
      int r = do_if_interface(*this);
      return r > 0 ? r : 0;
    }
    if (is_endif(buffer, pos + 1)) {
      ++pos;
      int r = do_endif(*this);
      return r > 0 ? r : 0;
    }
  }
  int r = parse_macros(*this, marks_);
  if (r > 0) return r;
  r = parse_variables(*this, marks_);
  if (r > 0) return r;
  if (run.MKEXP && run.fecho) {
    std::fputs(buffer, run.fecho);
    std::fputc('\n', run.fecho);
  }
  return 0;
}

int Source::is_comment(int& kind) const {
  if (buffer[pos] == ';') {
    kind = 0;
    return 1;
  }
  if (buffer[pos] == '/' && buffer[pos + 1] == '*') {
    kind = 1;
    return 1;
  }
  return 0;
}

int Source::skip_comment(int kind) {
  if (kind == 0) {
    pos += static_cast<int>(std::strlen(buffer + pos));
    return 0;
  }
  CommentState state;  // the first step passes the opening "/*"
  for (;;) {
    if (buffer[pos] == '\0') {
      int r = get_buff();
      if (r) return r;
      continue;
    }
    const int mark = state.step(buffer[pos], buffer[pos + 1], CommentRules::kNested);
    pos += mark ? mark : 1;
    if (mark && !state.in()) return 0;
  }
}

int Source::skip_lines() {
  for (;;) {
    skip_blanks();
    if (buffer[pos] == '\0' && !at_eof()) {
      int r = get_buff();
      if (r) return r;
      continue;
    }
    return 0;
  }
}

int Source::skip_wc() {
  int r = skip_lines();
  if (r > 0) return r;
  int kind;
  if (is_comment(kind)) {
    r = skip_comment(kind);
    if (r > 0) return r;
  }
  r = skip_lines();
  return r > 0 ? r : 0;
}

int Source::skip_stuff() {
  int r = skip_lines();
  if (r > 0) return r;
  int kind;
  if (is_comment(kind)) {
    r = skip_comment(kind);
    if (r > 0) return r;
  }
  if (buffer[pos] == ',' || buffer[pos] == '/') ++pos;
  r = skip_lines();
  return r > 0 ? r : 0;
}

int Source::good_cmd_format() {
  int r = skip_lines();
  if (r > 0) return r;
  return buffer[pos] == '(' ? 0 : 96;
}

void Source::skip_blanks() {
  while (is_space(buffer[pos])) ++pos;
}

namespace {

// Reads decimal digits at `pos` into a 32-bit integer that wraps around.
uint32_t read_digits(const char* buffer, int& pos) {
  uint32_t v = 0;
  while (is_digit(buffer[pos])) v = v * 10u + static_cast<uint32_t>(buffer[pos++] - '0');
  return v;
}

}  // namespace

int Source::get_i(int& value) {
  skip_blanks();
  bool neg = false;
  if (buffer[pos] == '-' || buffer[pos] == '+') neg = buffer[pos++] == '-';
  if (!is_digit(buffer[pos])) return 0;
  int start = pos;
  uint32_t v = read_digits(buffer, pos);
  int32_t r = static_cast<int32_t>(neg ? 0u - v : v);
  if (r < -32768 || r > 32767) {
    pos = start;
    return 0;
  }
  value = r;
  return 1;
}

int Source::get_li(int& value) {
  skip_blanks();
  bool neg = false;
  if (buffer[pos] == '-' || buffer[pos] == '+') neg = buffer[pos++] == '-';
  if (!is_digit(buffer[pos])) return 0;
  uint32_t v = read_digits(buffer, pos);
  value = static_cast<int32_t>(neg ? 0u - v : v);
  skip_blanks();
  return 1;
}

int Source::get_ui(unsigned& value) {
  skip_blanks();
  if (buffer[pos] == '+') ++pos;
  if (!is_digit(buffer[pos])) return 0;
  int start = pos;
  uint32_t v = read_digits(buffer, pos);
  if (v > 65535u) {
    pos = start;
    return 0;
  }
  value = v;
  return 1;
}

int Source::get_uli(unsigned& value) {
  skip_blanks();
  if (buffer[pos] == '+') ++pos;
  if (!is_digit(buffer[pos])) return 0;
  value = read_digits(buffer, pos);
  skip_blanks();
  return 1;
}

namespace {

template <class T>
T read_fraction_in(const char* buffer, int& pos, T lead) {
  uint32_t divisor = 1;
  while (is_digit(buffer[pos])) {
    lead = lead * T{10} + static_cast<T>(buffer[pos++] - '0');
    divisor *= 10u;
  }
  return lead / static_cast<T>(static_cast<int32_t>(divisor));
}

// The real-number scanner in the precision of T: an optional sign, digits,
// and after a "." the fraction. A minus sign flips the sign bit, so "-0" is
// negative zero.
template <class T>
int read_real(const char* buffer, int& pos, T& value) {
  while (is_space(buffer[pos])) ++pos;
  bool neg = false;
  if (buffer[pos] == '-' || buffer[pos] == '+') neg = buffer[pos++] == '-';
  if (!is_digit(buffer[pos]) && buffer[pos] != '.') return 0;
  T v = 0;
  while (is_digit(buffer[pos])) v = v * T{10} + static_cast<T>(buffer[pos++] - '0');
  if (buffer[pos] == '.') {
    ++pos;
    v = read_fraction_in(buffer, pos, v);
  }
  value = neg ? -v : v;
  return 1;
}

}  // namespace

float read_fraction(const char* buffer, int& pos, float lead) {
  return read_fraction_in(buffer, pos, lead);
}

int Source::get_f(float& value) { return read_real(buffer, pos, value); }

int Source::get_df(double& value) { return read_real(buffer, pos, value); }

int is_separator(int c) {
  return is_space(c) || c == '/' || c == ',' || c == '\'' || c == ':';
}

}  // namespace sorvel
