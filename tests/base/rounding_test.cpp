// Rounding at halves, the sign of zero, the indefinite integer, and the
// remainder that must end on every input.
#include "base/rounding.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

namespace sorvel {
namespace {

constexpr int32_t kIndefinite = std::numeric_limits<int32_t>::min();
const float kNan = std::numeric_limits<float>::quiet_NaN();
const float kInf = std::numeric_limits<float>::infinity();

TEST(Round, HalvesGoUpAndValuesWithoutAnIntegerAreIndefinite) {
  const struct {
    float x;
    int32_t want;
  } cases[] = {
      {2.5f, 3},         {-2.5f, -2},        {0.5f, 1},          {-0.5f, 0},
      {2.4f, 2},         {-2.6f, -3},        {-7.0f, -7},        {2147483520.0f, 2147483520},
      {-2147483648.0f, -2147483647 - 1},  // fits exactly
      {kNan, kIndefinite}, {kInf, kIndefinite}, {-kInf, kIndefinite},
      {3.0e9f, kIndefinite}, {-3.0e9f, kIndefinite},
  };
  for (const auto& c : cases) EXPECT_EQ(Round(c.x), c.want) << c.x;
}

// RoundF works without the library's floor and ceiling; it must agree with
// the nearer of the two, a tie to the ceiling, bit for bit, across the floats.
TEST(RoundF, SameAsTheNearerOfFloorAndCeiling) {
  auto library = [](float x) {
    const float c = std::ceil(x), f = std::floor(x);
    return x - f < c - x ? f : c;
  };
  std::vector<float> values = {0.0f, -0.0f, 0.5f, -0.5f, 1.5f, -1.5f, 8388607.5f, -8388607.5f,
                               8388608.0f, -8388608.0f, 16777215.0f, 2147483648.0f, -2147483904.0f,
                               std::nextafter(0.5f, 0.0f), std::nextafter(-0.5f, 0.0f), kNan, kInf, -kInf};
  for (uint64_t bits = 0; bits <= 0xFFFFFFFFu; bits += 997) {
    const uint32_t b = static_cast<uint32_t>(bits);
    float x;
    std::memcpy(&x, &b, sizeof x);
    values.push_back(x);
  }
  for (float x : values) {
    const float want = library(x), got = RoundF(x);
    if (std::isnan(want)) {
      ASSERT_TRUE(std::isnan(got)) << x;
    } else {
      ASSERT_EQ(std::memcmp(&want, &got, sizeof want), 0) << x << " gives " << got << ", not " << want;
    }
  }
}

TEST(RoundF, HalvesGoUpTheSignOfZeroIsKeptAndNonFiniteValuesPass) {
  EXPECT_EQ(RoundF(2.5f), 3.0f);
  EXPECT_EQ(RoundF(-2.5f), -2.0f);
  EXPECT_EQ(RoundF(-1.6f), -2.0f);
  EXPECT_TRUE(std::signbit(RoundF(-0.4f)));
  EXPECT_TRUE(std::signbit(RoundF(-0.5f)));  // the ceiling of -0.5 is -0
  EXPECT_FALSE(std::signbit(RoundF(0.4f)));
  EXPECT_TRUE(std::isnan(RoundF(kNan)));
  EXPECT_EQ(RoundF(-kInf), -kInf);
  EXPECT_EQ(RoundF(-3.0e9f), -3.0e9f);
}

TEST(Mod, SignOfTheDividendZeroDivisorAndNan) {
  EXPECT_EQ(mod(13.0f, 12.0f), 1.0f);
  EXPECT_EQ(mod(-13.0f, 12.0f), -1.0f);
  EXPECT_EQ(mod(13.0f, -12.0f), 1.0f);
  EXPECT_EQ(mod(61.5f, 12.0f), 1.5f);
  EXPECT_EQ(mod(5.0f, 0.0f), 0.0f);
  EXPECT_EQ(mod(kNan, -0.0f), 0.0f);
  EXPECT_TRUE(std::isnan(mod(kNan, 12.0f)));
  EXPECT_TRUE(std::isnan(mod(12.0f, kNan)));
}

// A quotient beyond 32 bits becomes the indefinite integer -2^31, so the first
// remainder is a + 2^31 * m; at these magnitudes adding or subtracting m
// changes nothing, and the correcting loops must stop rather than spin.
TEST(Mod, HugeValuesTerminate) {
  EXPECT_EQ(mod(1.0e20f, 12.0f), 1.0e20f);
  EXPECT_EQ(mod(-1.0e20f, 12.0f), -1.0e20f);
  EXPECT_EQ(mod(3.0e10f, 12.0f), static_cast<float>(3.0e10 + 2147483648.0 * 12.0));
  EXPECT_EQ(mod(kInf, 12.0f), kInf);
  EXPECT_EQ(mod(-kInf, 12.0f), -kInf);
  EXPECT_TRUE(std::isnan(mod(7.0f, kInf)));  // 0 * inf
  EXPECT_EQ(mod(std::numeric_limits<float>::max(), 1.0f), std::numeric_limits<float>::max());
}

// Away from the rounding edges at 0 and m, the remainder of ordinary values is
// the exact one, with the dividend's sign.
TEST(Mod, OrdinaryValuesMatchTheExactRemainder) {
  for (int i = -5000; i <= 5000; i += 7) {
    const float a = static_cast<float>(i) * 0.37f;
    for (float b : {12.0f, -12.0f, 0.5f, 3.25f, 128.0f}) {
      const float r = mod(a, b);
      const float m = std::fabs(b);
      EXPECT_LE(std::fabs(r), m) << a << " % " << b;
      const double exact = std::fmod(static_cast<double>(a), static_cast<double>(m));
      if (std::fabs(exact) > 1e-3 && m - std::fabs(exact) > 1e-3) {
        EXPECT_NEAR(r, exact, 1e-3) << a << " % " << b;
        EXPECT_EQ(std::signbit(r), std::signbit(a)) << a << " % " << b;
      }
    }
  }
}

}  // namespace
}  // namespace sorvel
