// Time along the tempo map, and what the tests of sorvel-hints
// (tests/cases/hints) cannot see: rhythms made by a function, and that the
// run with the MIDI family attached writes and says what it does without.
#include <gtest/gtest.h>

#include <cmath>
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

// Naming the blocks after the first reads the rest of the input, quietly: the
// run writes the same file and says the same as it does without an observer.
TEST_F(Hints, BlocksTheMidiFileDoesNotHold) {
  const std::string text =
      "i1 = 5 0 2 {\n p2 1\n p3 1\n p4 10000\n p5 60\n}\n"
      "te(0 4 60 90)\n"
      "te(2 3 60 60)\n"  // a conflict, which the run would print
      "i2 = 5 300 2 {\n p2 1\n p3 1\n p4 10000\n p5 62\n}\n"  // a late start: warning 20
      "i-3 = 5 0 2 { p2 1 }\n"  // skipped by the run in any case
      "; a comment\n"
      "i4\n = 5 0 2 {\n p2 1\n p3 1\n p4 10000\n p5 64\n}\n";
  ASSERT_EQ(run<MidiHints>(text, true), 0) << messages;
  EXPECT_EQ(lines_of(found),
            (std::vector<std::string>{
                "9:0-0 H07 block 2 (i2) is not in the MIDI file: with -m the run writes the "
                "first i-block only and reads no further.",
                "17:0-0 H07 block 4 (i4) is not in the MIDI file: with -m the run writes the "
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

}  // namespace
}  // namespace sorvel
