#include "base/curves.h"

#include <gtest/gtest.h>

#include <cmath>

namespace sorvel {
namespace {

constexpr double kHalfPi = 1.5707963267948966;

TEST(PplotVal, CountOfOneGivesStartWhateverTheIndex) {
  for (unsigned curve = 0; curve <= 5; ++curve) {
    EXPECT_EQ(pplot_val(0, 1, 3.5f, 9.0f, curve, 2.0), 3.5f);
    EXPECT_EQ(pplot_val(7, 1, 3.5f, 9.0f, curve, 2.0), 3.5f);
  }
}

TEST(PplotVal, LastIndexAndBeyondGiveExactlyEnd) {
  for (unsigned curve = 0; curve <= 5; ++curve) {
    EXPECT_EQ(pplot_val(9, 10, 0.1f, 0.7f, curve, 3.7), 0.7f) << "curve " << curve;
    EXPECT_EQ(pplot_val(4, 5, 880.0f, -13.25f, curve, 0.3), -13.25f) << "curve " << curve;
    EXPECT_EQ(pplot_val(12, 10, 0.1f, 0.7f, curve, 3.7), 0.7f) << "curve " << curve;
  }
}

TEST(PplotVal, HalfwayAlongEachCurve) {
  // index 2 of 5 events: f = 0.5; from 10 to 20, d = 10.
  const double s = std::sin(0.5 * kHalfPi);
  EXPECT_EQ(pplot_val(2, 5, 10.0f, 20.0f, 0, 1.0), 15.0f);
  EXPECT_EQ(pplot_val(2, 5, 10.0f, 20.0f, 1, 1.0), 12.5f);
  EXPECT_EQ(pplot_val(2, 5, 10.0f, 20.0f, 2, 1.0), static_cast<float>(10.0 + 10.0 * std::sqrt(0.5)));
  EXPECT_EQ(pplot_val(2, 5, 10.0f, 20.0f, 3, 3.0), 11.25f);
  EXPECT_EQ(pplot_val(2, 5, 10.0f, 20.0f, 4, 1.0), static_cast<float>(10.0 + 10.0 * s));
  EXPECT_EQ(pplot_val(2, 5, 10.0f, 20.0f, 5, 1.0),
            static_cast<float>(10.0 + 10.0 * (0.5 - (s - 0.5))));
}

TEST(PplotVal, FractionIsTakenInDoublePrecision) {
  // f = 1/3 in double: 100 f rounds once, to the float nearest 100/3. A float
  // fraction would land one step higher.
  EXPECT_EQ(pplot_val(1, 4, 0.0f, 100.0f, 0, 1.0), static_cast<float>(100.0 / 3.0));
}

TEST(PplotVal, UnknownCurveGivesStart) {
  EXPECT_EQ(pplot_val(1, 4, 5.0f, 100.0f, 6, 1.0), 5.0f);
  EXPECT_EQ(pplot_val(1, 4, 5.0f, 100.0f, 101, 1.0), 5.0f);
}

TEST(TplotVal, TimeAtOrPastTotalGivesEnd) {
  for (unsigned curve = 0; curve <= 5; ++curve) {
    EXPECT_EQ(tplot_val(4.0f, 4.0f, 1.0f, 2.0f, curve, 2.0), 2.0f);
    EXPECT_EQ(tplot_val(9.0f, 4.0f, 1.0f, 2.0f, curve, 2.0), 2.0f);
  }
  // A span of length 0 is the end value from its start on.
  EXPECT_EQ(tplot_val(0.0f, 0.0f, 60.0f, 90.0f, 1, 1.0), 90.0f);
}

TEST(TplotVal, TimeAtOrBeforeZeroGivesStart) {
  for (unsigned curve = 0; curve <= 5; ++curve) {
    EXPECT_EQ(tplot_val(0.0f, 4.0f, 1.0f, 2.0f, curve, 2.0), 1.0f);
    EXPECT_EQ(tplot_val(-3.0f, 4.0f, 1.0f, 2.0f, curve, 2.0), 1.0f);
  }
}

TEST(TplotVal, FractionIsTakenInSinglePrecision) {
  // t / total = 1/3 rounded to float, then 100 f in double.
  const float f = 1.0f / 3.0f;
  const float expected = static_cast<float>(static_cast<double>(f) * 100.0);
  EXPECT_EQ(tplot_val(1.0f, 3.0f, 0.0f, 100.0f, 0, 1.0), expected);
  EXPECT_NE(expected, static_cast<float>(100.0 / 3.0));
}

TEST(TplotVal, ShapesBetweenStartAndEnd) {
  // t = 1 of 4: f = 0.25, from 0 to 8.
  EXPECT_EQ(tplot_val(1.0f, 4.0f, 0.0f, 8.0f, 2, 1.0), 4.0f);
  EXPECT_EQ(tplot_val(1.0f, 4.0f, 0.0f, 8.0f, 3, 0.5), 4.0f);
  // A falling move: from 8 to 0, d = -8.
  EXPECT_EQ(tplot_val(1.0f, 4.0f, 8.0f, 0.0f, 1, 1.0), 7.5f);
  EXPECT_EQ(tplot_val(1.0f, 4.0f, 8.0f, 0.0f, 9, 1.0), 8.0f);
}

}  // namespace
}  // namespace sorvel
