#include "base/numtext.h"

#include <algorithm>
#include <bit>
#include <charconv>  // integers only
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
  static constexpr uint64_t kPowers[] = {
      1ull,        10ull,        100ull,        1000ull,        10000ull,
      100000ull,   1000000ull,   10000000ull,   100000000ull,   1000000000ull,
      10000000000ull, 100000000000ull, 1000000000000ull, 10000000000000ull,
      100000000000000ull, 1000000000000000ull, 10000000000000000ull,
      100000000000000000ull, 1000000000000000000ull, 10000000000000000000ull};
  // floor(log10(n)) from the bit length (1233 / 4096 is just above log10(2)),
  // then one comparison to correct it.
  // (n | 1 leaves every comparison with a power of ten as it was, and makes
  // 0 count as one digit.)
  n |= 1;
  const int t = static_cast<int>((std::bit_width(n) * 1233) >> 12);
  return t + 1 - (n < kPowers[t] ? 1 : 0);
}

// |v| * 10^PREC rounded half to even, for |v| = m / 2^shift with m < 2^53 and
// shift >= 23: m * 10^PREC is exact, and so is the remainder of its division
// by 2^shift. Small precisions stay within 64 bits. The rounding step is
// branch-free: whether it goes up is as good as random, and a mispredicted
// branch would cost more than the rest of the number.
template <int PREC>
uint64_t scale(uint64_t m, int shift) {
  constexpr uint64_t kScale = kPow10[PREC];
  if (shift >= 100) return 0;  // far below half a unit of the last decimal
  if constexpr (PREC <= 3) {   // m * 1000 < 2^63
    const uint64_t n = m * kScale;
    if (shift >= 64) return shift == 64 && n > (uint64_t{1} << 63) ? 1 : 0;
    const uint64_t q = n >> shift;
    const uint64_t rem = n - (q << shift);
    const uint64_t half = uint64_t{1} << (shift - 1);
    return q + ((rem > half) | ((rem == half) & q & 1));
  } else {
    const unsigned __int128 n = static_cast<unsigned __int128>(m) * kScale;
    const unsigned __int128 q = n >> shift;
    const unsigned __int128 rem = n - (q << shift);
    const unsigned __int128 half = static_cast<unsigned __int128>(1) << (shift - 1);
    return static_cast<uint64_t>(q) + ((rem > half) | ((rem == half) & (static_cast<uint64_t>(q) & 1)));
  }
}

// The eight decimal digits of n < 10^8, leading zeros included, one per byte
// with the most significant in the lowest byte (so that a little-endian store
// writes them in reading order), each as a value 0 to 9. The number is split
// into two halves of four digits, each half into pairs, each pair into digits,
// all lanes at once with multiplications that stand in for divisions by 100
// and 10 (exact for lanes below 10,000 and 100).
uint64_t eight_digits(uint32_t n) {
  const uint64_t x = (n / 10000) | (static_cast<uint64_t>(n % 10000) << 32);
  const uint64_t hundreds = ((x * 5243) >> 19) & 0x0000007F0000007Full;
  const uint64_t pairs = hundreds | ((x - hundreds * 100) << 16);
  const uint64_t tens = ((pairs * 103) >> 10) & 0x000F000F000F000Full;
  return tens | ((pairs - tens * 10) << 8);
}

constexpr uint64_t kAsciiZeros = 0x3030303030303030ull;

// Blanks before a number of `len` characters in a field of `width`: up to
// sixteen in one store, which the caller's room (kNumTextMax and more) allows
// whatever the field.
char* put_blanks(char* p, int len, int width) {
  if (width <= len) return p;
  const int pad = width - len;
  if (pad <= 16)
    std::memcpy(p, "                ", 16);
  else
    std::memset(p, ' ', static_cast<size_t>(pad));
  return p + pad;
}

// Writes the number right-aligned in `width` columns.
template <int PREC>
char* put_scaled(char* p, bool negative, uint64_t scaled, int width) {
  constexpr uint64_t kScale = kPow10[PREC];
  if constexpr (std::endian::native == std::endian::little && PREC <= 7) {
    if (scaled < 100000000) {
      // The usual case: whole part and decimals together in one word of
      // eight digits, the last PREC of them the decimals. The leading zeros
      // are the zero bytes at its low end, all but the units digit dropped.
      const uint64_t w = eight_digits(static_cast<uint32_t>(scaled));
      const int zeros = std::min(w ? std::countr_zero(w) >> 3 : 8, 7 - PREC);
      const int whole_digits = 8 - PREC - zeros;
      const uint64_t text = w + kAsciiZeros;
      p = put_blanks(p, negative + whole_digits + (PREC > 0 ? PREC + 1 : 0), width);
      *p = '-';
      p += negative;
      const uint64_t whole_text = text >> (zeros * 8);
      std::memcpy(p, &whole_text, 8);
      p += whole_digits;
      if constexpr (PREC > 0) {
        *p++ = '.';
        const uint64_t frac_text = text >> ((8 - PREC) * 8);
        std::memcpy(p, &frac_text, 8);
        p += PREC;
      }
      return p;
    }
  }
  // Larger numbers (and any number elsewhere): two digits at a time.
  const uint64_t whole = scaled / kScale;
  const int whole_digits = count_digits(whole);
  p = put_blanks(p, negative + whole_digits + (PREC > 0 ? PREC + 1 : 0), width);
  if (negative) *p++ = '-';
  p = put_digits(p, whole, whole_digits);
  if constexpr (PREC > 0) {
    *p++ = '.';
    p = put_digits(p, scaled % kScale, PREC);
  }
  return p;
}

template <int PREC>
char* put_exact(char* p, bool negative, uint64_t m, int shift, int width) {
  return put_scaled<PREC>(p, negative, m ? scale<PREC>(m, shift) : 0, width);
}

// A whole number of up to kLimbs * 32 bits, least significant limb first:
// room for any double times 10^kMaxPrec, or any double shifted to a whole
// number. Only what printing a double needs: multiply by a small number,
// shift, read bits, divide by a small number.
struct BigNum {
  static constexpr int kLimbs = 40;
  uint32_t limb[kLimbs] = {};
  int used = 0;  // limbs in use; limb[used - 1] != 0 unless used == 0

  explicit BigNum(uint64_t v) {
    while (v) {
      limb[used++] = static_cast<uint32_t>(v);
      v >>= 32;
    }
  }
  void mul_small(uint32_t f) {
    uint64_t carry = 0;
    for (int i = 0; i < used; ++i) {
      const uint64_t t = static_cast<uint64_t>(limb[i]) * f + carry;
      limb[i] = static_cast<uint32_t>(t);
      carry = t >> 32;
    }
    if (carry) limb[used++] = static_cast<uint32_t>(carry);
  }
  void shift_left(int bits) {
    if (!used) return;
    const int words = bits / 32, rest = bits % 32;
    int top = used + words;
    limb[top] = 0;
    for (int i = used - 1; i >= 0; --i) {
      const uint64_t t = static_cast<uint64_t>(limb[i]) << rest;
      limb[i + words + 1] |= static_cast<uint32_t>(t >> 32);
      limb[i + words] = static_cast<uint32_t>(t);
    }
    for (int i = 0; i < words; ++i) limb[i] = 0;
    used = limb[top] ? top + 1 : top;
  }
  void shift_right(int bits) {
    const int words = bits / 32, rest = bits % 32;
    if (words >= used) {
      used = 0;
      return;
    }
    for (int i = 0; i + words < used; ++i) {
      uint64_t t = limb[i + words] >> rest;
      if (rest && i + words + 1 < used)
        t |= static_cast<uint64_t>(limb[i + words + 1]) << (32 - rest);
      limb[i] = static_cast<uint32_t>(t);
    }
    used -= words;
    while (used && !limb[used - 1]) --used;
  }
  bool bit(int i) const { return i / 32 < used && (limb[i / 32] >> (i % 32) & 1); }
  bool any_bit_below(int i) const {
    for (int w = 0; w < i / 32 && w < used; ++w)
      if (limb[w]) return true;
    return i / 32 < used && (limb[i / 32] & ((uint32_t{1} << (i % 32)) - 1));
  }
  void add_one() {
    for (int i = 0; i < used; ++i)
      if (++limb[i]) return;
    limb[used++] = 1;
  }
  // Divides by d and returns the remainder.
  uint32_t div_small(uint32_t d) {
    uint64_t rem = 0;
    for (int i = used - 1; i >= 0; --i) {
      const uint64_t t = rem << 32 | limb[i];
      limb[i] = static_cast<uint32_t>(t / d);
      rem = t % d;
    }
    while (used && !limb[used - 1]) --used;
    return static_cast<uint32_t>(rem);
  }
};

// Most decimals the exact writer below takes (more would not fit BigNum).
constexpr int kMaxPrec = 20;

}  // namespace

// "%.*f" for any value, by exact arithmetic: with |v| = m * 2^e, the whole
// number m * 10^prec * 2^e, rounded half to even when e < 0 (as printf
// rounds), is written with a point before its last prec digits.
char* put_fixed_exact(char* p, double v, int prec) {
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
  prec = std::clamp(prec, 0, kMaxPrec);
  uint64_t bits;
  std::memcpy(&bits, &v, sizeof bits);
  const int exponent = static_cast<int>(bits >> 52 & 0x7FF);
  const uint64_t fraction = bits & ((uint64_t{1} << 52) - 1);
  const uint64_t m = exponent ? fraction | (uint64_t{1} << 52) : fraction;
  const int e = (exponent ? exponent : 1) - 1075;

  BigNum n(m);
  for (int i = 0; i < prec; ++i) n.mul_small(10);
  if (e >= 0) {
    n.shift_left(e);
  } else {
    const int s = -e;
    const bool half = n.bit(s - 1);
    const bool below = n.any_bit_below(s - 1);
    n.shift_right(s);
    if (half && (below || n.bit(0))) n.add_one();
  }

  // The digits, last first, nine at a time.
  char digits[kNumTextMax];
  int count = 0;
  while (n.used) {
    uint32_t chunk = n.div_small(1000000000);
    for (int i = 0; i < 9; ++i, chunk /= 10) digits[count++] = static_cast<char>('0' + chunk % 10);
  }
  while (count > 1 && digits[count - 1] == '0') --count;  // the last chunk's leading zeros
  while (count < prec + 1) digits[count++] = '0';

  if (std::signbit(v)) *p++ = '-';
  for (int i = count - 1; i >= prec; --i) *p++ = digits[i];
  if (prec > 0) {
    *p++ = '.';
    for (int i = prec - 1; i >= 0; --i) *p++ = digits[i];
  }
  return p;
}

// A finite value whose magnitude is below 2^30, with a precision up to 9 (so
// the scaled value fits 64 bits), is written exactly here: with |v| = m / 2^s,
// m * 10^prec is an exact integer and its division by 2^s is rounded half to
// even on the exact remainder, as printf rounds. Anything else goes the slow
// exact way and is padded after.
char* put_fixed(char* p, double v, int width, int prec) {
  uint64_t bits;
  std::memcpy(&bits, &v, sizeof bits);
  const bool negative = bits >> 63;
  const int exponent = static_cast<int>(bits >> 52 & 0x7FF);
  // Below 2^30 (a biased exponent under 1023 + 30), |v| * 10^9 fits 64 bits.
  if (exponent < 1023 + 30) {
    // Subnormals (exponent 0) are far below half a unit of any decimal.
    const uint64_t m = exponent ? (bits & ((uint64_t{1} << 52) - 1)) | (uint64_t{1} << 52) : 0;
    const int shift = 1075 - exponent;  // |v| = m / 2^shift, shift >= 23
    switch (prec) {
      case 0: return put_exact<0>(p, negative, m, shift, width);
      case 1: return put_exact<1>(p, negative, m, shift, width);
      case 2: return put_exact<2>(p, negative, m, shift, width);
      case 3: return put_exact<3>(p, negative, m, shift, width);
      case 4: return put_exact<4>(p, negative, m, shift, width);
      case 5: return put_exact<5>(p, negative, m, shift, width);
      case 6: return put_exact<6>(p, negative, m, shift, width);
      case 7: return put_exact<7>(p, negative, m, shift, width);
      case 8: return put_exact<8>(p, negative, m, shift, width);
      case 9: return put_exact<9>(p, negative, m, shift, width);
      default: break;
    }
  }
  char* end = put_fixed_exact(p, v, prec);
  return pad_left(p, static_cast<int>(end - p), width);
}

char* put_fixed(char* p, double v, int prec) { return put_fixed(p, v, 0, prec); }

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
