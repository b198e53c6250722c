#include "base/random.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace sorvel {
namespace {

// A second generator seeded like the one under test, from which each case
// computes its expected value by the formula of the distribution.
struct Twin {
  explicit Twin(unsigned seed) { rng.srand(seed); }
  Rng rng;
  float u() { return static_cast<float>(rng.rand()) * 4.656613e-10f; }
  float nonzero() {
    float v = u();
    while (v == 0.0f) v = u();
    return v;
  }
};

Rng seeded(unsigned seed) {
  Rng r;
  r.srand(seed);
  return r;
}

// After the call under test both streams must stand at the same place.
void expect_in_step(Rng& rng, Twin& twin) { EXPECT_EQ(rng.rand(), twin.rng.rand()); }

TEST(Generator, FollowsTheCLibrarySequence) {
  Rng r;  // seed 1 from the start
  EXPECT_EQ(r.rand(), 1804289383);
  EXPECT_EQ(r.rand(), 846930886);
  EXPECT_EQ(r.rand(), 1681692777);
  Rng z = seeded(0);  // 0 acts as 1
  EXPECT_EQ(z.rand(), 1804289383);
}

TEST(Uniform, IsTheDrawTimesTwoToTheMinus31InSinglePrecision) {
  Rng rng = seeded(7);
  Twin twin(7);
  for (int i = 0; i < 1000; ++i) {
    float v = uniform(rng);
    EXPECT_EQ(v, twin.u());
    EXPECT_GE(v, 0.0f);
    EXPECT_LE(v, 1.0f);
  }
  // The largest draw rounds to exactly 1.
  EXPECT_EQ(static_cast<float>(2147483647) * 4.656613e-10f, 1.0f);
}

TEST(MkRval, FlatScalesTheRangeBeforeTheDraw) {
  for (unsigned seed : {1u, 5u, 12345u}) {
    Rng rng = seeded(seed);
    Twin twin(seed);
    for (int i = 0; i < 200; ++i) {
      float low = -3.5f, high = 17.25f;
      float want = low + static_cast<float>(twin.rng.rand()) * ((high - low) * 4.656613e-10f);
      EXPECT_EQ(mk_rval(rng, 0, low, high), want);
    }
    expect_in_step(rng, twin);
  }
}

TEST(MkRval, ExponentialsUseLnOfAThousandInDouble) {
  for (int code : {1, 2}) {
    Rng rng = seeded(99);
    Twin twin(99);
    for (int i = 0; i < 500; ++i) {
      float u = twin.nonzero();
      float v = static_cast<float>(-std::log(static_cast<double>(u)) / 6.9078001976);
      if (v > 1.0f) v = 1.0f;
      if (code == 2) v = 1.0f - v;
      EXPECT_EQ(mk_rval(rng, code, 10.0f, 20.0f), 10.0f + v * 10.0f);
    }
    expect_in_step(rng, twin);
  }
}

TEST(MkRval, TriangularIsTheMeanOfTwoDrawsInDouble) {
  Rng rng = seeded(3);
  Twin twin(3);
  for (int i = 0; i < 500; ++i) {
    double u1 = twin.u();
    double u2 = twin.u();
    float low = 0.1f, high = 1.1f;
    double expect = (u1 + u2) * 0.5 * (static_cast<double>(high) - static_cast<double>(low)) +
                    static_cast<double>(low);
    EXPECT_EQ(mk_rval(rng, 3, low, high), static_cast<float>(expect));
  }
  expect_in_step(rng, twin);
}

TEST(MkRval, GaussSumsTwelveDrawsAndClips) {
  Rng rng = seeded(42);
  Twin twin(42);
  for (int i = 0; i < 500; ++i) {
    float s = 0.0f;
    for (int k = 0; k < 12; ++k) s += twin.u();
    float v = (s - 6.0f) * 0.155f + 0.5f;
    v = v < 0.0f ? 0.0f : (v > 1.0f ? 1.0f : v);
    EXPECT_EQ(mk_rval(rng, 4, -1.0f, 1.0f), -1.0f + v * 2.0f);
  }
  expect_in_step(rng, twin);
}

TEST(MkRval, BilexFoldsTheUpperHalfDownward) {
  Rng rng = seeded(8);
  Twin twin(8);
  for (int i = 0; i < 500; ++i) {
    float x = 2.0f * twin.u();
    while (x == 0.0f || x == 2.0f) x = 2.0f * twin.u();
    double sign = 1.0;
    if (x > 1.0f) {
      x = 2.0f - x;
      sign = -1.0;
    }
    double v = std::log(static_cast<double>(x)) * sign / 14.0;
    float unit = v > 0.5 ? 1.0f : (v < -0.5 ? 0.0f : static_cast<float>(0.5 + v));
    // A draw at or below one half lands in the lower half.
    if (sign > 0) {
      EXPECT_LE(unit, 0.5f);
    }
    EXPECT_EQ(mk_rval(rng, 5, 0.0f, 100.0f), unit * 100.0f);
  }
  expect_in_step(rng, twin);
}

TEST(MkRval, BetaRejectsPairsWhosePowersExceedOne) {
  Rng rng = seeded(2024);
  Twin twin(2024);
  for (int i = 0; i < 300; ++i) {
    float a, b;
    do {
      float u1 = twin.nonzero();
      float u2 = twin.nonzero();
      a = static_cast<float>(std::pow(static_cast<double>(u1), 5.0));
      b = static_cast<float>(std::pow(static_cast<double>(u2), 5.0));
    } while (a + b > 1.0f);
    EXPECT_EQ(mk_rval(rng, 6, 0.0f, 1.0f), 0.0f + a / (a + b) * 1.0f);
  }
  expect_in_step(rng, twin);
}

TEST(MkRval, EqualBoundsGiveTheLowBoundForEveryCode) {
  for (int code = 0; code <= 6; ++code) {
    Rng rng = seeded(static_cast<unsigned>(code) + 11);
    for (int i = 0; i < 50; ++i) EXPECT_EQ(mk_rval(rng, code, 4.75f, 4.75f), 4.75f) << code;
  }
}

TEST(MkRval, UnknownCodeGivesZeroAndDrawsNothing) {
  Rng rng = seeded(5);
  Twin twin(5);
  EXPECT_EQ(mk_rval(rng, 7, 3.0f, 9.0f), 0.0f);
  EXPECT_EQ(mk_rval(rng, -1, 3.0f, 9.0f), 0.0f);
  expect_in_step(rng, twin);
}

// The first draw of the twin stream, to place a weight boundary exactly on it.
float first_draw(unsigned seed) { return Twin(seed).u(); }

TEST(ProbResult, RunningTotalsDecideAndTheUpperEndIsInclusive) {
  const float w[] = {0.2f, 0.3f, 0.5f};
  const float c1 = 0.2f + 0.3f;
  Rng rng = seeded(31);
  Twin twin(31);
  int seen[3] = {};
  for (int i = 0; i < 3000; ++i) {
    float r = twin.u();
    int want = r <= 0.2f ? 0 : (r <= c1 ? 1 : 2);
    int got = prob_result(rng, w, 3);
    EXPECT_EQ(got, want) << r;
    ++seen[got];
  }
  EXPECT_GT(seen[0], 0);
  EXPECT_GT(seen[1], 0);
  EXPECT_GT(seen[2], 0);

  // A draw equal to a running total belongs to that alternative.
  const unsigned seed = 9;
  float r = first_draw(seed);
  const float at[] = {r, 1.0f - r};
  Rng a = seeded(seed);
  EXPECT_EQ(prob_result(a, at, 2), 0);
  const float below[] = {std::nextafter(r, 0.0f), 0.0f, 1.0f};
  Rng b = seeded(seed);
  EXPECT_EQ(prob_result(b, below, 3), 2);
  const float on_second[] = {std::nextafter(r, 0.0f), r - std::nextafter(r, 0.0f), 1.0f};
  Rng c = seeded(seed);
  EXPECT_EQ(prob_result(c, on_second, 3), 1);
}

TEST(ProbResult, DrawAboveTheTotalChoosesTheLastAlternative) {
  const float zeros[] = {0.0f, 0.0f, 0.0f};
  Rng rng = seeded(4);
  for (int i = 0; i < 100; ++i) EXPECT_EQ(prob_result(rng, zeros, 3), 2);
}

TEST(ProbResult, AlwaysDrawsOnceEvenWithoutAChoice) {
  const float one[] = {0.4f};
  Rng rng = seeded(6);
  Twin twin(6);
  EXPECT_EQ(prob_result(rng, one, 1), 0);
  twin.u();
  EXPECT_EQ(prob_result(rng, nullptr, 0), 0);
  twin.u();
  EXPECT_EQ(prob_result(rng, nullptr, -3), 0);
  twin.u();
  expect_in_step(rng, twin);
}

TEST(HundredPercent, SumMustLieStrictlyWithinATolerance) {
  const float good[] = {0.3f, 0.3f, 0.4f};
  EXPECT_EQ(hundred_percent(good, 3), 1);
  const float short_of[] = {0.5f, 0.49f};
  EXPECT_EQ(hundred_percent(short_of, 2), 0);
  const float whole[] = {1.0f};
  EXPECT_EQ(hundred_percent(whole, 1), 1);
  const float tenths[] = {0.1f, 0.1f, 0.1f, 0.1f, 0.1f, 0.1f, 0.1f, 0.1f, 0.1f, 0.1f};
  EXPECT_EQ(hundred_percent(tenths, 10), 1);
  const float over[] = {0.5f, 0.50002f};
  EXPECT_EQ(hundred_percent(over, 2), 0);
  EXPECT_EQ(hundred_percent(nullptr, 0), 0);
}

TEST(Rwindow, FirstStepReturnsTheStartAndEachNextTheDrawBefore) {
  Rng rng = seeded(17);
  Twin twin(17);
  float pos = 0.5f;
  float expect_return = 0.5f;
  for (int i = 0; i < 200; ++i) {
    // Width 1 from the middle: the window is [0, 1] and the first draw wins.
    float draw = twin.u();
    EXPECT_EQ(rwindow(rng, 1.0f, pos), expect_return);
    EXPECT_EQ(pos, draw);
    expect_return = draw;
  }
}

// Draws from the twin until one falls in [lo, hi].
float first_in(Twin& twin, float lo, float hi) {
  for (;;) {
    float u = twin.u();
    if (u >= lo && u <= hi) return u;
  }
}

TEST(Rwindow, WindowSlidesInsideAtEitherEdge) {
  {
    Rng rng = seeded(23);
    Twin twin(23);
    float pos = 0.05f;  // [-0.05, 0.15] slides to [0, 0.2]
    EXPECT_EQ(rwindow(rng, 0.2f, pos), 0.05f);
    EXPECT_EQ(pos, first_in(twin, 0.0f, 0.2f));
    expect_in_step(rng, twin);
  }
  {
    Rng rng = seeded(29);
    Twin twin(29);
    float pos = 0.95f;  // [0.85, 1.05] slides to [0.8, 1]
    EXPECT_EQ(rwindow(rng, 0.2f, pos), 0.95f);
    EXPECT_EQ(pos, first_in(twin, 1.0f - 0.2f, 1.0f));
    expect_in_step(rng, twin);
  }
  {
    Rng rng = seeded(37);
    Twin twin(37);
    float pos = 0.5f;  // [0.4, 0.6], bounds rounded from double
    float lo = static_cast<float>(0.5 - static_cast<double>(0.2f) * 0.5);
    float hi = static_cast<float>(0.5 + static_cast<double>(0.2f) * 0.5);
    for (int i = 0; i < 100; ++i) {
      rwindow(rng, 0.2f, pos);
      float want = first_in(twin, lo, hi);
      EXPECT_EQ(pos, want);
      pos = 0.5f;
    }
    expect_in_step(rng, twin);
  }
}

TEST(Rwindow, ZeroWidthDrawsNothingAndStays) {
  Rng rng = seeded(3);
  Twin twin(3);
  float pos = 0.3f;
  EXPECT_EQ(rwindow(rng, 0.0f, pos), 0.3f);
  EXPECT_EQ(pos, 0.3f);
  expect_in_step(rng, twin);
}

TEST(Rwindow, AMillionMissesLeaveTheWalkInPlace) {
  for (float width : {-0.5f, std::numeric_limits<float>::quiet_NaN()}) {
    Rng rng = seeded(13);
    Twin twin(13);
    float pos = 0.5f;
    EXPECT_EQ(rwindow(rng, width, pos), 0.5f);
    EXPECT_EQ(pos, 0.5f);
    for (int i = 0; i < 1000000; ++i) twin.rng.rand();
    expect_in_step(rng, twin);
  }
}

TEST(RandWindow, MapsTheStepOntoTheRange) {
  Rng rng = seeded(19);
  Twin twin(19);
  float pos = 0.25f;
  EXPECT_EQ(rand_window(rng, 10.0f, 30.0f, 1.0f, pos), 10.0f + 20.0f * 0.25f);
  float draw = twin.u();
  EXPECT_EQ(pos, draw);
  EXPECT_EQ(rand_window(rng, 10.0f, 30.0f, 1.0f, pos), 10.0f + 20.0f * draw);
}

}  // namespace
}  // namespace sorvel
