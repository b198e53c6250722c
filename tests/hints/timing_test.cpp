// The timing and MIDI families of hints over whole runs: what each finds in
// small inputs whose times are worked out by hand in the comments, and that
// the run with them attached writes what it writes without them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <string>
#include <vector>

#include "driver/run_sorvel.h"
#include "hints/midi_hints.h"
#include "hints/tempo_reach.h"
#include "hints/timing_hints.h"
#include "support/capture.h"
#include "support/scratch.h"

namespace sorvel {
namespace {

using testing::make_dir;
using testing::read_file;
using testing::write_file;

// One line a finding: "line:column-end code message".
std::vector<std::string> lines_of(const Findings& found) {
  std::vector<std::string> out;
  for (const Finding& f : found)
    out.push_back(std::to_string(f.line) + ":" + std::to_string(f.column) + "-" +
                  std::to_string(f.end_column) + " " + f.code + " " + f.message);
  return out;
}

class Hints : public ::testing::Test {
 protected:
  std::string dir = make_dir("sorvel-hints-test");
  void TearDown() override { std::filesystem::remove_all(dir); }

  // Runs `text` with the family F as the run's observer; returns the status.
  template <class F>
  int run(const std::string& text, bool midi = false) {
    sorvel::Run r;
    F family(r, found);
    r.observer = &family;
    const int status = run_plain(r, text, midi);
    family.finish();
    return status;
  }

  int run_plain(sorvel::Run& r, const std::string& text, bool midi) {
    write_file(dir + "/in.sor", text);
    r.tmp_dir = dir;
    testing::Capture screen;
    r.screen = screen.f;
    std::vector<std::string> args = {"sorvel"};
    if (midi) args.push_back("-m");
    args.push_back(dir + "/in.sor");
    args.push_back(dir + "/out");
    std::vector<char*> argv;
    for (std::string& a : args) argv.push_back(a.data());
    const int status = run_sorvel(r, static_cast<int>(argv.size()), argv.data(), {});
    messages = screen.text();
    return status;
  }

  Findings found;
  std::string messages;
};

// Tempo 60 + 5 beats a minute per beat (60 at beat 0, 100 at beat 8); a beat
// from b to b + 1 lasts the integral of 60 / (60 + 5x), 12 ln((65 + 5b) / (60 + 5b)).
TEST(TempoReach, FollowsTheCurveOfEveryRecordInDouble) {
  sorvel::Run r;
  r.tempo_map.replace_first({0.0f, 60.0f, 16.0f, 140.0f, 0.0f, 1.0f});
  EXPECT_DOUBLE_EQ(tempo_at(r.tempo_map, 8.0), 100.0);
  EXPECT_NEAR(seconds_along_map(r.tempo_map, 0.0, 8.0), 12.0 * std::log(100.0 / 60.0), 1e-9);
  // Past the end (beat 16) the end tempo holds: 4 beats at 140.
  EXPECT_NEAR(seconds_along_map(r.tempo_map, 16.0, 20.0), 4.0 * 60.0 / 140.0, 1e-12);
  // A record added at beat 4 governs from there: 60 up to beat 4, then 120
  // from 120 to 60 along a quarter sine (type 4), whose tempo at beat 6 is
  // 120 - 60 sin(pi/4).
  sorvel::Run s;
  s.tempo_map.add({4.0f, 120.0f, 8.0f, 60.0f, 4.0f, 1.0f});
  EXPECT_NEAR(tempo_at(s.tempo_map, 6.0), 120.0 - 60.0 * std::sin(M_PI / 4.0), 1e-9);
  EXPECT_NEAR(seconds_along_map(s.tempo_map, 0.0, 4.0), 4.0, 1e-12);
  // A negative exponent: from 60 to 120 the tempo is 60 + 60 / b with b = x / 4,
  // unbounded at the start, so a beat lasts x / (x + 4) seconds: 4 - 4 ln 2 in
  // all. From 120 to 60 it is 120 - 60 / b, below 0 up to beat 2: no time.
  sorvel::Run z;
  z.tempo_map.replace_first({0.0f, 60.0f, 4.0f, 120.0f, 3.0f, -1.0f});
  EXPECT_NEAR(seconds_along_map(z.tempo_map, 0.0, 4.0), 4.0 - 4.0 * std::log(2.0), 1e-6);
  z.tempo_map.replace_first({0.0f, 120.0f, 4.0f, 60.0f, 3.0f, -1.0f});
  EXPECT_TRUE(std::isnan(seconds_along_map(z.tempo_map, 0.0, 4.0)));
}

// The canon: voice 2 enters at beat 8 of a straight accelerando from
// 60 to 140 over 16 beats. At beat 8 the tempo is 100: the start is
// 8 * 60 / 100 = 4.800 s; along the map, 12 ln(100/60) = 6.130 s; a part in
// whole beats reaches it at 60/60 + 60/65 + ... + 60/95 = 6.334 s. The first
// rhythm of each voice: beat 0, 1 beat, 1.000 s against 12 ln(65/60) = 0.961 s;
// beat 8, 1 beat, 60/100 = 0.600 s against 12 ln(105/100) = 0.585 s.
TEST_F(Hints, TheCanonUnderAnAccelerando) {
  ASSERT_EQ(run<TimingHints>("te(0 16 60 140 f)\n"
                             "i1 = 3 0 16 {\n p2 1\n p3 1\n}\n"
                             "i2 = 3 8 1 {\n p2 1\n p3 1\n}\n"),
            0)
      << messages;
  EXPECT_EQ(lines_of(found),
            (std::vector<std::string>{
                "3:4-5 H05 block 1 (i1): a rhythm of 1 beat at beat 0 lasts 1.000 s, converted at "
                "the tempo where it starts (60 beats a minute); read along the tempo map, which "
                "moves under it, the same 1 beat lasts 0.961 s. Each rhythm is converted at the "
                "single tempo of its first beat (the first such rhythm of the block; later ones "
                "are not listed).",
                "6:0-0 H04 block 2 (i2) starts at beat 8, converted at the tempo there (100 beats "
                "a minute): 4.800 s; the tempo map reaches beat 8 at 6.130 s (a part that moves "
                "in whole beats from beat 0, each at the tempo where it starts, reaches it at "
                "6.334 s). A block's start is converted at the single tempo of its start beat, "
                "not along the map, so it is not in time with a part that began earlier.",
                "7:4-5 H05 block 2 (i2): a rhythm of 1 beat at beat 8 lasts 0.600 s, converted at "
                "the tempo where it starts (100 beats a minute); read along the tempo map, which "
                "moves under it, the same 1 beat lasts 0.585 s. Each rhythm is converted at the "
                "single tempo of its first beat (the first such rhythm of the block; later ones "
                "are not listed).",
            }));
}

// te(4 4 60 90): 60 up to beat 4, 90 from there. Rhythms of 1 beat never
// straddle the change; the rhythm of 2 beats at beat 3 does: 2 * 60/60 = 2.000 s
// against 1 + 60/90 = 1.667 s. The block at beat 8 starts at 8 * 60/90 = 5.333 s;
// the map reaches beat 8 at 4 + 4 * 60/90 = 6.667 s, as does a part in whole
// beats. The block at beat 2 (before the change) is in time.
TEST_F(Hints, AStepChangeOnlyWhereATimeCrossesIt) {
  ASSERT_EQ(run<TimingHints>("te(4 4 60 90)\n"
                             "i1 = 3 0 8 {\n p2 1 1 1 2 1\n p3 1\n}\n"
                             "i1 = 3 2 2 {\n p2 1\n p3 1\n}\n"
                             "i1 = 3 8 2 {\n p2 1\n p3 1\n}\n"),
            0)
      << messages;
  const std::vector<std::string> got = lines_of(found);
  ASSERT_EQ(got.size(), 2u);
  EXPECT_EQ(got[0].rfind("3:10-11 H05 block 1 (i1): a rhythm of 2 beats at beat 3 lasts 2.000 s, "
                         "converted at the tempo where it starts (60 beats a minute); read along "
                         "the tempo map, which moves under it, the same 2 beats last 1.667 s.",
                         0),
            0u)
      << got[0];
  EXPECT_EQ(got[1].rfind("10:0-0 H04 block 3 (i1) starts at beat 8, converted at the tempo there "
                         "(90 beats a minute): 5.333 s; the tempo map reaches beat 8 at 6.667 s "
                         "(a part that moves in whole beats from beat 0, each at the tempo where "
                         "it starts, reaches it at 6.667 s).",
                         0),
            0u)
      << got[1];
}

TEST_F(Hints, NoTimingHintsUnderAConstantTempo) {
  // te(120) replaces the first record: every beat lasts half a second.
  ASSERT_EQ(run<TimingHints>("te(120)\ni1 = 3 5 4 {\n p2 rh 4. 8 2\n p3 1\n}\n"
                             "i2 = 3 9.5 -3 {\n p2 0.25 ra(3 1 2)\n p3 1\n}\n"),
            0)
      << messages;
  EXPECT_EQ(lines_of(found), std::vector<std::string>{});
}

// Rhythms made by a function are timed too: the first under the accelerando
// starts at beat 0 at 60 beats a minute, and is told at the function's end.
TEST_F(Hints, RhythmsOfAFunctionAreTimed) {
  ASSERT_EQ(run<TimingHints>("te(0 16 60 140 f)\ni1 = 3 0 4 {\n p2 ra(4 1 2)\n p3 1\n}\n"), 0)
      << messages;
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].code, "H05");
  EXPECT_EQ(found[0].line, 3);
  EXPECT_NE(found[0].message.find("at beat 0 lasts "), std::string::npos) << found[0].message;
}

// p4 db 96: exp(96 * 0.11512925) = 63095.7, truncated to the amplitude 63095;
// times 127/32767 the velocity is 244.547, written as the byte 244. p5 b9 with
// -m is 9 * 12 + 11 + 12 = 131, folded modulo 128 to key 3. Both notes alike.
TEST_F(Hints, VelocityAndKeyOutsideADataByte) {
  ASSERT_EQ(run<MidiHints>("i1 = 5 0 -2 {\n p2 1\n p3 1\n p4 db 96\n p5 no b9\n}\n", true), 0)
      << messages;
  EXPECT_EQ(lines_of(found),
            (std::vector<std::string>{
                "1:0-0 H06 block 1 (i1), note 1 at 0.000 s: p4 63095 gives the velocity 244.547 "
                "(p4 is an amplitude, 0 to 32767 for velocities 0 to 127), written as the byte "
                "244, which is no MIDI data byte (0 to 127): strict readers refuse the file. "
                "(1 more note like it)",
                "1:0-0 H06 block 1 (i1), note 1 at 0.000 s: p5 131 is written as key 3: keys are "
                "taken modulo 128, so it wraps round. (1 more note like it)",
            }));
}

// Twelve notes 3 ms apart, each held 1 s: every note-on comes 1.44 ticks after
// the one before, written as 1 tick. Note k (from 0) stands at tick k, k/480 s,
// while it belongs at 0.003k s: 0.91667k ms early, first more than 10 ms at
// k = 11 (10.083 ms), the twelfth note, at 0.033 s and tick 11 (0.023 s).
TEST_F(Hints, TicksRoundedDownFallBehind) {
  ASSERT_EQ(run<MidiHints>("i1 = 5 0 -12 {\n p2 .003\n p3 1\n p4 10000\n p5 60\n}\n", true), 0)
      << messages;
  EXPECT_EQ(lines_of(found),
            (std::vector<std::string>{
                "1:0-0 H08 block 1 (i1), note 12 at 0.033 s: written at tick 11 (0.023 s), "
                "10.083 ms early: each time between MIDI events is rounded down to a whole tick "
                "(1/480 s), and the losses add up along the block.",
            }));
}

TEST_F(Hints, BlocksTheMidiFileDoesNotHold) {
  const std::string text =
      "i1 = 5 0 2 {\n p2 1\n p3 1\n p4 10000\n p5 60\n}\n"
      "te(0 4 60 90)\n"
      "i2 = 5 0 2 {\n p2 1\n p3 1\n p4 10000\n p5 62\n}\n"
      "i-3 = 5 0 2 { p2 1 }\n"  // skipped by the run in any case
      "; a comment\n"
      "i4\n = 5 0 2 {\n p2 1\n p3 1\n p4 10000\n p5 64\n}\n";
  ASSERT_EQ(run<MidiHints>(text, true), 0) << messages;
  EXPECT_EQ(lines_of(found),
            (std::vector<std::string>{
                "8:0-0 H07 block 2 (i2) is not in the MIDI file: with -m the run writes the "
                "first i-block only and reads no further.",
                "16:0-0 H07 block 4 (i4) is not in the MIDI file: with -m the run writes the "
                "first i-block only and reads no further.",
            }));
  // The run wrote the same file and said the same with the family attached.
  const std::string file = read_file(dir + "/out").value_or("");
  const std::string said = messages;
  sorvel::Run plain;
  ASSERT_EQ(run_plain(plain, text, true), 0);
  EXPECT_EQ(read_file(dir + "/out").value_or(""), file);
  EXPECT_EQ(messages, said);
}

TEST_F(Hints, AFirstBlockOfRestsOnly) {
  ASSERT_EQ(run<MidiHints>("i5 = 5 0 2 {\n p2 1\n p3 -1\n p4 10000\n p5 60\n}\n", true), 0)
      << messages;
  EXPECT_EQ(lines_of(found),
            (std::vector<std::string>{
                "1:0-0 H07 block 1 (i5) is all rests: the MIDI file holds no notes.",
            }));
}

// Both families at once, as the checker hands every call to every family.
class BothFamilies : public Observer {
 public:
  BothFamilies(const Run& run, Findings& out) : timing(run, out), midi(run, out) {}
  void block_start(int line, int index, int I_NO, float SBEAT, double STIME,
                   bool in_beats) override {
    timing.block_start(line, index, I_NO, SBEAT, STIME, in_beats);
    midi.block_start(line, index, I_NO, SBEAT, STIME, in_beats);
  }
  void rhythm_timed(int line, int begin, int end, float beat, float beats,
                    double seconds) override {
    timing.rhythm_timed(line, begin, end, beat, beats, seconds);
  }
  void midi_note(int block, double seconds, unsigned long tick, int key, int velocity,
                 float key_value, float velocity_value) override {
    midi.midi_note(block, seconds, tick, key, velocity, key_value, velocity_value);
  }
  void midi_block_left_out(int line, int block, int I_NO) override {
    midi.midi_block_left_out(line, block, I_NO);
  }
  void finish() {
    timing.finish();
    midi.finish();
  }

 private:
  TimingHints timing;
  MidiHints midi;
};

// The examples give no timing or MIDI hint, but for the one that shows the
// step tempo on purpose (it says so): tempo.sor, an accelerando from 60 to
// 120 over 8 beats, whose first quarter note lasts 1.000 s where the map,
// 60 + 7.5x, gives 8 ln(67.5/60) = 0.942 s.
TEST_F(Hints, TheExamplesAreClean) {
  namespace fs = std::filesystem;
  struct Back {  // to the directory the tests run in, however the test ends
    fs::path was = fs::current_path();
    ~Back() { fs::current_path(was); }
  } back;
  fs::current_path(SORVEL_EXAMPLES);  // where their include files are
  std::vector<fs::path> examples;
  for (const auto& entry : fs::directory_iterator("."))
    if (entry.path().extension() == ".sor") examples.push_back(entry.path());
  std::sort(examples.begin(), examples.end());
  ASSERT_GE(examples.size(), 10u);
  for (const fs::path& example : examples)
    for (bool midi : {false, true}) {
      if (midi && example.filename() != "midi.sor") continue;
      found.clear();
      sorvel::Run r;
      BothFamilies both(r, found);
      r.observer = &both;
      const std::string text = read_file(example.string()).value_or("");
      EXPECT_EQ(run_plain(r, text, midi), 0) << example << messages;
      both.finish();
      std::vector<std::string> codes;
      for (const Finding& f : found) codes.push_back(f.code);
      if (example.filename() == "tempo.sor") {
        ASSERT_EQ(codes, std::vector<std::string>{"H05"});
        EXPECT_NE(found[0].message.find("lasts 1.000 s"), std::string::npos);
        EXPECT_NE(found[0].message.find("lasts 0.942 s"), std::string::npos);
      } else {
        EXPECT_EQ(codes, std::vector<std::string>{}) << example << (midi ? " -m" : "");
      }
    }
}

}  // namespace
}  // namespace sorvel
