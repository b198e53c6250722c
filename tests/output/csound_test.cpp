// The Csound writer on values no input spells out: a NaN duration is no rest,
// and infinities are written as printf writes them.
#include "output/csound.h"

#include <gtest/gtest.h>

#include <limits>

#include "base/vocabulary.h"
#include "output/block_support.h"

namespace sorvel {
namespace {

TEST(CsoundWriter, NonFiniteValuesAsPrintfWritesThem) {
  testing::TestBlock t(6);
  t.block.OUTS = {CMD_RE, CMD_RE, CMD_DB, CMD_DB, CMD_RE};  // p4 and p5 in decibels
  t.block.RE_FW = {3, 3, 3, 3, 3};
  t.block.FFT_SZ = {4, 4, 4, 4, 4};
  const float inf = std::numeric_limits<float>::infinity();
  t.add(0.0f, std::numeric_limits<float>::quiet_NaN(), {0.0f, 0.4f, inf});
  t.add(1.0f, 0.0f, {1.0f, 1.0f, 1.0f});  // a rest
  FILE* score = std::tmpfile();
  EXPECT_EQ(print_csound(t.run, t.block, score), 1);
  // An amplitude of 0 (and 0.4, which rounds to 0) is minus infinity decibels.
  EXPECT_EQ(testing::contents(score), "\ni1    0.000    nan -inf -inf       inf \n");
  EXPECT_EQ(t.block.EVENTS, 1u);
  std::fclose(score);
}

}  // namespace
}  // namespace sorvel
