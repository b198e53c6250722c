#include "global/settings.h"

#include <gtest/gtest.h>

#include <string>

#include "../support/text_input.h"

namespace sorvel {
namespace {

using testing::TextInput;

// The first line starts with a two-letter command; its reader is entered
// after the name.
template <class F>
int run_setting(TextInput& in, F setting) {
  in.read_line(2);
  return setting(in.src);
}

TEST(RandomDeviation, RangeAndWarning) {
  const struct {
    const char* text;
    int status;
    bool warns;
  } cases[] = {
      {"RD(0)", 0, false},    {"RD(1)", 0, false},     {"RD(0.25)", 0, false},
      {"RD(1.5)", 0, true},   {"RD(100)", 0, true},    {"RD(100.1)", 28, false},
      {"RD(-0.1)", 28, false}, {"RD(-0)", 0, false},
  };
  for (const auto& c : cases) {
    TextInput in(c.text);
    EXPECT_EQ(run_setting(in, set_rand_dev), c.status) << c.text;
    EXPECT_EQ(in.messages().find("Yowza!") != std::string::npos, c.warns) << c.text;
  }
}

TEST(RandomDeviation, WarningShowsTheLineAfterTheParenthesis) {
  TextInput in("RD(1.5)\n");
  ASSERT_EQ(run_setting(in, set_rand_dev), 0);
  EXPECT_EQ(in.run.MAX_DEV, 1.5f);
  EXPECT_EQ(in.messages(),
            "\n\nWARNING: Line 1: Yowza! Should RD be > 1 (100%)?\nRD(1.5) \n       ^\n");
}

TEST(RandomDeviation, SecondDeviationSharesTheRules) {
  TextInput a("DV(0.5)");
  ASSERT_EQ(run_setting(a, set_rand_dev2), 0);
  EXPECT_EQ(a.run.MAX_DEV2, 0.5f);
  EXPECT_EQ(a.run.MAX_DEV, 0.0f);

  TextInput b("DV(2)");
  ASSERT_EQ(run_setting(b, set_rand_dev2), 0);
  EXPECT_NE(b.messages().find("Yowza! Should RD be > 1 (100%)?"), std::string::npos);

  TextInput c("dv(101)");
  EXPECT_EQ(run_setting(c, set_rand_dev2), 28);
}

TEST(Settings, FormatErrors) {
  const struct {
    const char* text;
    int (*setting)(Source&);
    int status;
  } cases[] = {
      {"RD x(1)", set_rand_dev, 96},   {"RD(x)", set_rand_dev, 28},
      {"RD(1]", set_rand_dev, 19},     {"DV()", set_rand_dev2, 28},
      {"RS(x)", set_rand_seed, 29},    {"RS(65536)", set_rand_seed, 29},
      {"RS(-1)", set_rand_seed, 29},   {"rs (65535)", set_rand_seed, 0},
      {"RS(7 8)", set_rand_seed, 19},
      {"SR(x)", set_samp_rate, 65},    {"SR(-5)", set_samp_rate, 65},
      {"SR 48000", set_samp_rate, 96},
  };
  for (const auto& c : cases) {
    TextInput in(c.text);
    EXPECT_EQ(run_setting(in, c.setting), c.status) << c.text;
  }
}

TEST(RandomSeed, ValueMayStandOnItsOwnLine) {
  TextInput in("RS(\n 12\n )  rest");
  in.run.rng.rand();
  ASSERT_EQ(run_setting(in, set_rand_seed), 0);
  EXPECT_EQ(in.src.line, 3);
  EXPECT_EQ(in.src.cur(), ' ');
  Rng fresh;
  fresh.srand(12);
  for (int k = 0; k < 5; ++k) EXPECT_EQ(in.run.rng.rand(), fresh.rand());
}

TEST(SampleRate, TakesAnyUnsignedValue) {
  TextInput a("SR( 48000 )");
  ASSERT_EQ(run_setting(a, set_samp_rate), 0);
  EXPECT_EQ(a.run.SRATE, 48000u);
  TextInput b("SR(4294967295)");
  ASSERT_EQ(run_setting(b, set_samp_rate), 0);
  EXPECT_EQ(b.run.SRATE, 4294967295u);
}

TEST(ScaleFactor, RefusedInP2BeforeAnythingIsRead) {
  TextInput in("PF x(oops");
  in.read_line(2);
  EXPECT_EQ(set_pfactor(in.src, 2), 126);
  EXPECT_EQ(in.src.pos, 2);
}

TEST(ScaleFactor, SetsTheFactorInLaterPfields) {
  TextInput a("PF(2)");
  a.read_line(2);
  ASSERT_EQ(set_pfactor(a.src, 3), 0);
  EXPECT_EQ(a.run.PFACTOR, 2.0f);

  TextInput b("pf(-0.5)");
  b.read_line(2);
  ASSERT_EQ(set_pfactor(b.src, 7), 0);
  EXPECT_EQ(b.run.PFACTOR, -0.5f);

  TextInput c("PF(y)");
  c.read_line(2);
  EXPECT_EQ(set_pfactor(c.src, 3), 125);
}

}  // namespace
}  // namespace sorvel
