// Sorvel's own power must be the correctly rounded power (checked against
// values worked out to 300 bits), so that curves and conversions keep the
// same floats in every build.
#include "base/power.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>

#include "base/curves.h"

namespace sorvel {
namespace {

TEST(Power, ExactValues) {
  EXPECT_EQ(power(0.5, 3.0), 0.125);
  EXPECT_EQ(power(2.0, 10.0), 1024.0);
  EXPECT_EQ(power(2.0, -3.0), 0.125);
  EXPECT_EQ(power(0.0, 1.5), 0.0);
  EXPECT_EQ(power(1.0, 7.5), 1.0);
  EXPECT_EQ(power(0.25, 0.5), 0.5);
}

TEST(Power, CorrectlyRounded) {
  EXPECT_EQ(power(2.0, static_cast<double>(57.0f / 12.0f)), 26.908685288118864);
  EXPECT_EQ(power(1.059463094359, 12.0), 1.9999999999933111);
  EXPECT_EQ(power(1.059463094359, static_cast<double>(-7.3f)), 0.6559540449932311);
  EXPECT_EQ(power(137.0 / 209.0, static_cast<double>(3.99f)), 0.18540924251995416);
  EXPECT_EQ(power(0.3, 1.5), 0.1643167672515498);
  EXPECT_EQ(power(0.999, 1000.0), 0.36769542477096373);
}

// Far below any float and beyond the largest double.
TEST(Power, OutOfRange) {
  EXPECT_EQ(static_cast<float>(power(1e-10, 50.0)), 0.0f);
  EXPECT_EQ(static_cast<float>(-3.0 * power(1e-10, 50.0)), -0.0f);
  EXPECT_TRUE(std::signbit(static_cast<float>(-3.0 * power(1e-10, 50.0))));
  EXPECT_EQ(power(2.0, 2000.0), HUGE_VAL);
}

// The quick way returns only what the slow one would, and both stay within a
// unit in the last place of the library's pow, mostly equal to it.
TEST(Power, QuickWaySameAsExact) {
  std::mt19937_64 gen(11);
  int equal = 0;
  const int n = 60000;
  for (int i = 0; i < n; ++i) {
    double x, y;
    switch (i % 3) {
      case 0:  // curves: a fraction to a positive power
        x = static_cast<double>(gen() >> 11) * 0x1p-53;
        y = static_cast<double>(static_cast<float>(static_cast<double>(gen() % 10000) / 1000.0 + 0.001));
        break;
      case 1:  // frequencies
        x = 2.0;
        y = static_cast<double>(static_cast<float>((static_cast<double>(gen() % 200000) - 100000.0) / 7919.0));
        break;
      default:  // transpositions
        x = 1.059463094359;
        y = static_cast<double>(static_cast<float>((static_cast<double>(gen() % 200000) - 100000.0) / 997.0));
        break;
    }
    const double quick = power(x, y);
    ASSERT_EQ(quick, power_exact(x, y)) << x << "^" << y;
    const double lib = std::pow(x, y);
    ASSERT_LE(std::fabs(quick - lib), std::fabs(std::nextafter(lib, HUGE_VAL) - lib)) << x << "^" << y;
    equal += quick == lib;
  }
  EXPECT_GT(equal, n * 99 / 100);
}

// A curve of type v3.99 whose kept value turned on the last bit of the power:
// 137 events into 210, from -0.5 to 22582.5: -0.5 + 22583 * 0.18540924251995416
// in float. One maths library's pow(), a unit too high, gave 4186.5971680.
TEST(Power, CurveValueOnTheLastBit) {
  EXPECT_EQ(pplot_val(137, 210, -0.5f, 22582.5f, 3, static_cast<double>(3.99f)), 4186.5966796875f);
}

}  // namespace
}  // namespace sorvel
