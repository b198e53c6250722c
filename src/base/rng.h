// The random source: the additive feedback generator of the GNU C library's
// rand() (its TYPE_3 state of 31 words), kept in-house so that a seed gives
// the same sequence of numbers on every platform.
//
// Each raw number is the sum of the ones 31 and 3 places before it; rand()
// gives it shifted right by one. The numbers are made a batch at a time in a
// flat buffer that keeps the last 31 in front, which costs less per number
// than stepping round the 31-word ring one call at a time.
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
    if (next_ == kDeg + kBatch) refill();
    return static_cast<int>(raw_[next_++] >> 1);
  }

 private:
  static constexpr int kDeg = 31;
  static constexpr int kSep = 3;
  static constexpr int kBatch = 256;

  void refill();
  void make_batch();

  uint32_t raw_[kDeg + kBatch];  // the 31 numbers before the batch, then the batch
  int next_ = kDeg + kBatch;     // the next number to give
};

}  // namespace sorvel
