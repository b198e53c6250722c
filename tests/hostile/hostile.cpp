// Hostile inputs: bytes a text editor never writes, lines far past the line
// buffer, things left open at the end of the input, nesting and repetition
// without end, numbers past every limit. Each must end with its numbered
// error (or run to completion where the language allows it), leave no
// temporary file and stay inside its time limit (CTest's timeout).
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "driver/run_sorvel.h"
#include "output/block_support.h"
#include "output/midi.h"
#include "support/capture.h"
#include "support/scratch.h"

namespace sorvel {
namespace {

namespace fs = std::filesystem;

std::string repeat(const std::string& s, size_t n) {
  std::string out;
  out.reserve(s.size() * n);
  for (size_t i = 0; i < n; ++i) out += s;
  return out;
}

class Hostile : public ::testing::Test {
 protected:
  std::string dir = testing::make_dir("hostile");
  std::string tmp = testing::make_dir("hostile-tmp");
  std::string screen;
  int status = -1;

  void TearDown() override {
    EXPECT_TRUE(fs::is_empty(tmp)) << "a temporary file was left behind";
    fs::remove_all(dir);
    fs::remove_all(tmp);
  }

  void write(const std::string& name, const std::string& text) {
    testing::write_file(dir + "/" + name, text);
  }

  // Runs "sorvel -s in.sor out.sco" in the test's directory on `input`.
  void run(const std::string& input, size_t max_events = 100000) {
    write("in.sor", input);
    testing::Capture err, out;
    sorvel::Run r;
    r.screen = err.f;
    r.console = out.f;
    r.tmp_dir = tmp;
    r.MAX_EVENTS = max_events;
    std::vector<std::string> args{"sorvel", "-s", "in.sor", "out.sco"};
    std::vector<char*> argv;
    for (auto& a : args) argv.push_back(a.data());
    const fs::path home = fs::current_path();
    fs::current_path(dir);
    status = run_sorvel(r, static_cast<int>(argv.size()), argv.data());
    fs::current_path(home);
    screen = err.text();
  }

  // The last message of the run, from its "ERROR" on.
  std::string error() const {
    size_t at = screen.rfind("ERROR");
    return at == std::string::npos ? "" : screen.substr(at);
  }
};

TEST_F(Hostile, NulBytesEndALineAndFfBytesAreBlanks) {
  static const char kText[] = "i1 = 3 0 4 {\n p2 1\0 hidden garbage }\n\xff\xff p3 1 }\n";
  run(std::string(kText, sizeof kText - 1));
  EXPECT_EQ(status, 0) << screen;
  EXPECT_NE(screen.find("4 events generated in block #1 (i1)."), std::string::npos) << screen;
}

TEST_F(Hostile, AnOverlongCommentLineGoesOnAsText) {
  // The line buffer holds 2047 characters: what follows is a new line.
  run(";" + repeat("x", 5000) + "\n");
  EXPECT_EQ(status, 1);
  const std::string line2 = repeat("x", 2047);
  EXPECT_EQ(error(), "ERROR: Line 2: Invalid G-block command or character.\n" + line2 + "\n^\n");
}

TEST_F(Hostile, AnOverlongDataLineReadsInPieces) {
  run("i1 = 3 0 -3000 {\n p2 " + repeat("1 ", 3000) + "\n p3 1 }\n");
  EXPECT_EQ(status, 0) << error();
  EXPECT_NE(screen.find("3000 events generated"), std::string::npos);
}

TEST_F(Hostile, ThingsLeftOpenAtTheEnd) {
  run("/* a comment never closed\n\n");
  EXPECT_EQ(error(), "ERROR: Comments seemed to be mismatched... reached EOF.\n\n");
  run("i1 = 3 0 4 {\n p2 1\n");
  EXPECT_EQ(error(), "ERROR: Reached end-of-file before \"}\" was found.\n\n");
  run("i1 = 3 0 4 { p2 1 /* open\n");
  EXPECT_EQ(status, 1);
  EXPECT_EQ(error().substr(0, 51), "ERROR: Line 1: Reached EOF! (missing comment \"*/\"?)");
  run("i1 = 3 0 4 {");
  EXPECT_EQ(status, 0);
}

TEST_F(Hostile, DeeplyNestedComments) {
  const std::string open = repeat(repeat("/*", 1000) + "\n", 200);
  const std::string close = repeat(repeat("*/", 1000) + "\n", 200);
  run(open + close + "i1 = 3 0 1 { p2 1 p3 1 }\n");
  EXPECT_EQ(status, 0) << error();
  EXPECT_NE(screen.find("1 events generated"), std::string::npos);
}

TEST_F(Hostile, NumbersPastTheirLimits) {
  run("i99999 = 3 0 4 { p2 1 }\n");
  EXPECT_EQ(error().substr(0, 28), "ERROR: Line 1: Bad i-number.");
  run("i1 = 99999 0 4 { p2 1 }\n");
  EXPECT_EQ(error().substr(0, 40), "ERROR: Line 1: Bad number of parameters?");
  run("i1 = 3 0 4 { p99999 1 }\n");
  EXPECT_EQ(error().substr(0, 34), "ERROR: Line 1: Bad p-field number.");
  run("i1 = 3 0 4 { p2 1 x99999999999999999999 p3 1 }\n");
  EXPECT_EQ(status, 0) << error();
  run("rs(65536)\n");
  EXPECT_EQ(error().substr(0, 58),
            "ERROR: Line 1: Format RS(ui): ui = UNSIGNED INT (0-65535).");
  // Forty decimals wrap the scanner's divisor to zero: 1 / 0 is an infinite
  // rhythm, which fills the block at once.
  run("i1 = 3 0 4 { p2 0." + repeat("0", 40) + "1 p3 1 }\n");
  EXPECT_EQ(status, 0) << error();
}

TEST_F(Hostile, EventCountsInTheBillionsStopAtTheEventLimit) {
  const std::string memory = "ERROR: Line 1: Yikes, out of memory!";
  run("i1 = 3 0 -4000000000 { p2 1 }\n", 1000);
  EXPECT_EQ(error().substr(0, memory.size()), memory);
  // Rests move the beat backwards, so a block measured in beats never fills.
  run("i1 = 3 0 4 { p2 1 -2 }\n", 1000);
  EXPECT_EQ(error().substr(0, memory.size()), memory);
  run("i1 = 3 0 4 { p2 -1 x4000000000 }\n", 1000);
  EXPECT_EQ(error().substr(0, memory.size()), memory);
  // A rhythm that is not a number never reaches the end either.
  run("i1 = 3 0 4 { p2 0." + repeat("0", 40) + " }\n", 1000);
  EXPECT_EQ(error().substr(0, memory.size()), memory);
  // At the limit itself: exactly that many events, chord members and
  // repeated chords counted, are written; one more is refused.
  const struct {
    const char* block;
    int status;
  } at_limit[] = {
      {"i1 = 4 0 -4 { p2 1 p3 1 p4 1 }\n", 0},         {"i1 = 4 0 -5 { p2 1 p3 1 p4 1 }\n", 1},
      {"i1 = 4 0 -3 { p2 1 p3 1 p4 1 2:3 4 }\n", 0},   {"i1 = 4 0 -3 { p2 1 p3 1 p4 1 2:3 4:5 }\n", 1},
      {"i1 = 4 0 -2 { p2 1 p3 1 p4 1:2 x2 }\n", 0},    {"i1 = 4 0 -3 { p2 1 p3 1 p4 1:2 x3 }\n", 1},
      {"i1 = 4 0 -2 { p2 1 p3 1 p4 1 2:3:4 }\n", 0},   {"i1 = 4 0 -2 { p2 1 p3 1 p4 1:2 3:4:5 }\n", 1},
  };
  for (const auto& c : at_limit) {
    run(c.block, 4);
    EXPECT_EQ(status, c.status) << c.block << screen;
    if (c.status) {
      EXPECT_EQ(error().substr(0, memory.size()), memory) << c.block;
    }
  }
}

TEST_F(Hostile, TooManyPfields) {
  run("i1 = 129 0 4 { p2 1 }\n");
  EXPECT_EQ(screen.substr(screen.find("\n\nERROR")),
            "\n\nERROR: Bad number of p-fields (3 - 128)\ni1 = 129 0 4 { p2 1 } \n"
            "        ^\n");
}

// --- the preprocessors: macros, include files, conditional sections, constants

const std::string kTooBig = "Macro body exceeds maximum size.";

std::string read_back(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

TEST_F(Hostile, MacrosThatCallThemselves) {
  run("#define R #$R#\n$R\n");
  EXPECT_EQ(status, 1);
  EXPECT_EQ(error(), "ERROR: Line 2: " + kTooBig + "\n$R \n  ^\n");
  run("#define A #x$B#\n#define B #y$A#\n $A\n");
  EXPECT_EQ(status, 1);
  EXPECT_EQ(error(), "ERROR: Line 3: " + kTooBig + "\n $A \n   ^\n");
  // An empty macro in front of the recursive call leaves "$R" unexpanded in
  // the body, so each expansion is only two deep; the line is scanned again
  // and again until the count of expansions for the line (10,000) runs out,
  // on the 5001st call of R.
  run("#define E ##\n#define R #$E$R#\n $R\n");
  EXPECT_EQ(status, 1);
  EXPECT_EQ(error(), "ERROR: Line 3: " + kTooBig + "\n $R \n  ^\n");
}

TEST_F(Hostile, MacrosThatGrowWithoutBound) {
  // Each macro doubles the one before: M10 would hold 2048 characters.
  std::string defs = "#define M0 #ab#\n";
  for (int k = 1; k <= 20; ++k)
    defs += "#define M" + std::to_string(k) + " #$M" + std::to_string(k - 1) + "$M" +
            std::to_string(k - 1) + "#\n";
  run(defs + "$M20\n");
  EXPECT_EQ(status, 1);
  EXPECT_EQ(error(), "ERROR: Line 22: " + kTooBig + "\n$M20 \n    ^\n");
  // Empty macros fanning out ten-fold, nine levels deep: a billion expansions
  // that add nothing to the line, stopped at 10,000.
  defs = "#define E0 ##\n";
  for (int k = 1; k <= 9; ++k)
    defs += "#define E" + std::to_string(k) + " #" + repeat("$E" + std::to_string(k - 1), 10) + "#\n";
  run(defs + "$E9\n");
  EXPECT_EQ(status, 1);
  EXPECT_EQ(error(), "ERROR: Line 11: " + kTooBig + "\n$E9 \n   ^\n");
}

TEST_F(Hostile, MacroDefinitionsLeftOpen) {
  run("#define A #x\ny\n");
  EXPECT_EQ(status, 1);
  EXPECT_EQ(error(), "ERROR: EOF reached: missing macro body end (#).\n\n");
  // Line 1 gives the body a blank and a newline, each "y" line three more
  // characters: the 2048th is the newline after the "y" on line 683.
  run("#define A #\n" + repeat("y\n", 5000));
  EXPECT_EQ(status, 1);
  EXPECT_EQ(error(),
            "ERROR: Line 683: The macro body has exceeded the maximum number\n"
            "of characters allowed (2048).\ny \n  \n");
}

TEST_F(Hostile, AFileThatIncludesItself) {
  run("#include |in.sor|\ni1 = 3 0 1 { p2 1 p3 1 }\n");
  EXPECT_EQ(status, 1);
  const std::string opening = "\n\tOpening include file \"in.sor\"...";
  const std::string tail = repeat(opening, 12) + "\n\nToo many embedded include files! (Max = 12)\n";
  ASSERT_GE(screen.size(), tail.size());
  EXPECT_EQ(screen.substr(screen.size() - tail.size()), tail);
}

TEST_F(Hostile, ConditionalsNestedTenThousandDeep) {
  const std::string block = "i1 = 3 0 1 { p2 1 p3 1 }\n";
  run(repeat("#if(1)\n", 10000) + repeat("#endif\n", 10000) + block);
  EXPECT_EQ(status, 0) << error();
  EXPECT_NE(screen.find("1 events generated in block #1 (i1)."), std::string::npos);
  run("#if(0)\n" + repeat("#if(1)\n", 10000) + repeat("#endif\n", 10001) + block);
  EXPECT_EQ(status, 0) << error();
  EXPECT_NE(screen.find("1 events generated in block #1 (i1)."), std::string::npos);
  // Left open: a false section at the end of the input, or true ones.
  run("#if(0)\n" + repeat("#if(1)\n", 10000) + repeat("#endif\n", 10000));
  EXPECT_EQ(status, 1);
  EXPECT_EQ(error().substr(0, 33), "ERROR: Line 20001: Reached EOF. \"");
  run(repeat("#if(1)\n", 10000) + block);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(error().substr(0, 55), "ERROR: Line 10001: \"#if\" statement: missing an \"#endif\"");
}

TEST_F(Hostile, ManyConstantsAndTheLongestEquation) {
  std::string defs;
  for (int k = 0; k < 20000; ++k) defs += "#const K" + std::to_string(k) + " " + std::to_string(k) + "\n";
  run(defs + "> ~K0 ~K19999\n");
  EXPECT_EQ(status, 0) << error();
  EXPECT_EQ(read_back(dir + "/out.sco"), "\n 0.000 19999.000 \ne\n");
  // 1021 terms and 1020 operators fill the line (2046 characters and its
  // newline).
  run("> ~[" + repeat("1+", 1020) + "1]\n");
  EXPECT_EQ(status, 0) << error();
  EXPECT_EQ(read_back(dir + "/out.sco"), "\n 1021.000 \ne\n");
}

TEST_F(Hostile, OddBytesInMacroBodiesAndIncludeNames) {
  // A NUL byte ends the text of its line, "#" and all: the body never closes.
  run(std::string("#define A #x\0y#\n$A\n", 19));
  EXPECT_EQ(status, 1);
  EXPECT_EQ(error(), "ERROR: EOF reached: missing macro body end (#).\n\n");
  // A 0xFF byte reads as a blank.
  run("#define A #1\xff" "2#\ni1 = 4 0 2 { p2 1 p3 1 p4 $A }\n");
  EXPECT_EQ(status, 0) << error();
  EXPECT_EQ(read_back(dir + "/out.sco"),
            "\n;I-block #1 (i1):\ni1    0.000  1.000     1.000 \ni1    1.000  1.000     2.000 \n\ne\n");
  // In an include file name a NUL byte ends the name as it is opened; a
  // 0xFF byte is part of it.
  run(std::string("#include |a\0b|\n", 15));
  EXPECT_EQ(status, 1);
  const std::string bad = "\nBad include file name: \"a\"\n\n";
  ASSERT_GE(screen.size(), bad.size());
  EXPECT_EQ(screen.substr(screen.size() - bad.size()), bad);
  write("in\xff.inc", "i1 = 3 0 1 { p2 1 p3 1 }\n");
  run("#include |in\xff.inc|\n");
  EXPECT_EQ(status, 0) << error();
  EXPECT_NE(screen.find("\n\tOpening include file \"in\xff.inc\"..."), std::string::npos);
  EXPECT_NE(screen.find("1 events generated in block #1 (i1)."), std::string::npos);
}

// A hundred thousand tempo changes, then a block of half a million events:
// walking the tempo map for every change and for every event would take
// some 5 x 10^10 steps.
TEST_F(Hostile, ATempoMapOfAHundredThousandChanges) {
  std::string text;
  for (int k = 1; k <= 100000; ++k) {
    const std::string beat = std::to_string(k / 10) + "." + std::to_string(k % 10);
    text += "te(" + beat + " " + beat + " 60 " + (k % 2 ? "61" : "59") + ")\n";
  }
  text += "i1 = 4 0 -500000 { p2 1 p3 1 p4 1 }\n";
  run(text, 1000000);
  EXPECT_EQ(status, 0) << screen.substr(0, 300);
  EXPECT_EQ(error(), "");
  std::ifstream score(dir + "/out.sco");
  size_t events = 0;
  for (std::string line; std::getline(score, line);) events += line.rfind("i1 ", 0) == 0;
  EXPECT_EQ(events, 500000u);
}

TEST_F(Hostile, WalksThatNeverHitTheirWindowStall) {
  // A window of 1e-9 where floats lie 3e-8 apart: each walk misses a million
  // times once and then stays put. Before, every event cost a million draws
  // (minutes for this block, hours at the event limit).
  run("i1 = 4 0 -100000 {\np2 1\np3 1\np4 rw(T 1 [0 1] .000000001 .3)\n}\n");
  EXPECT_EQ(status, 0) << error();
  EXPECT_NE(screen.find("100000 events generated in block #1 (i1)."), std::string::npos);
  // Each alternative has its own walk, in p2 as in later p-fields.
  run("i1 = 4 0 -100000 {\n"
      "p2 rw(T .5 [1 2] .000000001 1.3 .5 [1 2] .000000001 1.7)\n"
      "p3 1\n"
      "p4 rw(T .3 [0 1] .000000001 .3 .3 [0 1] .000000001 .6 .4 [0 1] .000000001 .9)\n}\n");
  EXPECT_EQ(status, 0) << error();
  EXPECT_NE(screen.find("100000 events generated in block #1 (i1)."), std::string::npos);
}

// Two hundred thousand notes that all sound to the end of the block, with
// starts that step back now and then: placing their note-offs by walking
// forward from each note would take some 10^10 steps.
TEST(HostileMidi, LongNotesOutOfOrderPlaceTheirNoteOffsInOnePass) {
  const int notes = 200000;
  testing::TestBlock t(5);
  t.block.note_list.limit = 2 * notes;
  for (int i = 0; i < notes; ++i) {
    const float start = static_cast<float>(i % 1000 == 999 ? i - 500 : i) * 0.125f;
    t.add(start, 1e6f, {100.0f, static_cast<float>(i % 128)})->code = 1;
  }
  uint32_t size = 0;
  ASSERT_EQ(List2MIDI(t.run, t.block, size), 1);
  EXPECT_EQ(t.block.note_list.size(), static_cast<size_t>(2 * notes));
  EXPECT_GT(size, static_cast<uint32_t>(2 * notes * 4));
}

}  // namespace
}  // namespace sorvel
