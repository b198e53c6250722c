#include "base/numtext.h"

#include <charconv>
#include <cmath>
#include <cstdint>
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

constexpr uint64_t kPow10[] = {1,         10,         100,         1000,         10000,
                               100000,    1000000,    10000000,    100000000,    1000000000};

// Writes n (at least `digits` digits, zero-padded) and returns the end.
char* put_u64(char* p, uint64_t n, int digits) {
  char tmp[24];
  int len = 0;
  do {
    tmp[len++] = static_cast<char>('0' + n % 10);
    n /= 10;
  } while (n);
  while (len < digits) tmp[len++] = '0';
  while (len) *p++ = tmp[--len];
  return p;
}

// "%.*f" for a finite value whose magnitude is below 10^9 and a precision up
// to 9 (so the scaled value fits 64 bits), computed exactly: with |v| = m * 2^e, m * 10^prec is an exact integer
// and the division by 2^-e is rounded half to even on the exact remainder,
// as printf rounds. Returns null when the value is outside that range.
char* put_fixed_exact(char* p, double v, int prec) {
  const double a = std::fabs(v);
  if (!(a < 1e9) || prec < 0 || prec > 9) return nullptr;
  int e;
  const double frac = std::frexp(a, &e);  // a = frac * 2^e, frac in [0.5, 1)
  const uint64_t m = static_cast<uint64_t>(std::ldexp(frac, 53));  // a = m * 2^(e - 53)
  const int shift = 53 - e;  // a = m / 2^shift, shift > 0 since a < 2^30
  uint64_t scaled;           // a * 10^prec rounded to a whole number
  if (m == 0) {
    scaled = 0;
  } else if (shift >= 128) {
    scaled = 0;  // far below half a unit of the last decimal
  } else {
    const unsigned __int128 n = static_cast<unsigned __int128>(m) * kPow10[prec];
    unsigned __int128 q = n >> shift;
    const unsigned __int128 rem = n - (q << shift);
    const unsigned __int128 half = static_cast<unsigned __int128>(1) << (shift - 1);
    if (rem > half || (rem == half && (q & 1))) ++q;
    scaled = static_cast<uint64_t>(q);
  }
  if (std::signbit(v)) *p++ = '-';
  p = put_u64(p, scaled / kPow10[prec], 1);
  if (prec > 0) {
    *p++ = '.';
    p = put_u64(p, scaled % kPow10[prec], prec);
  }
  return p;
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
  if (char* end = put_fixed_exact(p, v, prec)) return end;
  auto res = std::to_chars(p, p + kNumTextMax, v, std::chars_format::fixed, prec);
  return res.ptr;
}

char* put_fixed(char* p, double v, int width, int prec) {
  // Most fields are written straight into place: the number is made in a
  // small buffer and the padding goes first.
  char tmp[64];
  char* end = std::isfinite(v) ? put_fixed_exact(tmp, v, prec) : nullptr;
  if (!end) {
    end = put_fixed(p, v, prec);
    return pad_left(p, static_cast<int>(end - p), width);
  }
  const int len = static_cast<int>(end - tmp);
  for (int i = len; i < width; ++i) *p++ = ' ';
  std::memcpy(p, tmp, static_cast<size_t>(len));
  return p + len;
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
