// The curves' own sine must be the correctly rounded sine (checked against
// values worked out exactly, with rational arithmetic on the Taylor series),
// so that every build writes the same curve values.
#include "base/sine.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>

#include "base/curves.h"

namespace sorvel {
namespace {

TEST(QuarterSine, ExactValues) {
  EXPECT_EQ(quarter_sine(0.0), 0.0);
  EXPECT_EQ(quarter_sine(1e-10), 1e-10);  // x^3 / 6 is below half a unit of x
  EXPECT_EQ(quarter_sine(1.5707963267948966), 1.0);
  EXPECT_EQ(quarter_sine(0.5235987755982988), 0.49999999999999994);  // pi/6
  EXPECT_EQ(quarter_sine(0.7853981633974483), 0.7071067811865475);   // pi/4
  EXPECT_EQ(quarter_sine(1.0), 0.8414709848078965);
}

// Arguments at which a maths library's sin() is half a unit and a hair away:
// the nearest double is the one given.
TEST(QuarterSine, CorrectlyRoundedWhereALibraryIsNot) {
  EXPECT_EQ(quarter_sine(1.1284375494060446), 0.90374445083100119);
  EXPECT_EQ(quarter_sine(0.17789809856313482), 0.17696123700173752);
  EXPECT_EQ(quarter_sine(0.39616669580132213), 0.38588478288382227);
}

// Nowhere more than a unit in the last place from the library's sine, and
// almost always equal to it.
TEST(QuarterSine, CloseToTheLibrary) {
  std::mt19937_64 gen(7);
  int equal = 0;
  const int n = 200000;
  for (int i = 0; i < n; ++i) {
    const double x = static_cast<double>(gen() >> 11) * 0x1p-53 * 1.5707963267948966;
    const double mine = quarter_sine(x), lib = std::sin(x);
    ASSERT_LE(std::fabs(mine - lib), std::nextafter(lib, 2.0) - lib) << x;
    equal += mine == lib;
  }
  EXPECT_GT(equal, n * 99 / 100);
}

// The quick way returns only what the series would: arguments spread over
// the quarter and packed near the table's steps and the midpoints between.
TEST(QuarterSine, QuickWaySameAsSeries) {
  std::mt19937_64 gen(20261125);
  for (int i = 0; i < 300000; ++i) {
    double x = static_cast<double>(gen() >> 11) * 0x1p-53 * 1.5707963267948966;
    if (i % 3 == 1) x = static_cast<double>(gen() % 101) / 64.0 + (static_cast<double>(gen() % 2001) - 1000.0) * 0x1p-60;
    if (i % 3 == 2) x = (static_cast<double>(gen() % 101) + 0.5) / 64.0 + (static_cast<double>(gen() % 2001) - 1000.0) * 0x1p-60;
    if (!(x >= 0.0 && x <= 1.5707963267948966)) continue;
    ASSERT_EQ(quarter_sine(x), quarter_sine_series(x)) << x;
  }
}

// A mirrored-sine curve whose kept value turned on the last bit of the sine:
// 80 events into 1070, from -0.5 to 38486.5. One maths library's sin() gave
// 1246.1154785 here.
TEST(QuarterSine, CurveValueOnTheLastBit) {
  EXPECT_EQ(pplot_val(80, 1070, -0.5f, 38486.5f, 5, 1.0), 1246.1156005859375f);
}

}  // namespace
}  // namespace sorvel
