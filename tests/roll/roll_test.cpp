// The roll where its check against sorvel (check_roll.py) does not reach: a
// sink's error, note names, ticks, stacked chord members, the span shown at
// its edges, the density switch at its limit, and values that are no numbers.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "driver/run_sorvel.h"
#include "roll/collect.h"
#include "roll/frame.h"
#include "roll/roll.h"
#include "roll/scale.h"
#include "support/capture.h"
#include "support/scratch.h"

namespace sorvel {
namespace {

namespace fs = std::filesystem;

// A sink that refuses every block, as a roll does that runs out of memory:
// the run ends with that error, as an error of the block.
TEST(Seam, ASinkErrorEndsTheRunAsAnErrorOfTheBlock) {
  struct Refuse : BlockSink {
    int take_block(const FinishedBlock&) override { return 32; }
  } refuse;
  const std::string dir = testing::make_dir("roll-test");
  testing::write_file(dir + "/in.sor", "i1 = 4 0 -1 {\n p2 1\n p3 1\n p4 1\n}\n");
  sorvel::Run r;
  r.tmp_dir = dir;
  testing::Capture screen;
  r.screen = screen.f;
  std::string a0 = "sorvel", a1 = dir + "/in.sor", a2 = "/dev/null";
  char* argv[] = {a0.data(), a1.data(), a2.data(), nullptr};
  EXPECT_EQ(run_sorvel(r, 3, argv, {&refuse}), 1);
  EXPECT_NE(screen.text().find("Yikes, out of memory!"), std::string::npos);
  fs::remove_all(dir);
}

TEST(RollScale, NoteNamesAsSorvelReadsThem) {
  EXPECT_EQ(note_name(48, false), "c4");
  EXPECT_EQ(note_name(49, false), "cs4");
  EXPECT_EQ(note_name(57.4, false), "a4");
  EXPECT_EQ(note_name(-1, false), "b-1");
  EXPECT_EQ(note_name(0, false), "c0");
  EXPECT_EQ(note_name(60, true), "c4");
  EXPECT_EQ(note_name(0, true), "c-1");
}

TEST(RollScale, TicksAtRoundSteps) {
  int decimals = -1;
  EXPECT_EQ(nice_ticks(0, 20, 8, decimals), (std::vector<double>{0, 5, 10, 15, 20}));
  EXPECT_EQ(decimals, 0);
  std::vector<double> t = nice_ticks(0.13, 0.91, 4, decimals);
  EXPECT_EQ(decimals, 1);
  ASSERT_EQ(t.size(), 4u);
  EXPECT_DOUBLE_EQ(t[0], 0.2);
  EXPECT_TRUE(nice_ticks(1, 1, 8, decimals).empty());
  // Steps below the precision of the values: a few ticks, not an endless loop.
  EXPECT_LE(nice_ticks(1e16, 1e16 + 1e5, 8, decimals).size(), 36u);
}

// A roll of one block of plain values, made by hand.
Roll hand_roll(const std::vector<RollNote>& notes) {
  Roll roll;
  RollBlock b;
  b.number = 1;
  b.I_NO = 1;
  b.MAX_PFIELDS = 4;
  b.pitch = 4;
  b.OUTS = {14, 14, 14};
  b.RE_FW = {3, 3, 3};
  b.FFT_SZ = {4, 4, 4};
  b.notes = notes.size();
  roll.blocks.push_back(b);
  roll.notes = notes;
  for (const RollNote& n : notes) roll.values.push_back(n.y);
  roll.caption = "a<b>&\"c\"";
  return roll;
}

size_t count(const std::string& s, const std::string& what) {
  size_t n = 0;
  for (size_t at = s.find(what); at != std::string::npos; at = s.find(what, at + 1)) ++n;
  return n;
}

std::vector<std::string> attribute(const std::string& s, const std::string& name) {
  std::vector<std::string> out;
  const std::string key = " " + name + "=\"";
  for (size_t at = s.find("class=\"note\""); at != std::string::npos;
       at = s.find("class=\"note\"", at + 1)) {
    const size_t v = s.find(key, at) + key.size();
    out.push_back(s.substr(v, s.find('"', v) - v));
  }
  return out;
}

TEST(RollPicture, ChordMembersOfOneValueStandAboveOneAnother) {
  const Roll roll = hand_roll({{0, 1, 5, 0, 0}, {0, 1, 5, 0, 0}, {0, 1, 5, 0, 0}, {1, 1, 5, 0, 0}});
  const std::string svg = draw_roll(roll, RollOptions{});
  const std::vector<std::string> y = attribute(svg, "y");
  ASSERT_EQ(y.size(), 4u);
  EXPECT_GT(std::stod(y[0]), std::stod(y[1]));
  EXPECT_DOUBLE_EQ(std::stod(y[0]) - std::stod(y[1]), std::stod(y[1]) - std::stod(y[2]));
  EXPECT_EQ(y[3], y[0]);  // a new start: a new group
  EXPECT_NE(svg.find("<title>a&lt;b&gt;&amp;&quot;c&quot;</title>"), std::string::npos);
  EXPECT_NE(svg.find("<title>block 1, i1: p2 0.000 p3 1.000 p4 5.000</title>"), std::string::npos);
}

TEST(RollPicture, TheSpanShownTakesTheNotesThatSoundInIt) {
  const Roll roll =
      hand_roll({{0, 1, 1, 0, 0}, {1, 1, 2, 0, 0}, {2, 0, 3, 0, 0}, {2.5, 1, 4, 0, 0}, {3, 1, 5, 0, 0}});
  RollOptions o;
  o.from = 1.0;  // the first note ends there: not shown
  o.to = 3.0;    // the last note starts there: not shown
  EXPECT_EQ(notes_in_range(roll, o), (std::vector<size_t>{1, 2, 3}));
  const std::string svg = draw_roll(roll, o);
  EXPECT_EQ(count(svg, "class=\"note\""), 3u);
  for (const std::string& x : attribute(svg, "x")) EXPECT_GE(std::stod(x), 64.0);  // clipped
  o.from = 2.0;  // a note of no length at the start is shown, one that ends there not
  EXPECT_EQ(notes_in_range(roll, o), (std::vector<size_t>{2, 3}));
}

TEST(RollPicture, AboveTheLimitADensityImage) {
  std::vector<RollNote> notes;
  for (int i = 0; i < 50; ++i) notes.push_back({i * 0.1f, 0.5f, static_cast<float>(i % 7), 0, 0});
  const Roll roll = hand_roll(notes);
  RollOptions o;
  o.max_notes = 50;
  std::string svg = draw_roll(roll, o);
  EXPECT_EQ(count(svg, "class=\"note\""), 50u);
  EXPECT_EQ(count(svg, "density image"), 0u);
  o.max_notes = 49;
  svg = draw_roll(roll, o);
  EXPECT_EQ(count(svg, "class=\"note\""), 0u);
  EXPECT_GT(count(svg, "class=\"cell\""), 0u);
  EXPECT_NE(svg.find("density image: 50 notes, more than 49"), std::string::npos);
  EXPECT_EQ(count(svg, "class=\"axis x-axis\""), 1u);  // the same axes
  EXPECT_EQ(count(svg, "class=\"legend-entry\""), 1u);
}

TEST(RollPicture, NothingThatIsNotANumberReachesACoordinate) {
  const float nan = std::nanf("");
  const float inf = HUGE_VALF;
  const Roll roll = hand_roll({{0, nan, 1, 0, 0}, {nan, 1, inf, 0, 0}, {1, 1, -inf, 0, 0}});
  const std::string svg = draw_roll(roll, RollOptions{});
  EXPECT_EQ(count(svg, "class=\"note\""), 3u);
  for (const char* name : {"x", "y", "width", "height"})
    for (const std::string& v : attribute(svg, name)) EXPECT_EQ(v.find_first_not_of("-0123456789."), std::string::npos) << v;
  // Values and times far beyond any score, in the largest picture, drawn
  // one by one and as a density image.
  const Roll huge = hand_roll({{3e38f, 3e38f, 3e38f, 0, 0}, {3e38f, 1, -3e38f, 0, 0}, {1e20f, 1, 1e20f, 0, 0}});
  RollOptions o;
  o.width = 100000;
  EXPECT_EQ(count(draw_roll(huge, o), "class=\"note\""), 3u);
  o.max_notes = 0;
  EXPECT_NE(draw_roll(huge, o).find("density image: 3 notes"), std::string::npos);
}

}  // namespace
}  // namespace sorvel
