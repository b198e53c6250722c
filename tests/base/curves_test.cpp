// Curve shapes: the exact ends whatever the shape, and the precision of the
// fraction (double over events, float over time). The shapes between are
// shown by the cases ddf/mo_curves and time/te_curves.
#include "base/curves.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace sorvel {
namespace {

TEST(Curves, EndsAreExactForEveryShape) {
  for (unsigned curve = 0; curve <= 5; ++curve) {
    SCOPED_TRACE(curve);
    // Over events: a count of one is the start; the last index and beyond the end.
    EXPECT_EQ(pplot_val(7, 1, 3.5f, 9.0f, curve, 2.0), 3.5f);
    EXPECT_EQ(pplot_val(9, 10, 0.1f, 0.7f, curve, 3.7), 0.7f);
    EXPECT_EQ(pplot_val(12, 10, 0.1f, 0.7f, curve, 3.7), 0.7f);
    EXPECT_EQ(pplot_val(4, 5, 880.0f, -13.25f, curve, 0.3), -13.25f);
    // Over time: at or before 0 the start, at or past the total the end.
    EXPECT_EQ(tplot_val(-3.0f, 4.0f, 1.0f, 2.0f, curve, 2.0), 1.0f);
    EXPECT_EQ(tplot_val(0.0f, 4.0f, 1.0f, 2.0f, curve, 2.0), 1.0f);
    EXPECT_EQ(tplot_val(4.0f, 4.0f, 1.0f, 2.0f, curve, 2.0), 2.0f);
  }
  // A span of length 0 is the end value from its start on.
  EXPECT_EQ(tplot_val(0.0f, 0.0f, 60.0f, 90.0f, 1, 1.0), 90.0f);
  // A code outside 0..5 gives the start.
  EXPECT_EQ(pplot_val(1, 4, 5.0f, 100.0f, 6, 1.0), 5.0f);
  EXPECT_EQ(tplot_val(1.0f, 4.0f, 8.0f, 0.0f, 101, 1.0), 8.0f);
}

// Curve 1 squares the fraction by multiplying; rounded to a float, that must
// be what the library's power gives, over events and over time.
TEST(Curves, SlowStartIsTheSquareThePowerGives) {
  // Read through a volatile so that the compiler calls the library's power
  // instead of squaring itself.
  volatile double two = 2.0;
  std::mt19937 gen(5);
  for (int i = 0; i < 200000; ++i) {
    const unsigned count = 2 + gen() % 100000;
    const unsigned index = gen() % count;
    const double f = static_cast<double>(index) / static_cast<double>(count - 1);
    ASSERT_EQ(pplot_val(index, count, -3.0f, 7.5f, 1, 1.0),
              static_cast<float>(-3.0 + 10.5 * std::pow(f, two)))
        << index << " of " << count;
    const float t = static_cast<float>(gen() % 100000) * 0.01f, total = 1000.5f;
    const double g = static_cast<double>(t / total);
    ASSERT_EQ(tplot_val(t, total, 100.0f, 0.25f, 1, 1.0),
              static_cast<float>(100.0 + (0.25 - 100.0) * std::pow(g, two)))
        << t;
  }
}

TEST(Curves, FractionPrecision) {
  // Over events f = 1/3 in double: 100 f rounds once, to the float nearest
  // 100/3. Over time t / total is a float first, which lands elsewhere.
  EXPECT_EQ(pplot_val(1, 4, 0.0f, 100.0f, 0, 1.0), static_cast<float>(100.0 / 3.0));
  const float expected = static_cast<float>(static_cast<double>(1.0f / 3.0f) * 100.0);
  EXPECT_EQ(tplot_val(1.0f, 3.0f, 0.0f, 100.0f, 0, 1.0), expected);
  EXPECT_NE(expected, static_cast<float>(100.0 / 3.0));
}

}  // namespace
}  // namespace sorvel
