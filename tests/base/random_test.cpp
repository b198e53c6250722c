// Each distribution's draws, in their order and precision: a twin generator
// seeded alike computes every expected value from the distribution's formula,
// and after each call both generators must stand at the same place.
#include "base/random.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <vector>

namespace sorvel {
namespace {

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

// Bounds whose difference is not exact in float.
constexpr float kLow = 0.1f, kHigh = 17.25f, kRange = kHigh - kLow;

// Draws `n` values of distribution `code` between the bounds and compares each
// with `expected` computed from the twin.
void expect_draws(int code, unsigned seed, int n, const std::function<float(Twin&)>& expected) {
  Rng rng = seeded(seed);
  Twin twin(seed);
  for (int i = 0; i < n; ++i) ASSERT_EQ(mk_rval(rng, code, kLow, kHigh), expected(twin)) << "draw " << i;
  EXPECT_EQ(rng.rand(), twin.rng.rand()) << "out of step";
}

TEST(MkRval, EachDistributionDrawsInItsOrderAndPrecision) {
  // Flat: the range is scaled by 2^-31 before the draw is applied.
  expect_draws(0, 5, 500, [](Twin& t) {
    return kLow + static_cast<float>(t.rng.rand()) * (kRange * 4.656613e-10f);
  });
  // Exponentials: -ln(u) / ln(1000) in double, clipped at 1; code 2 mirrored.
  for (int code : {1, 2}) {
    expect_draws(code, 99, 500, [code](Twin& t) {
      float v = static_cast<float>(-std::log(static_cast<double>(t.nonzero())) / 6.9078001976);
      if (v > 1.0f) v = 1.0f;
      return kLow + (code == 2 ? 1.0f - v : v) * kRange;
    });
  }
  // Triangular: the mean of two draws, scaled in double.
  expect_draws(3, 3, 500, [](Twin& t) {
    const double u1 = t.u();
    const double u2 = t.u();
    const double span = static_cast<double>(kHigh) - static_cast<double>(kLow);
    return static_cast<float>((u1 + u2) * 0.5 * span + static_cast<double>(kLow));
  });
  // Gauss: twelve draws summed in float, scaled by 0.155 and clipped.
  expect_draws(4, 42, 5000, [](Twin& t) {  // enough draws to clip at 0 and 1
    float s = 0.0f;
    for (int k = 0; k < 12; ++k) s += t.u();
    float v = (s - 6.0f) * 0.155f + 0.5f;
    v = v < 0.0f ? 0.0f : (v > 1.0f ? 1.0f : v);
    return kLow + v * kRange;
  });
  // Bilateral exponential: draws of 0 and 2 are drawn again; the upper half
  // folds downward.
  expect_draws(5, 8, 500, [](Twin& t) {
    float x = 2.0f * t.u();
    while (x == 0.0f || x == 2.0f) x = 2.0f * t.u();
    double sign = 1.0;
    if (x > 1.0f) {
      x = 2.0f - x;
      sign = -1.0;
    }
    const double v = std::log(static_cast<double>(x)) * sign / 14.0;
    const float unit = v > 0.5 ? 1.0f : (v < -0.5 ? 0.0f : static_cast<float>(0.5 + v));
    return kLow + unit * kRange;
  });
  // Beta: pairs whose fifth powers add up to more than one are rejected.
  expect_draws(6, 2024, 300, [](Twin& t) {
    float a, b;
    do {
      a = static_cast<float>(std::pow(static_cast<double>(t.nonzero()), 5.0));
      b = static_cast<float>(std::pow(static_cast<double>(t.nonzero()), 5.0));
    } while (a + b > 1.0f);
    return kLow + a / (a + b) * kRange;
  });
  // An unknown code gives 0 and draws nothing.
  for (int code : {7, -1}) expect_draws(code, 5, 3, [](Twin&) { return 0.0f; });
}

TEST(ProbResult, RunningTotalsWithAnInclusiveUpperEnd) {
  const float w[] = {0.2f, 0.3f, 0.5f};
  Rng rng = seeded(31);
  Twin twin(31);
  for (int i = 0; i < 3000; ++i) {
    const float r = twin.u();
    ASSERT_EQ(prob_result(rng, w, 3), r <= 0.2f ? 0 : (r <= 0.2f + 0.3f ? 1 : 2)) << r;
  }

  // A draw equal to a running total belongs to that alternative.
  const float r = Twin(9).u();
  const float below = std::nextafter(r, 0.0f);
  const float at_first[] = {r, 1.0f - r};
  const float at_second[] = {below, r - below, 1.0f};
  Rng a = seeded(9), b = seeded(9);
  EXPECT_EQ(prob_result(a, at_first, 2), 0);
  EXPECT_EQ(prob_result(b, at_second, 3), 1);

  // A draw above the total of all the weights chooses the last alternative.
  const float zeros[] = {0.0f, 0.0f, 0.0f};
  for (int i = 0; i < 100; ++i) EXPECT_EQ(prob_result(rng, zeros, 3), 2);
}

TEST(ProbResult, DrawsOnceEvenWithoutAChoice) {
  const float one[] = {0.4f};
  Rng rng = seeded(6);
  Twin twin(6);
  EXPECT_EQ(prob_result(rng, one, 1), 0);
  EXPECT_EQ(prob_result(rng, nullptr, 0), 0);
  EXPECT_EQ(prob_result(rng, nullptr, -3), 0);
  for (int i = 0; i < 3; ++i) twin.u();
  EXPECT_EQ(rng.rand(), twin.rng.rand());
}

// A place in a set comes from the draw's remainder; the multiplying form must
// give the remainder itself for every draw and size.
TEST(Modulus, EqualsTheRemainderOfEveryDraw) {
  Rng rng = seeded(8);
  std::vector<int> counts = {1, 2, 3, 5, 7, 8, 10, 12, 100, 127, 128, 1000, 65535, 2147483647};
  for (int i = 0; i < 200; ++i) counts.push_back(1 + rng.rand() % 100000);
  for (int count : counts) {
    const Modulus place(count);
    for (int draw : {0, 1, count - 1, count, count == 2147483647 ? 0 : count + 1, 2147483646, 2147483647}) {
      ASSERT_EQ(place.of(draw), draw % count) << draw << " % " << count;
    }
    for (int i = 0; i < 2000; ++i) {
      const int draw = rng.rand();
      ASSERT_EQ(place.of(draw), draw % count) << draw << " % " << count;
    }
  }
}

TEST(HundredPercent, SumStrictlyWithinTheTolerance) {
  const float tenths[] = {0.1f, 0.1f, 0.1f, 0.1f, 0.1f, 0.1f, 0.1f, 0.1f, 0.1f, 0.1f};
  const float short_of[] = {0.5f, 0.49f};
  const float over[] = {0.5f, 0.50002f};
  EXPECT_EQ(hundred_percent(tenths, 10), 1);
  EXPECT_EQ(hundred_percent(short_of, 2), 0);
  EXPECT_EQ(hundred_percent(over, 2), 0);
  EXPECT_EQ(hundred_percent(nullptr, 0), 0);
}

// Draws from the twin until one falls in [lo, hi].
float first_in(Twin& twin, float lo, float hi) {
  for (;;) {
    const float u = twin.u();
    if (u >= lo && u <= hi) return u;
  }
}

TEST(Rwindow, EachStepReturnsThePositionBeforeIt) {
  Rng rng = seeded(17);
  Twin twin(17);
  float pos = 0.5f, before = 0.5f, width = 1.0f;
  for (int i = 0; i < 200; ++i) {  // width 1 from the middle: the first draw wins
    const float draw = twin.u();
    ASSERT_EQ(rwindow(rng, width, pos), before);
    ASSERT_EQ(pos, draw);
    before = draw;
  }
}

TEST(Rwindow, WindowSlidesInsideAtEitherEdgeAndIsRoundedFromDouble) {
  const struct {
    unsigned seed;
    float pos, lo, hi;
  } cases[] = {
      {23, 0.05f, 0.0f, 0.2f},  // [-0.05, 0.15] slides to [0, 0.2]
      {29, 0.95f, 1.0f - 0.2f, 1.0f},
      {37, 0.5f, static_cast<float>(0.5 - static_cast<double>(0.2f) * 0.5),
       static_cast<float>(0.5 + static_cast<double>(0.2f) * 0.5)},
  };
  for (const auto& c : cases) {
    Rng rng = seeded(c.seed);
    Twin twin(c.seed);
    for (int i = 0; i < 50; ++i) {
      float pos = c.pos, width = 0.2f;
      EXPECT_EQ(rwindow(rng, width, pos), c.pos);
      ASSERT_EQ(pos, first_in(twin, c.lo, c.hi)) << c.seed;
    }
    EXPECT_EQ(rng.rand(), twin.rng.rand());
  }
}

TEST(Rwindow, AWindowNoDrawCanHitStallsTheWalk) {
  // Width 0 draws nothing; a negative or NaN width misses a million times
  // once, and from then on the walk is stalled: width 0, nothing drawn, the
  // position kept.
  const struct {
    float width;
    int draws;
  } cases[] = {{0.0f, 0}, {-0.5f, 1000000}, {std::numeric_limits<float>::quiet_NaN(), 1000000}};
  for (const auto& c : cases) {
    Rng rng = seeded(13);
    Twin twin(13);
    float pos = 0.3f, width = c.width;
    for (int step = 0; step < 3; ++step) {
      EXPECT_EQ(rwindow(rng, width, pos), 0.3f);
      EXPECT_EQ(pos, 0.3f);
      EXPECT_EQ(width, 0.0f);
    }
    for (int i = 0; i < c.draws; ++i) twin.rng.rand();
    EXPECT_EQ(rng.rand(), twin.rng.rand()) << c.width;
  }
}

TEST(Rwindow, AHitAfterManyMissesKeepsTheWalkGoing) {
  // A window of 1/100 from the middle: about a hundred misses, then a hit;
  // the walk moves and its width stays.
  Rng rng = seeded(5);
  Twin twin(5);
  float pos = 0.5f, width = 0.01f;
  const float lo = static_cast<float>(0.5 - static_cast<double>(width) * 0.5);
  const float hi = static_cast<float>(0.5 + static_cast<double>(width) * 0.5);
  EXPECT_EQ(rwindow(rng, width, pos), 0.5f);
  EXPECT_EQ(pos, first_in(twin, lo, hi));
  EXPECT_EQ(width, 0.01f);
}

}  // namespace
}  // namespace sorvel
