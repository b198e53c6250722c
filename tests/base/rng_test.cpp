// The in-house generator must give exactly the numbers of the GNU C library's
// rand(): a seed in an input means the same score on every platform.
#include "base/rng.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace sorvel {
namespace {

TEST(Rng, FreshAndZeroSeededGeneratorsStartAsSeedOne) {
  // The first numbers of glibc's rand() after srand(1), well known.
  Rng fresh, zero;
  zero.srand(0);
  for (int want : {1804289383, 846930886, 1681692777, 1714636915}) {
    EXPECT_EQ(fresh.rand(), want);
    EXPECT_EQ(zero.rand(), want);
  }
}

#ifdef __GLIBC__
TEST(Rng, SameSequenceAsTheCLibrary) {
  // RS takes 0 to 65535, but the generator itself takes any unsigned seed.
  for (unsigned seed : {0u, 1u, 2u, 12345u, 65535u, 65536u, 2147483647u, 2147483648u, 4294967295u}) {
    Rng rng;
    rng.srand(seed);
    std::srand(seed);
    for (int i = 0; i < 5000; ++i) {
      const int want = std::rand();
      ASSERT_EQ(rng.rand(), want) << "seed " << seed << ", draw " << i;
    }
  }
}
#endif

}  // namespace
}  // namespace sorvel
