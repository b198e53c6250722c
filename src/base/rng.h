// The random source: the additive feedback generator of the GNU C library's
// rand() (its TYPE_3 state of 31 words), kept in-house so that a seed gives
// the same sequence of numbers on every platform.
#pragma once

#include <cstdint>

namespace sorvel {

class Rng {
 public:
  static constexpr int RAND_MAX_VALUE = 2147483647;

  Rng() { srand(1); }

  // Seeds the generator; a seed of 0 acts as 1.
  void srand(unsigned seed);

  // The next number, from 0 to 2^31 - 1.
  int rand() {
    uint32_t val = static_cast<uint32_t>(state_[f_]) + static_cast<uint32_t>(state_[r_]);
    state_[f_] = static_cast<int32_t>(val);
    f_ = f_ + 1 == kDeg ? 0 : f_ + 1;
    r_ = r_ + 1 == kDeg ? 0 : r_ + 1;
    return static_cast<int>(val >> 1);
  }

 private:
  static constexpr int kDeg = 31;
  static constexpr int kSep = 3;
  int32_t state_[kDeg];
  int f_ = kSep;  // front index
  int r_ = 0;     // rear index
};

}  // namespace sorvel
