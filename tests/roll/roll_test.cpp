// The block seam and the roll: what a sink receives from a whole run, how the
// roll takes it, and the parts of the picture that are easy to get wrong
// (note names, stacked chord members, the span shown, the density switch).
#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "driver/run_sorvel.h"
#include "roll/collect.h"
#include "roll/frame.h"
#include "roll/roll.h"
#include "roll/scale.h"
#include "support/capture.h"

namespace sorvel {
namespace {

namespace fs = std::filesystem;

// What a sink saw of one block.
struct Seen {
  int number, I_NO, MAX_PFIELDS;
  std::vector<float> starts, keys;
  std::vector<int> codes;
  unsigned ins5;
};

class RecordingSink : public BlockSink {
 public:
  std::vector<Seen> blocks;
  int take_block(const FinishedBlock& b) override {
    Seen s{b.number, b.block.I_NO, b.block.MAX_PFIELDS, {}, {}, {}, 0};
    if (b.block.MAX_PFIELDS >= 5) s.ins5 = b.block.INS[3];
    const Event* first = b.block.note_list.handle->next;
    const Event* e = first;
    do {
      s.starts.push_back(e->start);
      s.codes.push_back(e->code);
      if (b.block.MAX_PFIELDS >= 5) s.keys.push_back(e->pf()[1]);
      e = e->next;
    } while (e != first);
    blocks.push_back(s);
    return 0;
  }
};

// Runs `text` as an input file through sorvel with the given sinks; the
// output goes to the null device.
class Seam : public ::testing::Test {
 protected:
  std::string dir;
  void SetUp() override {
    std::string templ = (fs::temp_directory_path() / "sorvel-roll-test.XXXXXX").string();
    std::vector<char> name(templ.begin(), templ.end());
    name.push_back('\0');
    ASSERT_NE(mkdtemp(name.data()), nullptr);
    dir = name.data();
  }
  void TearDown() override { fs::remove_all(dir); }

  int run(const std::string& text, std::vector<BlockSink*> sinks, bool midi = false) {
    const std::string in = dir + "/in.sor";
    std::ofstream(in) << text;
    sorvel::Run r;
    r.tmp_dir = dir;
    testing::Capture screen;
    r.screen = screen.f;
    std::vector<std::string> args = {"sorvel"};
    if (midi) args.push_back("-m");
    args.push_back(in);
    args.push_back("/dev/null");
    std::vector<char*> argv;
    for (std::string& a : args) argv.push_back(a.data());
    const int status = run_sorvel(r, static_cast<int>(argv.size()), argv.data(), sinks);
    run_state_tempo = find_beats ? beat_times(r, 4.0) : std::vector<double>{};
    messages = screen.text();
    return status;
  }
  bool find_beats = false;
  std::vector<double> run_state_tempo;
  std::string messages;
};

TEST_F(Seam, SinksSeeEachBlockThatSoundedAsWrittenWithoutItsRests) {
  RecordingSink a, b;
  const std::string text =
      "i3 = 5 0 -4 {\n p2 1\n p3 1\n p4 1 -1 1 1\n p5 no c4 d r e\n}\n"
      "i4 = 4 0 -2 {\n p2 1\n p3 0\n p4 1\n}\n"  // all rests: written nowhere
      "i7 = 4 0 -2 {\n p2 1\n p3 1\n p4 1\n}\n";
  ASSERT_EQ(run(text, {&a, &b}), 0) << messages;
  ASSERT_EQ(a.blocks.size(), 2u);
  EXPECT_EQ(a.blocks[0].number, 1);
  EXPECT_EQ(a.blocks[0].I_NO, 3);
  EXPECT_EQ(a.blocks[0].MAX_PFIELDS, 5);
  EXPECT_EQ(a.blocks[0].starts, (std::vector<float>{0.0f, 1.0f, 3.0f}));  // the rest is gone
  EXPECT_EQ(a.blocks[0].ins5, (1u << 14) | (1u << 10));  // read as re, then no
  EXPECT_EQ(a.blocks[1].number, 2);  // the all-rests block took no number
  EXPECT_EQ(a.blocks[1].I_NO, 7);
  EXPECT_EQ(b.blocks.size(), 2u);  // every sink, in turn
}

TEST_F(Seam, WithMidiSinksSeeTheNoteOnsAndOffsOfTheFile) {
  RecordingSink a;
  ASSERT_EQ(run("i1 = 5 0 -2 {\n p2 1\n p3 1\n p4 32767\n p5 60 188\n}\n"
                "i2 = 5 0 -2 {\n p2 1\n p3 1\n p4 1\n p5 1\n}\n",
                {&a}, true),
            0)
      << messages;
  ASSERT_EQ(a.blocks.size(), 1u);  // the first block only
  // on 60 at 0; its off at 1 goes after the on of the next note at 1
  EXPECT_EQ(a.blocks[0].codes, (std::vector<int>{1, 1, 0, 0}));
  EXPECT_EQ(a.blocks[0].keys, (std::vector<float>{60.0f, 60.0f, 60.0f, 60.0f}));  // 188 folded
}

TEST_F(Seam, ASinkErrorEndsTheRunAsAnErrorOfTheBlock) {
  struct Refuse : BlockSink {
    int take_block(const FinishedBlock&) override { return 32; }
  } refuse;
  EXPECT_EQ(run("i1 = 4 0 -1 {\n p2 1\n p3 1\n p4 1\n}\n", {&refuse}), 1);
  EXPECT_NE(messages.find("Yikes, out of memory!"), std::string::npos);
}

TEST_F(Seam, RollTakesPitchAndAmplitudeByTheirTypes) {
  Roll roll;
  RollSink sink(roll, RollOptions{});
  ASSERT_EQ(run("i2 = 7 0 -2 {\n p2 1\n p3 1\n p4 5\n p5 db 60 70\n p6(hz) 57\n p7 no c4\n}\n"
                "i3 = 5 0 -1 {\n p2 1\n p3 1\n p4 8\n p5(in) 9\n}\n",
                {&sink}),
            0)
      << messages;
  ASSERT_EQ(roll.blocks.size(), 2u);
  EXPECT_EQ(roll.blocks[0].pitch, 6);  // the first written as a pitch
  EXPECT_TRUE(roll.blocks[0].semitones);
  EXPECT_EQ(roll.blocks[0].amp, 5);  // read in dB
  EXPECT_TRUE(roll.blocks[0].amp_db);
  EXPECT_EQ(roll.blocks[1].pitch, 4);  // no pitch p-field: p4
  EXPECT_FALSE(roll.blocks[1].semitones);
  EXPECT_EQ(roll.blocks[1].amp, 0);
  ASSERT_EQ(roll.notes.size(), 3u);
  EXPECT_EQ(roll.notes[0].y, 57.0f);
  EXPECT_EQ(roll.notes[1].amp, 3162.0f);  // 70 dB as an amplitude
  EXPECT_EQ(roll.values.size(), 2u * 4u + 2u);  // p4..p7 twice, p4..p5 once

  Roll chosen;
  RollOptions o;
  o.pitch = 7;
  o.amp = -1;
  RollSink sink2(chosen, o);
  ASSERT_EQ(run("i2 = 7 0 -1 {\n p2 1\n p3 1\n p4 5\n p5 db 60\n p6(hz) 57\n p7 no c4\n}\n",
                {&sink2}),
            0);
  EXPECT_EQ(chosen.blocks[0].pitch, 7);
  EXPECT_EQ(chosen.notes[0].y, 48.0f);
  EXPECT_EQ(chosen.blocks[0].amp, 0);
}

TEST_F(Seam, TitlesKeepTheirValuesWhileThePictureDrawsNotesOneByOne) {
  const std::string text = "i1 = 4 0 -5 {\n p2 1\n p3 1\n p4 1 2 3 4 5\n}\n";
  RollOptions o;
  o.max_notes = 2;
  Roll all;
  RollSink sink(all, o);
  ASSERT_EQ(run(text, {&sink}), 0);
  EXPECT_TRUE(all.values_dropped);  // 5 notes to show, 2 drawn one by one at most
  EXPECT_TRUE(all.values.empty());
  o.to = 1.5;  // two notes shown
  Roll part;
  RollSink sink2(part, o);
  ASSERT_EQ(run(text, {&sink2}), 0);
  EXPECT_FALSE(part.values_dropped);
  EXPECT_EQ(part.values, (std::vector<float>{1, 2, 3, 4, 5}));
  EXPECT_NE(draw_roll(part, o).find("<title>block 1, i1: p2 1.000 p3 1.000 p4 2.000</title>"),
            std::string::npos);
}

TEST_F(Seam, MidiRollHasTheTicksTheFileHolds) {
  Roll roll;
  RollSink sink(roll, RollOptions{});
  // Notes a millisecond apart share a tick (0.48 truncated); lengths are
  // counted in ticks from each note-on to the note-off that ends it.
  ASSERT_EQ(run("i1 = 5 0 -3 {\n p2 .001\n p3 1001\n p4 16384\n p5 60 62 60\n}\n", {&sink}, true), 0)
      << messages;
  ASSERT_EQ(roll.notes.size(), 3u);
  EXPECT_TRUE(roll.midi);
  for (const RollNote& n : roll.notes) EXPECT_EQ(n.start, 0.0f);
  EXPECT_EQ(roll.notes[0].y, 60.0f);
  EXPECT_EQ(roll.notes[1].y, 62.0f);
  EXPECT_EQ(roll.notes[0].amp, 63.0f);
  // Each 1 s long: 480 ticks, but the note-offs' deltas are truncated too.
  for (const RollNote& n : roll.notes) EXPECT_NEAR(n.dur, 1.0f, 3.0f / 480.0f);
}

TEST_F(Seam, BeatsFollowTheTempoMap) {
  find_beats = true;
  ASSERT_EQ(run("te(0 2 60 120 f)\ni1 = 4 0 -1 {\n p2 1\n p3 1\n p4 1\n}\n", {}), 0);
  ASSERT_GE(run_state_tempo.size(), 4u);
  EXPECT_DOUBLE_EQ(run_state_tempo[1], 1.0);        // beat 0 at 60
  EXPECT_DOUBLE_EQ(run_state_tempo[2], 1.0 + 60.0 / 90.0);  // beat 1 at 90, half way to 120
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
