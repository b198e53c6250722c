// Number text must match C printf digit for digit: the score and every message
// depend on it, so the fast writers are checked against snprintf itself.
#include "base/numtext.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace sorvel {
namespace {

std::string fixed(double v, int width, int prec) {
  char buf[kNumTextMax + 64];
  char* end = put_fixed(buf, v, width, prec);
  return std::string(buf, end);
}

std::string fixed(double v, int prec) {
  char buf[kNumTextMax + 64];
  char* end = put_fixed(buf, v, prec);
  return std::string(buf, end);
}

std::string printf_fixed(double v, int width, int prec) {
  char buf[1024];
  int n = std::snprintf(buf, sizeof buf, "%*.*f", width, prec, v);
  return std::string(buf, static_cast<size_t>(n));
}

// Checks every width and precision from 0 to 7 (and one wide field) for one value.
void expect_like_printf(double v) {
  for (int prec = 0; prec <= 7; ++prec) {
    char buf[1024];
    int n = std::snprintf(buf, sizeof buf, "%.*f", prec, v);
    ASSERT_EQ(fixed(v, prec), std::string(buf, static_cast<size_t>(n)))
        << "value " << v << " precision " << prec;
    for (int width : {0, 1, 2, 3, 4, 5, 6, 7, 11})
      ASSERT_EQ(fixed(v, width, prec), printf_fixed(v, width, prec))
          << "value " << v << " width " << width << " precision " << prec;
  }
}

std::vector<double> special_values() {
  return {0.0,      -0.0,          0.5,           -0.5,          1.5,        2.5,
          -2.5,     0.125,         0.375,         -0.125,        0.0625,     1e-8,
          -1e-8,    0.00049999,    0.0005,        -0.0005,       0.9999999,  0.99999999,
          9.5,      99.995,        1e15 + 0.5,    4503599627370497.0,        1e300,
          -1e300,   DBL_MAX,       -DBL_MAX,      DBL_MIN,       -DBL_MIN,   4.9e-324,
          261.6256, 440.0,         0.1f,          0.3f,          60.0f / 7.0f,
          NAN,      -NAN,          INFINITY,      -INFINITY};
}

TEST(PutFixed, SpecialValuesLikePrintf) {
  for (double v : special_values()) expect_like_printf(v);
}

TEST(PutFixed, NanAndInfinityText) {
  EXPECT_EQ(fixed(NAN, 7, 2), "    nan");
  EXPECT_EQ(fixed(-NAN, 7, 2), "   -nan");
  EXPECT_EQ(fixed(INFINITY, 0, 3), "inf");
  EXPECT_EQ(fixed(-INFINITY, 5, 3), " -inf");
  EXPECT_EQ(fixed(-0.0, 7, 2), "  -0.00");
  EXPECT_EQ(fixed(-0.001, 2), "-0.00");
}

TEST(PutFixed, RandomValuesOfManyMagnitudesLikePrintf) {
  std::mt19937_64 gen(20261121);
  std::uniform_real_distribution<double> unit(-1.0, 1.0);
  std::uniform_int_distribution<int> exponent(-12, 22);
  std::uniform_int_distribution<long> whole(-100000, 100000);
  std::uniform_int_distribution<int> shift(1, 12);
  for (int i = 0; i < 4000; ++i) {
    expect_like_printf(unit(gen) * std::pow(10.0, exponent(gen)));
    // Exact binary fractions: halves, quarters ... land exactly on rounding ties.
    expect_like_printf(static_cast<double>(whole(gen)) / static_cast<double>(1L << shift(gen)));
    // Values that went through single precision, as event times do.
    expect_like_printf(static_cast<float>(unit(gen) * std::pow(10.0, exponent(gen) % 8)));
    if (HasFatalFailure()) return;
  }
}

TEST(PutFixed, RandomBitPatternsLikePrintf) {
  std::mt19937_64 gen(7);
  for (int i = 0; i < 3000; ++i) {
    uint64_t bits = gen();
    double v;
    static_assert(sizeof v == sizeof bits);
    std::memcpy(&v, &bits, sizeof v);
    expect_like_printf(v);
    if (HasFatalFailure()) return;
  }
}

TEST(PutLong, LikePrintf) {
  std::vector<long> values = {0, 1, -1, 9, 10, -10, 99999, 2147483647L, -2147483648L,
                              LONG_MAX, LONG_MIN};
  std::mt19937_64 gen(3);
  for (int i = 0; i < 2000; ++i) values.push_back(static_cast<long>(gen()) >> (gen() % 63));
  for (long v : values) {
    char want[64];
    int n = std::snprintf(want, sizeof want, "%ld", v);
    char buf[kNumTextMax];
    ASSERT_EQ(std::string(buf, put_long(buf, v)), std::string(want, static_cast<size_t>(n))) << v;
    for (int width = 0; width <= 22; width += 3) {
      n = std::snprintf(want, sizeof want, "%*ld", width, v);
      ASSERT_EQ(std::string(buf, put_long(buf, v, width)), std::string(want, static_cast<size_t>(n)))
          << v << " width " << width;
    }
  }
}

TEST(AppendNumbers, AppendToTheEnd) {
  std::string s = "i1";
  append_fixed(s, 0.5, 8, 3);
  append_long(s, -12, 4);
  append_long(s, 7);
  EXPECT_EQ(s, "i1   0.500 -127");
}

}  // namespace
}  // namespace sorvel
