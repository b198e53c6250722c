// Number text must match C printf digit for digit: the score and every message
// depend on it, so the fast writers are checked against snprintf itself.
#include "base/numtext.h"

#include <gtest/gtest.h>

#include <charconv>
#include <bit>
#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace sorvel {
namespace {

std::string printf_text(const char* format, int width, int prec, double v) {
  char buf[1024];
  const int n = std::snprintf(buf, sizeof buf, format, width, prec, v);
  return std::string(buf, static_cast<size_t>(n));
}

// "%.*f" and "%*.*f" for precisions 0 to 9 and several widths.
void expect_like_printf(double v) {
  char buf[kNumTextMax + 64];
  for (int prec = 0; prec <= 9; ++prec) {
    ASSERT_EQ(std::string(buf, put_fixed(buf, v, prec)), printf_text("%*.*f", 0, prec, v))
        << "value " << v << " precision " << prec;
    for (int width : {1, 5, 7, 9, 11, 17, 20})
      ASSERT_EQ(std::string(buf, put_fixed(buf, v, width, prec)), printf_text("%*.*f", width, prec, v))
          << "value " << v << " width " << width << " precision " << prec;
  }
}

TEST(PutFixed, SpecialValuesLikePrintf) {
  for (double v : std::initializer_list<double>{0.0,       -0.0,       0.5,     -0.5,       1.5,       2.5,        -2.5,
                   0.125,     0.375,      0.0625,  1e-8,       -1e-8,     0.00049999, 0.0005,
                   -0.0005,   0.9999999,  9.5,     99.995,     1e15 + 0.5, 4503599627370497.0,
                   1e300,     -1e300,     DBL_MAX, -DBL_MAX,   DBL_MIN,   4.9e-324,   261.6256,
                   0.1f,      60.0f / 7.0f, NAN,   -NAN,       INFINITY,  -INFINITY})
    expect_like_printf(v);
}

TEST(PutFixed, RandomValuesLikePrintf) {
  std::mt19937_64 gen(20261121);
  std::uniform_real_distribution<double> unit(-1.0, 1.0);
  std::uniform_int_distribution<int> exponent(-12, 22);
  std::uniform_int_distribution<long> whole(-100000, 100000);
  std::uniform_int_distribution<int> shift(1, 12);
  for (int i = 0; i < 3000 && !HasFatalFailure(); ++i) {
    expect_like_printf(unit(gen) * std::pow(10.0, exponent(gen)));
    // Exact binary fractions land exactly on rounding ties.
    expect_like_printf(static_cast<double>(whole(gen)) / static_cast<double>(1L << shift(gen)));
    // Any bit pattern at all.
    uint64_t bits = gen();
    double v;
    std::memcpy(&v, &bits, sizeof v);
    expect_like_printf(v);
  }
}

// Score values are single-precision numbers of modest size: the exact fast
// path must agree with printf on every one of them, ties included.
TEST(PutFixed, SinglePrecisionBitPatternsLikePrintf) {
  std::mt19937 gen(11);
  char buf[kNumTextMax + 64];
  for (int i = 0; i < 200000; ++i) {
    const uint32_t bits = gen();
    float f;
    std::memcpy(&f, &bits, sizeof f);
    if (!(std::fabs(f) < 2e9f)) continue;
    const int prec = i % 10;
    ASSERT_EQ(std::string(buf, put_fixed(buf, f, prec)), printf_text("%*.*f", 0, prec, f))
        << "value " << f << " precision " << prec;
  }
}

// Where a number gains a digit, and where rounding carries into a new digit,
// the writer changes how it lays out the digits.
TEST(PutFixed, DigitCountBoundariesLikePrintf) {
  for (int e = 0; e <= 12; ++e) {
    const double power = std::pow(10.0, e);
    for (int prec = 0; prec <= 9; ++prec) {
      const double carry = power - 0.5 * std::pow(10.0, -prec);
      for (double base : {power, carry, -power, -carry}) {
        float f = static_cast<float>(base);
        for (int step = 0; step < 4; ++step) f = std::nextafter(f, 0.0f);
        for (int step = 0; step < 9; ++step, f = std::nextafter(f, 2.0f * f)) {
          expect_like_printf(f);
          expect_like_printf(std::nextafter(base, 0.0));
          expect_like_printf(base);
        }
        if (HasFatalFailure()) return;
      }
    }
  }
}

#if defined(__cpp_lib_to_chars)
// The exact writer stands in for the C++ library's floating-point to_chars,
// which not every library has; where it exists, the two must agree on every
// value and precision. SORVEL_NUMTEXT_VALUES sets how many values of each
// kind are tried (a long one-off run: 10000000).
TEST(PutFixedExact, SameAsToChars) {
  long count = 20000;
  if (const char* env = std::getenv("SORVEL_NUMTEXT_VALUES")) count = std::atol(env);
  std::mt19937_64 gen(20261125);
  char mine[kNumTextMax + 64], theirs[kNumTextMax + 64];
  long compared = 0;
  auto check = [&](double v, int prec) {
    const std::string a(mine, put_fixed_exact(mine, v, prec));
    const auto res = std::to_chars(theirs, theirs + sizeof theirs, v, std::chars_format::fixed, prec);
    ASSERT_EQ(res.ec, std::errc());
    ASSERT_EQ(a, std::string(theirs, res.ptr)) << "bits " << std::bit_cast<uint64_t>(v) << " precision " << prec;
    ++compared;
  };
  std::uniform_int_distribution<int> any_prec(0, 20);
  for (long i = 0; i < count && !HasFatalFailure(); ++i) {
    // Any bit pattern (NaN and infinity excepted: to_chars spells them its own way).
    const double any = std::bit_cast<double>(gen());
    if (std::isfinite(any)) check(any, any_prec(gen));
    // Large numbers: 2^30 and up, where put_fixed itself comes here, at the
    // precisions the writers use.
    const double large = std::ldexp(1.0 + static_cast<double>(gen() >> 12) * 0x1p-52,
                                    30 + static_cast<int>(gen() % 994));
    check(gen() & 1 ? large : -large, static_cast<int>(i % 10));
    // Ties: odd multiples of 2^-s, which at s - 1 decimals lie exactly
    // halfway and are rounded to even; whole parts small and large.
    const int s = 1 + static_cast<int>(gen() % 21);
    const double tie = std::ldexp(static_cast<double>((gen() >> (11 + (i % 3) * 20)) | 1), -s);
    check(gen() & 1 ? tie : -tie, s - 1);
    // Single-precision values of every magnitude, as score values are.
    const float f = std::bit_cast<float>(static_cast<uint32_t>(gen()));
    if (std::isfinite(f)) check(f, static_cast<int>(i % 8));
  }
  if (std::getenv("SORVEL_NUMTEXT_VALUES")) std::printf("%ld values compared\n", compared);
}
#endif

TEST(PutLong, LikePrintf) {
  std::vector<long> values = {0, 1, -1, 9, 10, -10, 2147483647L, -2147483648L, LONG_MAX, LONG_MIN};
  std::mt19937_64 gen(3);
  for (int i = 0; i < 2000; ++i) values.push_back(static_cast<long>(gen()) >> (gen() % 63));
  char buf[kNumTextMax], want[64];
  for (long v : values) {
    for (int width = 0; width <= 22; width += 3) {
      const int n = std::snprintf(want, sizeof want, "%*ld", width, v);
      ASSERT_EQ(std::string(buf, put_long(buf, v, width)), std::string(want, static_cast<size_t>(n)))
          << v << " width " << width;
    }
  }
}

}  // namespace
}  // namespace sorvel
