#include "input/source.h"

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "base/catalog.h"
#include "base/chars.h"
#include "base/observer.h"
#include "input/comments.h"
#include "input/preproc.h"

namespace sorvel {

int Source::get_buff() {
  if (!std::fgets(buffer, kLineSize, fin)) return kEndOfInput;
  ++line;
  expansions = 0;
  std::memset(marks_, 0, sizeof marks_);
  int n = 0;
  char last = '\0';
  for (; buffer[n]; ++n) {
    char c = last = buffer[n];
    if (c == '\n' || c == '\r' || static_cast<unsigned char>(c) == 255) buffer[n] = ' ';
  }
  if (run.observer && n == kLineSize - 1 && last != '\n') report_split();
  // Whatever a NUL byte hid, or an earlier longer line left, reads as the end.
  std::memset(buffer + n, 0, static_cast<size_t>(kLineSize - n));
  pos = 0;
  if (in_if0(run)) return kOk;

  skip_blanks();
  if (cur() == '#') {
    if (is_if(buffer, pos + 1)) {
      ++pos;
      int r = do_if_interface(*this);
      return r > 0 ? r : kOk;
    }
    if (is_endif(buffer, pos + 1)) {
      ++pos;
      int r = do_endif(*this);
      return r > 0 ? r : kOk;
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
  return kOk;
}

void Source::report_split() {
  // The buffer is full and its last character is no line end: the line goes
  // on in the next read, unless the input ends here. The look ahead leaves
  // the stream as it was, its end-of-file flag included.
  const int c = std::getc(fin);
  if (c == EOF) {
    if (!std::ferror(fin)) std::clearerr(fin);
    return;
  }
  std::ungetc(c, fin);
  run.observer->line_split(line);
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

namespace {

// White space, at most one comment, then (with `separator`) one "," or "/",
// and white space again; 0 or a positive error.
int skip_around_comment(Source& src, bool separator) {
  int r = src.skip_lines();
  if (r > 0) return r;
  int kind;
  if (src.is_comment(kind)) {
    r = src.skip_comment(kind);
    if (r > 0) return r;
  }
  if (separator && (src.cur() == ',' || src.cur() == '/')) ++src.pos;
  r = src.skip_lines();
  return r > 0 ? r : 0;
}

}  // namespace

int Source::skip_wc() { return skip_around_comment(*this, false); }

int Source::skip_stuff() { return skip_around_comment(*this, true); }

int Source::good_cmd_format() {
  int r = skip_lines();
  if (r > 0) return r;
  return buffer[pos] == '(' ? kOk : kErrCharsBeforeCommandParen;
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

// The integer scanners: blanks, a sign ("-" only for a signed T), digits into
// 32 bits that wrap. A value outside lo..hi is no number: the position goes
// back to the first digit. With `blanks_after` the blanks after it are skipped.
template <class T>
int scan_integer(Source& src, T lo, T hi, bool blanks_after, T& value) {
  constexpr bool kMinus = std::is_signed_v<T>;
  src.skip_blanks();
  const int sign = src.cur();
  if (sign == '+' || (kMinus && sign == '-')) ++src.pos;
  if (!is_digit(src.cur())) return 0;
  const int start = src.pos;
  uint32_t v = read_digits(src.buffer, src.pos);
  if (kMinus && sign == '-') v = 0u - v;
  const T r = static_cast<T>(v);
  if (r < lo || r > hi) {
    src.pos = start;
    return 0;
  }
  value = r;
  if (blanks_after) src.skip_blanks();
  return 1;
}

}  // namespace

int Source::get_i(int& value) { return scan_integer<int32_t>(*this, -32768, 32767, false, value); }

int Source::get_li(int& value) {
  return scan_integer<int32_t>(*this, INT32_MIN, INT32_MAX, true, value);
}

int Source::get_ui(unsigned& value) { return scan_integer<uint32_t>(*this, 0, 65535, false, value); }

int Source::get_uli(unsigned& value) {
  return scan_integer<uint32_t>(*this, 0, UINT32_MAX, true, value);
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
