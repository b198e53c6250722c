// The pitch-name and data-list hints (H01-H03, H13-H17) over real runs: what
// each finds, where, and the text that fixes it; and that correct input,
// the same values written as the language means them, gives nothing.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "driver/run_sorvel.h"
#include "hints/data_hints.h"
#include "hints/pitch_hints.h"
#include "support/capture.h"
#include "support/scratch.h"

namespace sorvel {
namespace {

// Hands each call the two families watch to both.
class BothFamilies : public Observer {
 public:
  BothFamilies(Family& a, Family& b) : a_(a), b_(b) {}
  void file_lines(int run_line, const char* file, int file_line) override {
    a_.file_lines(run_line, file, file_line);
    b_.file_lines(run_line, file, file_line);
  }
  void block_start(int line, int index, int I_NO, float SBEAT, double STIME,
                   bool in_beats) override {
    a_.block_start(line, index, I_NO, SBEAT, STIME, in_beats);
    b_.block_start(line, index, I_NO, SBEAT, STIME, in_beats);
  }
  void block_end(int line) override {
    a_.block_end(line);
    b_.block_end(line);
  }
  void value_read(int line, const char* text, int begin, int end, int IN_TYPE,
                  float value) override {
    a_.value_read(line, text, begin, end, IN_TYPE, value);
    b_.value_read(line, text, begin, end, IN_TYPE, value);
  }
  void value_failed(int line, const char* text, int begin, int end, int IN_TYPE) override {
    a_.value_failed(line, text, begin, end, IN_TYPE);
    b_.value_failed(line, text, begin, end, IN_TYPE);
  }
  void block_filled(int line, int P_NO, float value, long count, bool one_group,
                    bool in_beats) override {
    a_.block_filled(line, P_NO, value, count, one_group, in_beats);
    b_.block_filled(line, P_NO, value, count, one_group, in_beats);
  }
  void weights_failed(int line, const char* text, const float* weights, const WeightSpan* at,
                      int count) override {
    a_.weights_failed(line, text, weights, at, count);
    b_.weights_failed(line, text, weights, at, count);
  }
  void error(int number, int line, const char* text, int pos) override {
    a_.error(number, line, text, pos);
    b_.error(number, line, text, pos);
  }

 private:
  Family& a_;
  Family& b_;
};

// A finding in one line: "line:column-end code message", then " => fix".
std::string shown(const Finding& f) {
  std::string s = std::to_string(f.line) + ":" + std::to_string(f.column) + "-" +
                  std::to_string(f.end_column) + " " + f.code + " " + f.message;
  if (f.has_fix) s += " => " + f.fix_text;
  return s;
}

class NotesHints : public ::testing::Test {
 protected:
  std::string dir = testing::make_dir("sorvel-notes-test");
  int status = -1;
  void TearDown() override { std::filesystem::remove_all(dir); }

  // Runs `text` as sorvel would (to the null device) with both families
  // listening; the findings in the order they were made.
  std::vector<std::string> hints(const std::string& text, bool midi = false) {
    const std::string in = dir + "/in.sor";
    testing::write_file(in, text);
    sorvel::Run run;
    run.tmp_dir = dir;
    testing::Capture screen;
    run.screen = screen.f;
    Findings found;
    PitchHints pitch(run, found);
    DataHints data(run, found);
    BothFamilies both(pitch, data);
    run.observer = &both;
    std::vector<std::string> args = {"sorvel"};
    if (midi) args.push_back("-m");
    args.push_back(in);
    args.push_back("/dev/null");
    std::vector<char*> argv;
    for (std::string& a : args) argv.push_back(a.data());
    status = run_sorvel(run, static_cast<int>(argv.size()), argv.data());
    pitch.finish();
    data.finish();
    std::vector<std::string> lines;
    for (const Finding& f : found) {
      EXPECT_STREQ(f.severity, "hint");
      lines.push_back(shown(f));
    }
    return lines;
  }
};

// What H01 adds after a "#" that no directive's letter follows.
#define BODY                                                                              \
  " The \"#\" also opens what the macro pass reads as a macro body: macro calls and " \
  "constants after it are not expanded until two more \"#\" have passed."

const char* kGs = "5:6-8 H01 \"g#\" is read as g natural; \"#\" is not an accidental here. "
                  "For G sharp write \"gs\" (flat: \"f\", as in \"bf\")." BODY " => gs";

TEST_F(NotesHints, SharpsAndFlatsWrittenAsHashAndB) {
  // g natural, a, b, b4, e; "b4" of "eb4" finds the block full.
  EXPECT_EQ(hints("i1 = 5 0 -5 {\np2 1\np3 1\np4 1\np5 no g# a bb4 eb4\n}\n"),
            (std::vector<std::string>{
                kGs,
                "5:11-14 H01 \"bb4\" is read as two notes, b and b4; \"b\" is not an accidental "
                "here. For B flat write \"bf4\" (sharp: \"s\", as in \"gs\"). => bf4",
                "5:15-18 H01 \"eb4\" is read as two notes, e and b4; \"b\" is not an accidental "
                "here. For E flat write \"ef4\" (sharp: \"s\", as in \"gs\"). => ef4",
            }));
  EXPECT_EQ(status, 0);

  // An upper-case letter; within a run of letters ("gab") a "b" is taken as a note.
  EXPECT_EQ(hints("i1 = 5 0 -6 {\np2 1\np3 1\np4 1\np5 no Bb gab\n}\n"),
            (std::vector<std::string>{
                "5:6-8 H01 \"Bb\" is read as two notes, B and b; \"b\" is not an accidental "
                "here. For B flat write \"bf\" (sharp: \"s\", as in \"gs\"). => bf"}));

  // The digit after "#" is no octave of g: it fails as a note of its own.
  EXPECT_EQ(hints("i1 = 5 0 -5 {\np2 1\np3 1\np4 1\np5 no g#4 a\n}\n"),
            (std::vector<std::string>{
                "5:6-9 H01 \"g#4\" is read as g natural; \"#\" is not an accidental here. "
                "For G sharp write \"gs4\" (flat: \"f\", as in \"bf\")." BODY " => gs4"}));
  EXPECT_EQ(status, 1);

  // Inside a function's set: the "#" fails the set there and then.
  EXPECT_EQ(hints("i1 = 5 0 -3 {\np2 1\np3 1\np4 1\np5 no SE(-3 1 [c# e])\n}\n"),
            (std::vector<std::string>{
                "5:15-17 H01 \"c#\" is read as c natural; \"#\" is not an accidental here. "
                "For C sharp write \"cs\" (flat: \"f\", as in \"bf\")." BODY " => cs"}));
  EXPECT_EQ(status, 1);
}

TEST_F(NotesHints, QuarterTonesOutsideNoxOrAfterTheOctave) {
  EXPECT_EQ(hints("i1 = 5 0 -3 {\np2 1\np3 1\np4 1\np5 no c+4\n}\n"),
            (std::vector<std::string>{
                "5:6-9 H02 \"c+4\": the quarter-tone marks \"+\" and \"-\" are read only after "
                "\"nox\"; after \"no\" the value fails. Write \"nox\" where this p-field's pitch "
                "names begin (its values are then not rounded to whole semitones)."}));
  EXPECT_EQ(status, 1);

  EXPECT_EQ(hints("i1 = 5 0 -3 {\np2 1\np3 1\np4 1\np5 nox c+4 c4+\n}\n"),
            (std::vector<std::string>{
                "5:11-14 H02 \"c4+\" is read as c4, and \"+\" after it is no part of the name: a "
                "quarter-tone mark stands between the letter and the octave, as in \"c+4\", and "
                "is read only after \"nox\". => c+4"}));
  EXPECT_EQ(status, 1);
}

TEST_F(NotesHints, OctavesAboveNine) {
  // c10 would be 10 * 12 = 120, which "op" writes 14.00 (14 * 12 - 48).
  EXPECT_EQ(hints("i1 = 5 0 -3 {\np2 1\np3 1\np4 1\np5 no b9 c10\n}\n"),
            (std::vector<std::string>{
                "5:9-12 H03 \"c10\": octave 10 is above 9, the highest octave of a pitch name, "
                "so the value fails. This pitch is 120: write it in \"op\" mode as 14.00, or as "
                "the number 120 in \"in\" mode."}));
  EXPECT_EQ(status, 1);
  // With MIDI output 12 more: cs10 would be key 121 + 12.
  EXPECT_EQ(hints("i1 = 5 0 -3 {\np2 1\np3 1\np4 1\np5 no cs10\n}\n", true),
            (std::vector<std::string>{
                "5:6-10 H03 \"cs10\": octave 10 is above 9, the highest octave of a pitch name, "
                "so the value fails. With MIDI output it would be key 133; the highest key, 127, "
                "is g9."}));
}

TEST_F(NotesHints, DecimalCommasAndFractions) {
  // 0 5 1 2 1 2 3 7 0 1 3: eleven values. "1,2,3" is a list, "7/0" no fraction.
  EXPECT_EQ(hints("i1 = 4 0 -11 {\np2 1\np3 1\np4 0,5 1/2 1,2,3 7/0 1/3\n}\n"),
            (std::vector<std::string>{
                "4:3-6 H13 \"0,5\" is read as two values, 0 and 5: \",\" separates values, and "
                "the decimal point is \".\". For the number write \"0.5\". => 0.5",
                "4:7-10 H14 \"1/2\" is read as two values, 1 and 2: \"/\" separates values (a "
                "second \"/\" repeats the last one) and divides nothing. For the fraction write "
                "\"0.5\". => 0.5",
                "4:21-24 H14 \"1/3\" is read as two values, 1 and 3: \"/\" separates values (a "
                "second \"/\" repeats the last one) and divides nothing. For the fraction write "
                "\"0.333333\". => 0.333333",
            }));
  EXPECT_EQ(status, 0);
}

TEST_F(NotesHints, WeightsThatDoNotAddUp) {
  // .5 .3 .3 = 1.1; scaled to tenths: .4545 -> .5, .2727 -> .3, the rest .2.
  EXPECT_EQ(hints("i1 = 4 0 -3 {\np2 1\np3 1\np4 ra(-3 .5 1 .3 2 .3 3)\n}\n"),
            (std::vector<std::string>{
                "4:9-21 H15 the weights .5 .3 .3 add up to 1.1; they must add up to 1.0. A "
                "version that adds up: .5 .3 .2. => .5 1 .3 2 .2"}));
  EXPECT_EQ(status, 1);
  // Thirds of .999: .333 .333 and the rest .334.
  EXPECT_EQ(hints("i1 = 4 0 -3 {\np2 1\np3 1\np4 se(-3 0.333 [1 2] 0.333 3 0.333 4)\n}\n"),
            (std::vector<std::string>{
                "4:9-34 H15 the weights 0.333 0.333 0.333 add up to 0.999; they must add up to "
                "1.0. A version that adds up: 0.333 0.333 0.334. => 0.333 [1 2] 0.333 3 0.334"}));
  // S2 too: .5 .6 = 1.1 -> .5 and the rest .5.
  EXPECT_EQ(hints("i1 = 4 0 -3 {\np2 1\np3 1\np4 s2(-3 .5 [1:2 3] .6 4)\n}\n"),
            (std::vector<std::string>{
                "4:9-22 H15 the weights .5 .6 add up to 1.1; they must add up to 1.0. A version "
                "that adds up: .5 .5. => .5 [1:2 3] .5"}));
  // Weights on two lines: the message alone, at the first weight. 1.25 in
  // hundredths: .5 -> .40, .25 -> .20, the rest .40.
  EXPECT_EQ(hints("i1 = 4 0 -3 {\np2 1\np3 1\np4 ra(-3 .5 1\n      .25 2 .5 3)\n}\n"),
            (std::vector<std::string>{
                "4:9-11 H15 the weights .5 .25 .5 add up to 1.25; they must add up to 1.0. A "
                "version that adds up: .4 .2 .4."}));
  // Tenths that cannot stay tenths: twelve weights of .1 (1.2) need
  // hundredths (.08 each, the rest .12).
  EXPECT_EQ(hints("i1 = 4 0 -3 {\np2 1\np3 1\n"
                  "p4 se(-3 .1 1 .1 1 .1 1 .1 1 .1 1 .1 1 .1 1 .1 1 .1 1 .1 1 .1 1 .1 1)\n}\n"),
            (std::vector<std::string>{
                "4:9-66 H15 the weights .1 .1 .1 .1 .1 .1 .1 .1 .1 .1 .1 .1 add up to 1.2; they "
                "must add up to 1.0. A version that adds up: .08 .08 .08 .08 .08 .08 .08 .08 .08 "
                ".08 .08 .12. => .08 1 .08 1 .08 1 .08 1 .08 1 .08 1 .08 1 .08 1 .08 1 .08 1 .08 1 "
                ".12"}));
}

TEST_F(NotesHints, DataThatRunsShortInABlockOfBeats) {
  // p2: 1 + 1 + .5 + .5 = 3 beats of 8; ten more eighths fill the other 5.
  // p4: two values for fourteen events, twelve more; p3's one value fills
  // the block as meant.
  EXPECT_EQ(hints("i1 = 4 0 8 {\np2 rh 4 4 8 8\np3 1\np4 1 2\n}\n"),
            (std::vector<std::string>{
                "2:12-13 H16 the data of p2 runs out before the end of the block, which is "
                "counted in beats: its last value, \"8\", is repeated to make 10 more events. To "
                "repeat a whole pattern, write it as a loop \"< ... >\".",
                "4:5-6 H16 the data of p4 runs out before the end of the block, which is counted "
                "in beats: its last value, \"2\", is repeated to make 12 more events. To repeat "
                "a whole pattern, write it as a loop \"< ... >\".",
            }));
  EXPECT_EQ(status, 0);
}

TEST_F(NotesHints, CorrectInputGivesNothing) {
  // The same music written as the language means it: accidentals s, f, n;
  // quarter tones after "nox"; decimals with a point; rhythm ties with ",";
  // lists with commas; weights that add up; one value, one chord or a loop
  // that fills a block of beats; a block counted in events.
  EXPECT_EQ(hints("i1 = 5 0 8 {\n"
                  "p2 rh 2,8 4 < 8 8 >\n"
                  "p3 1\n"
                  "p4 0.5 .5 1,2,3 1 / / 2 ra(-3 .333 1 .333 2 .334 3)\n"
                  "p5 no gs4 ef4 b9 r cdegab c\n"
                  "}\n"
                  "i2 = 5 8 -6 {\n"
                  "p2 1\n"
                  "p3 1\n"
                  "p4 1 2\n"
                  "p5 nox c+4 ds-4 bf se(-3 .5 [c e] .5 g)\n"
                  "}\n"
                  "i3 = 5 14 4 {\n"
                  "p2 1\n"
                  "p3 1\n"
                  "p4 7\n"
                  "p5 no c'e'g\n"
                  "}\n"),
            std::vector<std::string>{});
  EXPECT_EQ(status, 0);
}

// The block calls come from the header and the "}"; here the family hears
// them directly, as a run would make them.
TEST(NotesHintsOpenBlock, AHeaderOrTheEndInsideAnOpenBlock) {
  sorvel::Run run;
  Findings found;
  DataHints data(run, found);
  data.file_lines(1, "piece.sor", 1);
  data.file_lines(3, "part.sor", 1);  // an include file: run lines 3 to 8
  data.file_lines(9, "piece.sor", 3);
  data.block_start(1, 1, 1, 0.0f, 0.0, false);
  data.block_end(2);
  data.block_start(4, 2, 7, 4.0f, 4.0, true);  // part.sor line 2
  data.error(73, 7, "i2 = 5 8 4 {", 0);
  data.error(27, 8, "p5 1 2 i2 = 5 8 4 {", 7);
  data.error(73, 8, "in = 1", 0);  // no header: nothing to add
  data.error(70, 10, "  p2 1", 4);  // piece.sor line 4
  data.error(5, 11, "", 0);
  std::vector<std::string> lines;
  for (const Finding& f : found) lines.push_back(shown(f));
  const std::string open = "the block of i7 begun at line 2";
  EXPECT_EQ(lines, (std::vector<std::string>{
                       "7:0-0 H17 \"}\" is missing before this header: " + open +
                           " is still open, and this header is read as its data. Close that "
                           "block with \"}\" on a line before this header. => }\n",
                       "8:7-7 H17 \"}\" is missing before this header: " + open +
                           " is still open, and this header is read as its data. Close that "
                           "block with \"}\" on a line before this header. => }\n",
                       "10:2-4 H17 p2 a second time: " + open +
                           " of part.sor is still open. Once a block is full, the rest of its "
                           "data is passed over up to the next p-field line, and a header with "
                           "no \"}\" before it is passed over with it: close that block with "
                           "\"}\" before the next header.",
                       "0:0-0 H17 the input ends inside " + open +
                           " of part.sor: its \"}\" is missing.",
                   }));
  // After "}", nothing is open.
  found.clear();
  data.block_end(12);
  data.error(73, 13, "i3 = 5 0 4 {", 0);
  EXPECT_TRUE(found.empty());
}

}  // namespace
}  // namespace sorvel
