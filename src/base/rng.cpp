#include "base/rng.h"

namespace sorvel {

// r[0] is the seed, r[1] to r[30] follow by 16807 * r[i - 1] mod (2^31 - 1),
// r[31] to r[33] repeat r[0] to r[2], and the first 310 words made after that
// are thrown away.
void Rng::srand(unsigned seed) {
  if (seed == 0) seed = 1;
  int32_t r[34];
  r[0] = static_cast<int32_t>(seed);
  for (int i = 1; i < 31; ++i) {
    // 16807 * r[i - 1] % 2147483647 without overflow (Schrage's method).
    const int64_t hi = r[i - 1] / 127773;
    const int64_t lo = r[i - 1] % 127773;
    int32_t word = static_cast<int32_t>(16807 * lo - 2836 * hi);
    if (word < 0) word += 2147483647;
    r[i] = word;
  }
  for (int i = 31; i < 34; ++i) r[i] = r[i - 31];
  for (size_t i = 0; i < 34; ++i) ring_[i & kMask] = static_cast<uint32_t>(r[i]);
  next_ = 34;
  for (int i = 0; i < 310; ++i) rand();
}

}  // namespace sorvel
