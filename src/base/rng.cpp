#include "base/rng.h"

#include <cstring>

namespace sorvel {

void Rng::srand(unsigned seed) {
  if (seed == 0) seed = 1;
  int32_t state[kDeg];
  state[0] = static_cast<int32_t>(seed);
  int32_t word = state[0];
  for (int i = 1; i < kDeg; ++i) {
    // 16807 * word % 2147483647 without overflow (Schrage's method).
    int64_t hi = word / 127773;
    int64_t lo = word % 127773;
    word = static_cast<int32_t>(16807 * lo - 2836 * hi);
    if (word < 0) word += 2147483647;
    state[i] = word;
  }
  // The ring's first sum adds word 0 to word 3: read from word 3 on, the ring
  // is the run of 31 numbers that the next one is made from.
  for (int j = 0; j < kDeg; ++j) raw_[j] = static_cast<uint32_t>(state[(kSep + j) % kDeg]);
  make_batch();
  for (int i = 0; i < kDeg * 10; ++i) rand();
}

void Rng::refill() {
  // The last 31 numbers made go in front; the next batch follows them.
  std::memmove(raw_, raw_ + kBatch, sizeof(uint32_t) * kDeg);
  make_batch();
}

void Rng::make_batch() {
  for (int k = kDeg; k < kDeg + kBatch; ++k) raw_[k] = raw_[k - kDeg] + raw_[k - kSep];
  next_ = kDeg;
}

}  // namespace sorvel
