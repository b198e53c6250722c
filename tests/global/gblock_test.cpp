#include "global/gblock.h"

#include <gtest/gtest.h>

#include <string>

#include "../support/text_input.h"
#include "input/commands.h"

namespace sorvel {
namespace {

using testing::MemoryFile;
using testing::TextInput;

TEST(GBlock, InputStartingWithAnInstrumentIsAnEmptyBlock) {
  TextInput in("i1 = 4 0 4 {\n");
  MemoryFile out;
  EXPECT_EQ(parse_gblock(in.src, out.file), 0);
  EXPECT_EQ(in.src.pos, 0);
  EXPECT_EQ(in.src.line, 1);
  EXPECT_EQ(out.text(), "");
}

TEST(GBlock, CommandsRunAndTheBlockEndsOnLowerCaseI) {
  TextInput in("te(90)\n  RS(5) rd(0.5) Sr(22050)  i2 = 3 0 1 {\n");
  MemoryFile out;
  ASSERT_EQ(parse_gblock(in.src, out.file), 0);
  EXPECT_EQ(in.run.TEMPO_LIST[0].Stempo, 90.0f);
  EXPECT_EQ(in.run.MAX_DEV, 0.5f);
  EXPECT_EQ(in.run.SRATE, 22050u);
  EXPECT_EQ(in.src.line, 2);
  EXPECT_EQ(in.src.cur(), 'i');
  EXPECT_EQ(in.src.at(in.src.pos + 1), '2');
}

TEST(GBlock, CommandNamesInAnyCase) {
  TextInput in("Te(90)\nTE(80) tE(70)\ni");
  MemoryFile out;
  ASSERT_EQ(parse_gblock(in.src, out.file), 0);
  EXPECT_EQ(in.run.TEMPO_LIST[0].Stempo, 70.0f);
}

TEST(GBlock, RefusedItems) {
  const struct {
    const char* text;
    int status;
  } cases[] = {
      {"PF(2)\ni", 47},          {"pf(2)\ni", 47},
      {"DV(0.1)\ni", 22},        {"I1 = 3 0 1 {\n", 22},
      {"te(90) x\ni", 22},       {"/* c */ te(90)\ni", 22},
      {"; note\n/* a */ RS(1)\ni", 22},
      {"te(0.5)\ni", 46},        {"RD(200)\ni", 28},
      {"/* never closed\nte(90)\n", 3},
  };
  for (const auto& c : cases) {
    TextInput in(c.text);
    MemoryFile out;
    EXPECT_EQ(parse_gblock(in.src, out.file), c.status) << c.text;
  }
}

TEST(GBlock, CommentsAroundCommands) {
  TextInput in("/* c */\nte(90) ; fine\n/* two\n lines */ /* and more */  i1");
  MemoryFile out;
  ASSERT_EQ(parse_gblock(in.src, out.file), 0);
  EXPECT_EQ(in.run.TEMPO_LIST[0].Stempo, 90.0f);
  EXPECT_EQ(in.src.line, 4);
  EXPECT_EQ(in.src.cur(), 'i');
}

TEST(GBlock, EndOfInputIsPassedOn) {
  TextInput in("te(90)\n\n   \n");
  MemoryFile out;
  EXPECT_EQ(parse_gblock(in.src, out.file), -1);
  EXPECT_EQ(in.run.TEMPO_LIST[0].Stempo, 90.0f);
}

TEST(DirectOutput, RestOfTheLineGoesToTheScore) {
  TextInput in("> f1 0 4096 10 1\n>f2 i\ni");
  MemoryFile out;
  ASSERT_EQ(parse_gblock(in.src, out.file), 0);
  // The stored line holds a blank where its newline was; the "i" copied with
  // the second line does not end the block.
  EXPECT_EQ(out.text(), "\n f1 0 4096 10 1 \nf2 i ");
  EXPECT_EQ(in.src.line, 3);
}

TEST(DirectOutput, NothingGoesToAMidiFile) {
  TextInput in("> f1 0 4096 10 1\ni");
  in.run.MKMIDI = 1;
  MemoryFile out;
  ASSERT_EQ(parse_gblock(in.src, out.file), 0);
  EXPECT_EQ(out.text(), "");
  EXPECT_EQ(in.src.line, 2);
}

TEST(GBlock, ListsTheTemposAtItsEndWithTempoDisplay) {
  TextInput in("te(4 8 60 75 s)\ni");
  in.run.SHOW_TEMPOS = 1;
  in.run.SUPRESS = 1;
  MemoryFile out;
  ASSERT_EQ(parse_gblock(in.src, out.file), 0);
  EXPECT_EQ(in.messages(),
            "\n  Stored Tempos (There are 2 defs):"
            "\n\t1: Stime    0.00, Etime    0.00, Stempo   60.00, Etempo   60.00, Type E"
            "\n\t2: Stime    4.00, Etime    8.00, Stempo   60.00, Etempo   75.00, Type S"
            "\n");
}

TEST(GCommand, OnlyTheGlobalCommandsAreDispatched) {
  TextInput in("(2)");
  MemoryFile out;
  in.read_line();
  EXPECT_EQ(do_gcommand(CMD_PF, in.src, out.file), 47);
  EXPECT_EQ(do_gcommand(CMD_DV, in.src, out.file), 47);
  EXPECT_EQ(do_gcommand(CMD_EX, in.src, out.file), 47);
  EXPECT_EQ(in.src.pos, 0);
}

}  // namespace
}  // namespace sorvel
