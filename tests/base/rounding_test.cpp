#include "base/rounding.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>

namespace sorvel {
namespace {

constexpr int32_t kIndefinite = std::numeric_limits<int32_t>::min();
const float kNan = std::numeric_limits<float>::quiet_NaN();
const float kInf = std::numeric_limits<float>::infinity();

TEST(Round, HalvesGoUpTowardPositiveInfinity) {
  EXPECT_EQ(Round(2.5f), 3);
  EXPECT_EQ(Round(-2.5f), -2);
  EXPECT_EQ(Round(0.5f), 1);
  EXPECT_EQ(Round(-0.5f), 0);
  EXPECT_EQ(Round(2.4f), 2);
  EXPECT_EQ(Round(2.6f), 3);
  EXPECT_EQ(Round(-2.4f), -2);
  EXPECT_EQ(Round(-2.6f), -3);
  EXPECT_EQ(Round(7.0f), 7);
  EXPECT_EQ(Round(-7.0f), -7);
}

TEST(Round, ValuesWithoutAnIntegerGiveTheIndefiniteValue) {
  EXPECT_EQ(Round(kNan), kIndefinite);
  EXPECT_EQ(Round(kInf), kIndefinite);
  EXPECT_EQ(Round(-kInf), kIndefinite);
  EXPECT_EQ(Round(3.0e9f), kIndefinite);
  EXPECT_EQ(Round(-3.0e9f), kIndefinite);
  // The largest floats that still fit keep their value.
  EXPECT_EQ(Round(2147483520.0f), 2147483520);
  EXPECT_EQ(Round(-2147483648.0f), -2147483647 - 1);  // fits exactly
}

TEST(RoundF, HalvesGoUpAndTheSignOfZeroIsKept) {
  EXPECT_EQ(RoundF(2.5f), 3.0f);
  EXPECT_EQ(RoundF(-2.5f), -2.0f);
  EXPECT_EQ(RoundF(1.4f), 1.0f);
  EXPECT_EQ(RoundF(-1.6f), -2.0f);

  float neg = RoundF(-0.4f);
  EXPECT_EQ(neg, 0.0f);
  EXPECT_TRUE(std::signbit(neg));
  EXPECT_TRUE(std::signbit(RoundF(-0.5f)));  // the ceiling of -0.5 is -0
  EXPECT_FALSE(std::signbit(RoundF(0.4f)));
}

TEST(RoundF, NonFiniteAndHugeValuesPassThrough) {
  EXPECT_TRUE(std::isnan(RoundF(kNan)));
  EXPECT_EQ(RoundF(kInf), kInf);
  EXPECT_EQ(RoundF(-kInf), -kInf);
  EXPECT_EQ(RoundF(1.0e30f), 1.0e30f);
  EXPECT_EQ(RoundF(-3.0e9f), -3.0e9f);
}

TEST(Mod, RemainderKeepsTheSignOfTheDividend) {
  EXPECT_EQ(mod(13.0f, 12.0f), 1.0f);
  EXPECT_EQ(mod(-1.0f, 12.0f), -1.0f);
  EXPECT_EQ(mod(-13.0f, 12.0f), -1.0f);
  EXPECT_EQ(mod(13.0f, -12.0f), 1.0f);
  EXPECT_EQ(mod(-13.0f, -12.0f), -1.0f);
  EXPECT_EQ(mod(24.0f, 12.0f), 0.0f);
  EXPECT_EQ(mod(61.5f, 12.0f), 1.5f);
  EXPECT_EQ(mod(5.5f, 2.0f), 1.5f);
  EXPECT_EQ(mod(200.0f, 128.0f), 72.0f);
}

TEST(Mod, ZeroDivisorGivesZero) {
  EXPECT_EQ(mod(5.0f, 0.0f), 0.0f);
  EXPECT_EQ(mod(-5.0f, -0.0f), 0.0f);
  EXPECT_EQ(mod(kNan, 0.0f), 0.0f);
}

TEST(Mod, NanGivesNan) {
  EXPECT_TRUE(std::isnan(mod(kNan, 12.0f)));
  EXPECT_TRUE(std::isnan(mod(12.0f, kNan)));
}

// A quotient beyond 32 bits becomes the indefinite integer -2^31, so the first
// remainder is a + 2^31 * m; at these magnitudes subtracting or adding m
// changes nothing, and the loops must stop rather than spin.
TEST(Mod, HugeValuesTerminate) {
  // 1e20 + 2^31 * 12 rounds back to 1e20 in single precision.
  EXPECT_EQ(mod(1.0e20f, 12.0f), 1.0e20f);
  EXPECT_EQ(mod(-1.0e20f, 12.0f), -1.0e20f);
  // 3e10 / 12 = 2.5e9 does not fit: 3e10 + 2^31 * 12 = 55769803776, in float.
  EXPECT_EQ(mod(3.0e10f, 12.0f), static_cast<float>(3.0e10 + 2147483648.0 * 12.0));
  EXPECT_EQ(mod(kInf, 12.0f), kInf);
  EXPECT_EQ(mod(-kInf, 12.0f), -kInf);
  EXPECT_TRUE(std::isnan(mod(7.0f, kInf)));  // 0 * inf
  EXPECT_EQ(mod(std::numeric_limits<float>::max(), 1.0f), std::numeric_limits<float>::max());
}

// Over ordinary values the remainder lies within the divisor's size and, away
// from the rounding edges at 0 and m, matches the exact remainder and the
// dividend's sign.
TEST(Mod, OrdinaryValuesStayWithinTheDivisor) {
  for (int i = -5000; i <= 5000; i += 7) {
    float a = static_cast<float>(i) * 0.37f;
    for (float b : {12.0f, -12.0f, 0.5f, 3.25f, 128.0f}) {
      float r = mod(a, b);
      float m = std::fabs(b);
      EXPECT_LE(std::fabs(r), m) << a << " % " << b;
      double exact = std::fmod(static_cast<double>(a), static_cast<double>(m));
      double mag = std::fabs(exact);
      if (mag > 1e-3 && m - mag > 1e-3) {
        EXPECT_NEAR(r, exact, 1e-3) << a << " % " << b;
        EXPECT_EQ(std::signbit(r), std::signbit(a)) << a << " % " << b;
      }
    }
  }
}

}  // namespace
}  // namespace sorvel
