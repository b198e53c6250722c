#include "base/numtext.h"

#include <charconv>
#include <cmath>
#include <cstring>

namespace sorvel {

namespace {

// Moves the `len` characters at p right so that they fill `width` columns,
// padding with blanks on the left as printf does.
char* pad_left(char* p, int len, int width) {
  if (len >= width) return p + len;
  int pad = width - len;
  std::memmove(p + pad, p, static_cast<size_t>(len));
  std::memset(p, ' ', static_cast<size_t>(pad));
  return p + width;
}

}  // namespace

char* put_fixed(char* p, double v, int prec) {
  if (std::isnan(v)) {
    if (std::signbit(v)) *p++ = '-';
    std::memcpy(p, "nan", 3);
    return p + 3;
  }
  if (std::isinf(v)) {
    if (v < 0) *p++ = '-';
    std::memcpy(p, "inf", 3);
    return p + 3;
  }
  auto res = std::to_chars(p, p + kNumTextMax, v, std::chars_format::fixed, prec);
  return res.ptr;
}

char* put_fixed(char* p, double v, int width, int prec) {
  char* end = put_fixed(p, v, prec);
  return pad_left(p, static_cast<int>(end - p), width);
}

char* put_long(char* p, long v) {
  auto res = std::to_chars(p, p + kNumTextMax, v);
  return res.ptr;
}

char* put_long(char* p, long v, int width) {
  char* end = put_long(p, v);
  return pad_left(p, static_cast<int>(end - p), width);
}

void append_fixed(std::string& s, double v, int width, int prec) {
  char buf[kNumTextMax + 64];
  char* end = put_fixed(buf, v, width, prec);
  s.append(buf, end);
}

void append_long(std::string& s, long v, int width) {
  char buf[80];
  char* end = put_long(buf, v, width);
  s.append(buf, end);
}

}  // namespace sorvel
