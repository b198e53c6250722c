#include "base/rng.h"

namespace sorvel {

void Rng::srand(unsigned seed) {
  if (seed == 0) seed = 1;
  state_[0] = static_cast<int32_t>(seed);
  int32_t word = state_[0];
  for (int i = 1; i < kDeg; ++i) {
    // 16807 * word % 2147483647 without overflow (Schrage's method).
    int64_t hi = word / 127773;
    int64_t lo = word % 127773;
    word = static_cast<int32_t>(16807 * lo - 2836 * hi);
    if (word < 0) word += 2147483647;
    state_[i] = word;
  }
  f_ = kSep;
  r_ = 0;
  for (int i = 0; i < kDeg * 10; ++i) rand();
}

}  // namespace sorvel
