#include "base/random.h"

#include <cmath>

namespace sorvel {

namespace {

constexpr double kLn1000 = 6.9078001976;
constexpr int kMaxWalkMisses = 1000000;

// A uniform variate drawn again while it is 0.
float nonzero_uniform(Rng& rng) {
  float u = uniform(rng);
  while (u == 0.0f) u = uniform(rng);
  return u;
}

}  // namespace

float expone_left(Rng& rng) {
  float u = nonzero_uniform(rng);
  float v = static_cast<float>(-std::log(static_cast<double>(u)) / kLn1000);
  if (v > 1.0f) return 1.0f;
  return v;
}

float gauss(Rng& rng) {
  float s = 0.0f;
  for (int i = 0; i < 12; ++i) s = s + uniform(rng);
  float v = (s - 6.0f) * 0.155f + 0.5f;
  if (v < 0.0f) return 0.0f;
  if (v > 1.0f) return 1.0f;
  return v;
}

float bilex(Rng& rng) {
  float x = 2.0f * uniform(rng);
  while (x == 0.0f || x == 2.0f) x = 2.0f * uniform(rng);
  int sign = 1;
  if (x > 1.0f) {
    x = 2.0f - x;
    sign = -1;
  }
  double v = std::log(static_cast<double>(x)) * static_cast<double>(sign) / 14.0;
  if (v > 0.5) return 1.0f;
  if (v < -0.5) return 0.0f;
  return static_cast<float>(0.5 + v);
}

// Jöhnk's method with both shape parameters 0.2 (exponents 1 / 0.2 = 5).
float beta(Rng& rng) {
  for (;;) {
    float u1 = nonzero_uniform(rng);
    float u2 = nonzero_uniform(rng);
    float a = static_cast<float>(std::pow(static_cast<double>(u1), 5.0));
    float b = static_cast<float>(std::pow(static_cast<double>(u2), 5.0));
    float sum = a + b;
    if (sum > 1.0f) continue;
    return a / sum;
  }
}

float mk_rval(Rng& rng, int code, float low, float high) {
  float range = high - low;
  switch (code) {
    case 0:
      return low + static_cast<float>(rng.rand()) * (range * kTwoPow31Inv);
    case 1:
      return low + expone_left(rng) * range;
    case 2:
      return low + (1.0f - expone_left(rng)) * range;
    case 3: {
      float u1 = uniform(rng);
      float u2 = uniform(rng);
      double mid = (static_cast<double>(u1) + static_cast<double>(u2)) * 0.5;
      double span = static_cast<double>(high) - static_cast<double>(low);
      return static_cast<float>(mid * span + static_cast<double>(low));
    }
    case 4:
      return low + gauss(rng) * range;
    case 5:
      return low + bilex(rng) * range;
    case 6:
      return low + beta(rng) * range;
    default:
      return 0.0f;
  }
}

// The window of `width` centred on the position, slid back inside [0, 1] at
// either edge. A width of 0 draws nothing; a million misses in a row (a window
// that no draw can hit) leave the walk where it is, stalled.
float rwindow(Rng& rng, float& width, float& position) {
  float old = position;
  if (width == 0.0f) return old;
  double half = static_cast<double>(width) * 0.5;
  float lo = static_cast<float>(static_cast<double>(position) - half);
  float hi = static_cast<float>(static_cast<double>(position) + half);
  if (lo < 0.0f) {
    lo = 0.0f;
    hi = width;
  } else if (hi > 1.0f) {
    lo = 1.0f - width;
    hi = 1.0f;
  }
  for (int miss = 0; miss < kMaxWalkMisses; ++miss) {
    float u = uniform(rng);
    // One test, not two: whether a draw falls below the window is as good as
    // random, and a branch on it alone would be mispredicted again and again.
    // u - lo >= 0 exactly when u >= lo (a difference of floats keeps its
    // sign), likewise hi - u; the smaller of the two stands for both. A NaN
    // bound makes both differences NaN, and the test fails as it should.
    const float above = u - lo;
    const float below = hi - u;
    const float margin = below < above ? below : above;
    if (margin >= 0.0f) {
      position = u;
      return old;
    }
  }
  width = 0.0f;
  return old;
}

float rand_window(Rng& rng, float low, float high, float& width, float& position) {
  float step = rwindow(rng, width, position);
  return low + (high - low) * step;
}

int hundred_percent(const float* weights, int n) {
  float sum = 0.0f;
  for (int k = 0; k < n; ++k) sum = sum + weights[k];
  return sum > 0.99999f && sum < 1.00001f ? 1 : 0;
}

}  // namespace sorvel
