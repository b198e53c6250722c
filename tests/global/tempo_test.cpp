#include "global/tempo.h"

#include <gtest/gtest.h>

#include <string>

#include "../support/text_input.h"

namespace sorvel {
namespace {

using testing::TextInput;

// Runs the "te" command that starts the first line of `text`.
int te(TextInput& in) {
  in.read_line(2);
  return get_tempo_change(in.src);
}

// Runs the "te" commands of `text`, one per line, each line starting with
// "te"; stops at the first failure.
int te_lines(TextInput& in) {
  for (;;) {
    if (in.src.get_buff()) return 0;
    in.src.pos = 2;
    int r = get_tempo_change(in.src);
    if (r) return r;
  }
}

void expect_record(const TempoDef& d, float stime, float stempo, float etime, float etempo,
                   float type, float vcurve) {
  EXPECT_EQ(d.Stime, stime);
  EXPECT_EQ(d.Stempo, stempo);
  EXPECT_EQ(d.Etime, etime);
  EXPECT_EQ(d.Etempo, etempo);
  EXPECT_EQ(d.Type, type);
  EXPECT_EQ(d.Vcurve, vcurve);
}

TEST(TempoMap, WithoutTempoChangesABeatIsOneSecond) {
  sorvel::Run run;
  EXPECT_EQ(find_tempo(run, 0.0f), 60.0f);
  EXPECT_EQ(find_tempo(run, 123.5f), 60.0f);
  run.TEMPO = 0.0f;
  EXPECT_EQ(to_tempo(run, 17.0f, 2.5f), 2.5f);
  EXPECT_EQ(run.TEMPO, 60.0f);
}

TEST(TempoChange, SingleTempoReplacesRecordZero) {
  TextInput in("te(120)");
  ASSERT_EQ(te(in), 0);
  EXPECT_EQ(in.run.TOT_TEMPOS, 1);
  ASSERT_EQ(in.run.TEMPO_LIST.size(), 1u);
  // The curve value of the initial record (0) is kept.
  expect_record(in.run.TEMPO_LIST[0], 0, 120, 1000, 120, 0, 0);
  EXPECT_EQ(to_tempo(in.run, 3.0f, 1.0f), 0.5f);
  EXPECT_EQ(in.run.TEMPO, 120.0f);
  EXPECT_EQ(in.src.pos, 7);
  EXPECT_EQ(in.messages(), "");
}

TEST(TempoChange, SingleTempoLeavesAppendedRecordsInForce) {
  TextInput in("te(4 8 60 90)\nte(120)\n");
  ASSERT_EQ(te_lines(in), 0);
  EXPECT_EQ(in.run.TOT_TEMPOS, 2);
  EXPECT_EQ(find_tempo(in.run, 3.0f), 120.0f);
  // Beat 5: record 1, a curve of type e: 60 + 30 (1/4)^2.
  EXPECT_EQ(find_tempo(in.run, 5.0f), 61.875f);
  EXPECT_EQ(find_tempo(in.run, 8.0f), 90.0f);
  // Record 0 now ends at beat 1000, after record 2's start.
  EXPECT_EQ(in.messages(), "\nWARNING: Tempo #2 conflicts with previous tempo's end time!");
}

TEST(TempoChange, MoveFromBeatZeroReplacesRecordZero) {
  TextInput in("te(0 10 60 120)");
  ASSERT_EQ(te(in), 0);
  EXPECT_EQ(in.run.TOT_TEMPOS, 1);
  expect_record(in.run.TEMPO_LIST[0], 0, 60, 10, 120, 1, 1);
}

TEST(TempoChange, LaterMoveIsAppended) {
  TextInput in("te(4 8 60 120)");
  ASSERT_EQ(te(in), 0);
  EXPECT_EQ(in.run.TOT_TEMPOS, 2);
  ASSERT_EQ(in.run.TEMPO_LIST.size(), 2u);
  expect_record(in.run.TEMPO_LIST[0], 0, 60, 0, 60, 1, 0);
  expect_record(in.run.TEMPO_LIST[1], 4, 60, 8, 120, 1, 1);
}

TEST(TempoChange, TableHasNoFixedLimit) {
  std::string text;
  for (int k = 1; k <= 60; ++k) text += "te(" + std::to_string(k) + " " + std::to_string(k) + " 60 61)\n";
  TextInput in(text);
  ASSERT_EQ(te_lines(in), 0);
  EXPECT_EQ(in.run.TOT_TEMPOS, 61);
  EXPECT_EQ(in.run.TEMPO_LIST.size(), 61u);
  EXPECT_EQ(in.run.TEMPO_LIST[60].Stime, 60.0f);
  EXPECT_EQ(find_tempo(in.run, 60.5f), 61.0f);
}

TEST(TempoChange, TermsMaySpanLinesAndTakeSeparators) {
  TextInput in("te (4, 8/ 60 /* start */ 120\n  l )");
  ASSERT_EQ(te(in), 0);
  expect_record(in.run.TEMPO_LIST[1], 4, 60, 8, 120, 2, 1);
  EXPECT_EQ(in.src.line, 2);
}

TEST(TempoChange, CurveLetters) {
  TextInput a("te(0 10 60 120 v2.5)");
  ASSERT_EQ(te(a), 0);
  EXPECT_EQ(a.run.TEMPO_LIST[0].Type, 3.0f);
  EXPECT_EQ(a.run.TEMPO_LIST[0].Vcurve, 2.5f);

  TextInput b("te(0 10 60 120 v0)");
  EXPECT_EQ(te(b), 63);
  TextInput c("te(0 10 60 120 e*)");
  EXPECT_EQ(te(c), 64);
  // A letter that is no curve stays in place and is not the ")".
  TextInput d("te(4 8 60 120 q)");
  EXPECT_EQ(te(d), 19);
  EXPECT_EQ(d.run.TOT_TEMPOS, 2);  // stored before the ")" is checked
}

TEST(TempoChange, FormatErrors) {
  const struct {
    const char* text;
    int status;
  } cases[] = {
      {"te x(90)", 96},         {"te()", 150},
      {"te(x)", 150},           {"te(1 x 60 60)", 151},
      {"te(1 2 x 60)", 152},    {"te(1 2 60 )", 153},
      {"te(0.5)", 46},          {"te(4001)", 46},
      {"te(4000)", 0},          {"te(1)", 0},
      {"te(90", 151},           {"te(1 2 60 60", 19},
  };
  for (const auto& c : cases) {
    TextInput in(c.text);
    EXPECT_EQ(te(in), c.status) << c.text;
  }
}

TEST(TempoChange, RangeChecksInOrder) {
  const struct {
    const char* text;
    int status;
  } cases[] = {
      {"te(-1 20000 0 0)", 155},    {"te(10001 20000 0 0)", 155},
      {"te(1 20000 0 0)", 156},     {"te(1 10000 0.9 0)", 157},
      {"te(0 10 4001 60)", 157},    {"te(1 10000 1 4000.5)", 158},
      {"te(8 4 60 60)", 159},       {"te(0 10000 1 4000)", 0},
  };
  for (const auto& c : cases) {
    TextInput in(c.text);
    EXPECT_EQ(te(in), c.status) << c.text;
  }
}

TEST(TempoChange, ZeroLengthChangeIsAPlainTempo) {
  TextInput in("te(4 4 60 90)");
  ASSERT_EQ(te(in), 0);
  EXPECT_EQ(find_tempo(in.run, 3.9f), 60.0f);
  EXPECT_EQ(find_tempo(in.run, 4.0f), 90.0f);
  EXPECT_EQ(find_tempo(in.run, 50.0f), 90.0f);
}

TEST(TempoChange, LateAndLongChangeWarns) {
  TextInput in("te(700 800 60 60)");
  ASSERT_EQ(te(in), 0);
  const std::string line = "te(700 800 60 60)\n" + std::string(16, ' ') + "^\n";
  EXPECT_EQ(in.messages(),
            "\n\nWARNING: Line 1: This change starts quite late. Is that okay?\n" + line +
                "\n\nWARNING: Line 1: This tempo change is quite long. Is that okay?\n" + line);
}

TEST(TempoChange, TempoWarnings) {
  const struct {
    const char* text;
    const char* first;
    const char* second;
  } cases[] = {
      {"te(0 600 301 29)", "Tempo1 is quite fast.", "Tempo2 is quite slow."},
      {"te(0 10 29 301)", "Tempo1 is quite slow.", "Tempo2 is quite fast."},
  };
  for (const auto& c : cases) {
    TextInput in(c.text);
    ASSERT_EQ(te(in), 0);
    const std::string m = in.messages();
    EXPECT_NE(m.find(c.first), std::string::npos) << c.text;
    EXPECT_LT(m.find(c.first), m.find(c.second)) << c.text;
    EXPECT_EQ(m.find("WARNING", m.find(c.second)), std::string::npos) << c.text;
  }

  // The limits themselves do not warn.
  TextInput quiet("te(600 600 300 30)");
  ASSERT_EQ(te(quiet), 0);
  EXPECT_EQ(quiet.messages(), "");

  TextInput single("te(29)\n");
  ASSERT_EQ(te(single), 0);
  EXPECT_EQ(single.messages(),
            "\n\nWARNING: Line 1: Tempo1 is quite slow. Is that okay?\nte(29) \n      ^\n");
}

TEST(TempoChange, ConflictsAreNumberedFromOneAndRepeated) {
  TextInput in("te(10 20 60 90)\nte(15 30 90 60)\nte(40 50 60 60)\n");
  ASSERT_EQ(te_lines(in), 0);
  const std::string conflict = "\nWARNING: Tempo #3 conflicts with previous tempo's end time!";
  EXPECT_EQ(in.messages(), conflict + conflict);
}

TEST(TempoChange, SuppressionSilencesWarningsButNotConflicts) {
  TextInput in("te(10 20 60 90)\nte(15 30 90 20)\n");
  in.run.SUPRESS = 1;
  ASSERT_EQ(te_lines(in), 0);
  EXPECT_EQ(in.messages(), "\nWARNING: Tempo #3 conflicts with previous tempo's end time!");
}

TEST(TempoMap, RecordsGovernInEntryOrder) {
  TextInput in("te(10 20 60 90)\nte(5 6 100 100)\n");
  ASSERT_EQ(te_lines(in), 0);
  EXPECT_EQ(curtempo(in.run, 7.0f), 0);  // record 2 is hidden behind record 1
  EXPECT_EQ(find_tempo(in.run, 7.0f), 60.0f);
  EXPECT_EQ(curtempo(in.run, 10.0f), 2);
  EXPECT_EQ(find_tempo(in.run, 12.0f), 100.0f);
}

TEST(TempoMap, StraightChangeIsSampledAtTheStartBeat) {
  TextInput in("te(0 10 60 120 f)");
  ASSERT_EQ(te(in), 0);
  EXPECT_EQ(find_tempo(in.run, 9.5f), 117.0f);
  EXPECT_EQ(to_tempo(in.run, 9.5f, 2.0f), (60.0f / 117.0f) * 2.0f);
  EXPECT_EQ(in.run.TEMPO, 117.0f);
}

TEST(TempoMap, DefaultCurveIsSquare) {
  TextInput in("te(0 10 60 120)");
  ASSERT_EQ(te(in), 0);
  const double f = static_cast<double>(9.5f / 10.0f);
  EXPECT_EQ(find_tempo(in.run, 9.5f), static_cast<float>(60.0 + 60.0 * (f * f)));
}

TEST(TempoMap, ConversionTrace) {
  TextInput in(" ");
  in.run.SHOW_TEMPOS = 1;
  in.run.SUPRESS = 1;
  EXPECT_EQ(to_tempo(in.run, 2.0f, 1.5f), 1.5f);
  EXPECT_EQ(in.messages(),
            "\n  > Beat    2.00 Tempo =   60.00 Val =    1.50 (bts)    1.50 (secs)");
}

TEST(TempoMap, Listing) {
  TextInput in("te(0 10 60 120 v2.5)\nte(20 30 90 45)\nte(30 40 90 45 c)\n");
  ASSERT_EQ(te_lines(in), 0);
  const std::string before = in.messages();
  print_tempos(in.run);
  EXPECT_EQ(in.messages().substr(before.size()),
            "\n  Stored Tempos (There are 3 defs):"
            "\n\t1: Stime    0.00, Etime   10.00, Stempo   60.00, Etempo  120.00, Type U, "
            "Vcurve =    2.50"
            "\n\t2: Stime   20.00, Etime   30.00, Stempo   90.00, Etempo   45.00, Type E"
            "\n\t3: Stime   30.00, Etime   40.00, Stempo   90.00, Etempo   45.00, Type X"
            "\n");
}

}  // namespace
}  // namespace sorvel
