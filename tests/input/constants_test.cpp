#include "input/constants.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>

#include "base/rng.h"
#include "preproc_support.h"

namespace sorvel {
namespace {

using testing::next_line;
using testing::statement;
using testing::TextInput;

// A run that has read `defs` as g-block statements and then the line `use`:
// last block 2.5 s, all blocks 10 s, tempo 120 (two beats a second).
struct Expanded {
  std::unique_ptr<TextInput> in;
  std::string line;  // the line as expanded
  int status = 0;    // what get_buff returned for it
};

Expanded expand_with(const std::string& defs, const std::string& use, int suppress = 1) {
  Expanded x;
  x.in = std::make_unique<TextInput>(defs + use + "\n");
  x.in->run.SUPRESS = suppress;
  x.in->run.LAST_IB_DUR = 2.5;
  x.in->run.CUM_TIME = 10.0;
  x.in->run.TEMPO = 120.0f;
  for (size_t i = 0; i < defs.size(); ++i) {
    if (defs[i] == '#' && (i == 0 || defs[i - 1] == '\n')) {
      EXPECT_EQ(statement(*x.in), 0) << defs;
    }
  }
  x.line = next_line(*x.in, &x.status);
  return x;
}

std::string line_of(const std::string& defs, const std::string& use) { return expand_with(defs, use).line; }
int status_of(const std::string& use) { return expand_with("", use).status; }

TEST(ConstantReference, NamesAndRunValues) {
  Expanded a = expand_with("#const A 2.5\n", "x ~A y", 0);
  EXPECT_EQ(a.line, "x 2.500 y ");
  EXPECT_EQ(a.in->messages(), "\n\tExpanding const \"A\" (   2.50) into line 2...");

  Expanded unknown = expand_with("", "~A");
  EXPECT_EQ(unknown.status, 1000);
  EXPECT_EQ(unknown.in->messages(), "\n\nERROR: Line 1: There is no constant \"A\" in your input file!\n");

  // Only "~@" is replaced: the digit stays behind the number.
  EXPECT_EQ(line_of("", "~@1"), "2.5001 ");
  EXPECT_EQ(line_of("", "~@2"), "10.0002 ");
  EXPECT_EQ(line_of("", "~@3"), "5.0003 ");
  EXPECT_EQ(line_of("", "~@4"), "20.0004 ");
  EXPECT_EQ(status_of("~@5"), 106);
  EXPECT_EQ(status_of("~@"), 106);
  EXPECT_EQ(expand_with("", "~@3", 0).in->messages(),
            "\n\tExpanding const \"@3 (Last IB Time [BEATS])\" (   5.00) into line 1...");
}

TEST(ConstantEquation, LeftToRightWithoutPrecedence) {
  const struct {
    const char* eq;
    const char* text;
  } cases[] = {
      {"~[A * 2 + 1]", "6.000 "}, {"~[1 + 2 * 3]", "9.000 "},  {"~[5 % 3]", "2.000 "},
      {"~[2 -3]", "-1.000 "},     {"~[2 * -3]", "-6.000 "},   {"~[7 % -3]", "1.000 "},
      {"~[0 - 7 % 3]", "-1.000 "}, {"~[5 % 0]", "0.000 "},    {"~[1 / 4]", "0.250 "},
      {"~[ 4 ]", "4.000 "},       {"~[2*.5]", "1.000 "},      {"~[@1 + @2]", "12.500 "},
      {"a~[1+1]b", "a2.000b "},
  };
  for (const auto& c : cases) EXPECT_EQ(line_of("#const A 2.5\n", c.eq), c.text) << c.eq;

  std::string many = "~[1";
  for (int k = 1; k < 600; ++k) many += "+1";
  EXPECT_EQ(line_of("", many + "]"), "600.000 ");
}

TEST(ConstantEquation, Errors) {
  const struct {
    const char* eq;
    int status;
  } cases[] = {
      {"~[2 3]", 108}, {"~[2 +]", 108},    {"~[-2]", 108},    {"~[]", 108},
      {"~[@3]", 106},  {"~[@x]", 106},     {"~[2 # 3]", 107}, {"~[2\v3]", 107},
      {"~[1 +", 105},  {"~[1 +\n2]", 105}, {"~[2 * -x]", 500}, {"~[B + 1]", 1000},
  };
  for (const auto& c : cases) EXPECT_EQ(status_of(c.eq), c.status) << c.eq;
}

TEST(ConstantEquation, RandomTerm) {
  Rng rng;
  float v = static_cast<float>(rng.rand() % 32767) / 32767.0f;
  char shown[32];
  std::snprintf(shown, sizeof shown, "%7.2f", static_cast<double>(v));
  Expanded x = expand_with("", "~[?]", 0);
  EXPECT_EQ(x.line, FtoA(v) + " ");
  EXPECT_EQ(x.in->messages(), std::string("\n\tLine 1: '?' evaluated at = ") + shown +
                                  "\n\tExpanding const \"equation\" (" + shown + ") into line 1...");
}

TEST(ConstantDefinition, Statements) {
  // Loose keyword, name on the next line, a reference expanded as the line
  // is read (three decimals and all).
  TextInput in("#const A -1.5\n#cxxxx B 2\n#const\nC 3\n#const D ~A\n");
  in.run.SUPRESS = 1;
  for (int k = 0; k < 4; ++k) ASSERT_EQ(statement(in), 0) << k;
  ASSERT_EQ(in.run.var_list.size(), 4u);
  EXPECT_EQ(find_var(in.run.var_list, "A")->value, -1.5);
  EXPECT_EQ(find_var(in.run.var_list, "B")->value, 2.0);
  EXPECT_EQ(find_var(in.run.var_list, "C")->value, 3.0);
  EXPECT_EQ(find_var(in.run.var_list, "D")->value, -1.5);

  const struct {
    const char* text;
    int status;
  } cases[] = {
      {"#const B $M\n", 103}, {"#const 9X 1\n", 109}, {"#const A x\n", 500},
      {"#constA 1\n", 80},    {"#const A 1\n#const A 2\n", 100},
  };
  for (const auto& c : cases) {
    TextInput bad(c.text);
    int status = 0;
    while (!status && !bad.src.at_eof()) status = statement(bad);
    EXPECT_EQ(status, c.status) << c.text;
  }
}

TEST(ConstantLinePass, CommentsAndLineLength) {
  const std::string defs = "#const A 1\n";
  EXPECT_EQ(line_of(defs, "x ; ~Nope"), "x ; ~Nope ");
  EXPECT_EQ(line_of(defs, "/* ~Nope */ ~A"), "/* ~Nope */ 1.000 ");
  // A block comment opened later on the line is already open for the
  // constant pass: the macro pass went through the whole line first.
  Expanded x = expand_with(defs, "~A /* x\nx */ ~A");
  EXPECT_EQ(x.line, "~A /* x ");
  EXPECT_EQ(next_line(*x.in), "x */ 1.000 ");
  // A newline from a macro body ends a ";" comment.
  EXPECT_EQ(line_of(defs + "#define B #; c\n~A#\n", "$B"), "; c \n1.000 ");

  // The line holds 2040 or 2041 characters, " ~A" and the blank of its end.
  Expanded fits = expand_with(defs, std::string(2040, 'x') + " ~A");
  EXPECT_EQ(fits.line, std::string(2040, 'x') + " 1.000 ");
  Expanded over = expand_with(defs, std::string(2041, 'x') + " ~A", 0);
  EXPECT_EQ(over.status, 89);
  EXPECT_EQ(over.line, std::string(2041, 'x') + " ~A ");
  EXPECT_EQ(over.in->messages(), "");
}

TEST(ConstantText, ThreeDecimals) {
  const struct {
    double value;
    const char* text;
  } cases[] = {
      {-0.25, "-0.250"}, {0.0004, "0.000"}, {12.0, "12.000"}, {0.9994, "0.999"}, {-0.0, "0.000"},
      {2.0625, "2.063"},               // a tie goes up
      {1.9996, "1.1000"},              // the fraction rounds to 1000 and stays so
      {16777215.0, "16777215.000"},
      {16777217.0, "16777217.1000"},   // the whole part as a float is 16777216
  };
  for (const auto& c : cases) EXPECT_EQ(FtoA(c.value), c.text) << c.value;
  EXPECT_EQ(CountDigits(0), 1);
  EXPECT_EQ(CountDigits(9), 1);
  EXPECT_EQ(CountDigits(10), 2);
  EXPECT_EQ(CountDigits(1234567), 7);
}

}  // namespace
}  // namespace sorvel
