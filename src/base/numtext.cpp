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

constexpr char kDigitPairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

// Writes n in exactly `digits` digits (n < 10^digits) and returns the end.
char* put_digits(char* p, uint64_t n, int digits) {
  char* end = p + digits;
  char* q = end;
  while (digits >= 2) {
    const size_t pair = static_cast<size_t>(n % 100) * 2;
    n /= 100;
    *--q = kDigitPairs[pair + 1];
    *--q = kDigitPairs[pair];
    digits -= 2;
  }
  if (digits) *--q = static_cast<char>('0' + n % 10);
  return end;
}

int count_digits(uint64_t n) {
  int d = 1;
  while (n >= 10) {
    n /= 10;
    ++d;
  }
  return d;
}

// "%.*f" for a finite value whose magnitude is below 2^30 and a precision up
// to 9 (so the scaled value fits 64 bits), computed exactly: with |v| = m / 2^s,
// m * 10^prec is an exact integer and its division by 2^s is rounded half to
// even on the exact remainder, as printf rounds. Writes the number right-aligned
// in `width` columns; returns null (writing nothing) for any other value.
char* put_fixed_exact(char* p, double v, int width, int prec) {
  uint64_t bits;
  std::memcpy(&bits, &v, sizeof bits);
  const bool negative = bits >> 63;
  const int exponent = static_cast<int>(bits >> 52 & 0x7FF);
  const uint64_t fraction = bits & ((uint64_t{1} << 52) - 1);
  // Below 2^30 (a biased exponent under 1023 + 30), |v| * 10^9 fits 64 bits.
  if (exponent >= 1023 + 30 || prec < 0 || prec > 9) return nullptr;
  uint64_t scaled = 0;  // |v| * 10^prec, rounded
  if (exponent != 0) {  // subnormals are far below half a unit of any decimal
    const uint64_t m = fraction | (uint64_t{1} << 52);
    const int shift = 1075 - exponent;  // |v| = m / 2^shift, shift >= 23
    if (shift < 100) {
      const unsigned __int128 n = static_cast<unsigned __int128>(m) * kPow10[prec];
      unsigned __int128 q = n >> shift;
      const unsigned __int128 rem = n - (q << shift);
      const unsigned __int128 half = static_cast<unsigned __int128>(1) << (shift - 1);
      if (rem > half || (rem == half && (q & 1))) ++q;
      scaled = static_cast<uint64_t>(q);
    }
  }
  const uint64_t whole = scaled / kPow10[prec];
  const int whole_digits = count_digits(whole);
  const int len = negative + whole_digits + (prec > 0 ? prec + 1 : 0);
  for (int i = len; i < width; ++i) *p++ = ' ';
  if (negative) *p++ = '-';
  p = put_digits(p, whole, whole_digits);
  if (prec > 0) {
    *p++ = '.';
    p = put_digits(p, scaled % kPow10[prec], prec);
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
  if (char* end = put_fixed_exact(p, v, 0, prec)) return end;
  auto res = std::to_chars(p, p + kNumTextMax, v, std::chars_format::fixed, prec);
  return res.ptr;
}

char* put_fixed(char* p, double v, int width, int prec) {
  if (char* end = put_fixed_exact(p, v, width, prec)) return end;
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
