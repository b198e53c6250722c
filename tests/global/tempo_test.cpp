// The tempo map has no fixed number of records.
#include "global/tempo.h"

#include <gtest/gtest.h>

#include <string>

#include "../support/text_input.h"

namespace sorvel {
namespace {

TEST(TempoMap, TableHasNoFixedLimit) {
  // Sixty one-beat changes from 60 to 61 at beats 1 to 60, each on its own line.
  std::string text;
  for (int k = 1; k <= 60; ++k) text += "te(" + std::to_string(k) + " " + std::to_string(k) + " 60 61)\n";
  testing::TextInput in(text);
  while (in.src.get_buff() == 0) {
    in.src.pos = 2;
    ASSERT_EQ(get_tempo_change(in.src), 0) << in.src.line;
  }
  EXPECT_EQ(in.run.TOT_TEMPOS, 61);
  ASSERT_EQ(in.run.TEMPO_LIST.size(), 61u);
  EXPECT_EQ(in.run.TEMPO_LIST[60].Stime, 60.0f);
  EXPECT_EQ(find_tempo(in.run, 60.5f), 61.0f);
}

}  // namespace
}  // namespace sorvel
