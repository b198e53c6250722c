// The random source: the additive feedback generator of the GNU C library's
// rand() (its TYPE_3 state of 31 words), kept in-house so that a seed gives
// the same sequence of numbers on every platform.
//
// The generator makes the sequence r[i] = r[i - 31] + r[i - 3] (32-bit
// wrap-around) and hands out r[i] >> 1. Only the last 31 words are ever read,
// so they are kept in a ring of 32 indexed by the low five bits of i: the word
// written at i replaces r[i - 32], which is no longer needed. One counter and
// two masks take the place of a front and a rear index that each wrap.
#pragma once

#include <cstddef>
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
    // The counter is a size_t so that the compiler may keep it in a register
    // across stores to the ring (the two types cannot alias).
    const size_t i = next_;
    const uint32_t val = ring_[(i - 31) & kMask] + ring_[(i - 3) & kMask];
    ring_[i & kMask] = val;
    next_ = i + 1;
    return static_cast<int>(val >> 1);
  }

 private:
  static constexpr size_t kRing = 32;
  static constexpr size_t kMask = kRing - 1;
  uint32_t ring_[kRing];
  size_t next_ = 0;  // i of the next word to make
};

}  // namespace sorvel
