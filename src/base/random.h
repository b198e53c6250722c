// Random values: the uniform variate, the seven distributions, the random
// walk, and weighted choice among alternatives.
#pragma once

#include <cstdint>

#include "base/rng.h"

namespace sorvel {

// 2^-31 as written, in single precision: a draw times this is a value from 0 to 1.
inline constexpr float kTwoPow31Inv = 4.656613e-10f;

// rand() as a float times 2^-31: a value from 0 to 1.
inline float uniform(Rng& rng) { return static_cast<float>(rng.rand()) * kTwoPow31Inv; }

// The remainder of a draw divided by a count fixed in advance, by two
// multiplications instead of a division (exact for every draw and every
// count from 1 up; a count below 1 acts as 1). Choosing a place in a set
// takes one of these for every draw.
class Modulus {
 public:
  explicit Modulus(int count)
      : count_(count > 1 ? static_cast<uint32_t>(count) : 1u),
        inverse_(~uint64_t{0} / count_ + 1) {}

  int of(int draw) const {
    const uint64_t fraction = inverse_ * static_cast<uint32_t>(draw);
    return static_cast<int>((static_cast<unsigned __int128>(fraction) * count_) >> 64);
  }

 private:
  uint32_t count_;
  uint64_t inverse_;  // 2^64 / count, rounded up (wrapping to 0 for a count of 1)
};

// Unit-interval variates.
float expone_left(Rng& rng);
float gauss(Rng& rng);
float bilex(Rng& rng);
float beta(Rng& rng);

// A value between low and high from distribution `code` (0 flat, 1 low
// exponential, 2 high exponential, 3 triangular, 4 gauss, 5 bilateral
// exponential, 6 beta); 0.0 for a code above 6.
float mk_rval(Rng& rng, int code, float low, float high);

// One random-walk step: returns the position as it was and stores the new
// one. A walk whose draws miss its window a million times in a row is
// stalled: its width becomes 0, so from then on it draws nothing and keeps
// its position.
float rwindow(Rng& rng, float& width, float& position);
float rand_window(Rng& rng, float low, float high, float& width, float& position);

// A random index into n weights, chosen by weight. One draw comes first,
// whatever n is. A draw above the running total of all the weights (they need
// not add up to one) chooses the last alternative. Inline: every value of a
// function makes this choice.
inline int prob_result(Rng& rng, const float* weights, int n) {
  const float r = uniform(rng);
  if (n == 1 || n <= 0) return 0;
  float total = weights[0];
  if (r <= total) return 0;
  for (int k = 1; k < n; ++k) {
    total = total + weights[k];
    if (r <= total) return k;
  }
  return n - 1;
}
// Whether the n weights add up to one (within 0.00001).
int hundred_percent(const float* weights, int n);

}  // namespace sorvel
