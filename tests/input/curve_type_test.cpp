#include "input/curve_type.h"

#include <gtest/gtest.h>

#include "../support/text_input.h"

namespace sorvel {
namespace {

using testing::TextInput;

struct Read {
  int status;
  float code;
  float value;
  int pos;
};

Read read_curve(const char* text, bool allow_beats) {
  TextInput in(text);
  in.read_line();
  float code = -1.0f, value = 42.0f;
  int status = get_curve_type(in.src, code, value, allow_beats);
  return {status, code, value, in.src.pos};
}

TEST(GetCurveType, LettersInEitherCase) {
  const struct {
    const char* text;
    float code;
  } cases[] = {{"c)", 5}, {"e)", 1}, {"f)", 0}, {"l)", 2}, {"s)", 4},
               {"C)", 5}, {"E)", 1}, {"F)", 0}, {"L)", 2}, {"S)", 4}};
  for (const auto& c : cases) {
    Read r = read_curve(c.text, false);
    EXPECT_EQ(r.status, 0) << c.text;
    EXPECT_EQ(r.code, c.code) << c.text;
    EXPECT_EQ(r.value, 1.0f) << c.text;
    EXPECT_EQ(r.pos, 1) << c.text;
  }
}

TEST(GetCurveType, OtherCharacterIsStraightAndStays) {
  Read r = read_curve("x)", true);
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.code, 0.0f);
  EXPECT_EQ(r.value, 1.0f);
  EXPECT_EQ(r.pos, 0);
}

TEST(GetCurveType, UserCurveReadsItsValue) {
  Read r = read_curve("v2.5 )", false);
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.code, 3.0f);
  EXPECT_EQ(r.value, 2.5f);
  EXPECT_EQ(r.pos, 5);  // blanks after the curve are skipped
  r = read_curve("V .5", false);
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.value, 0.5f);
}

TEST(GetCurveType, UserCurveNeedsAPositiveValue) {
  EXPECT_EQ(read_curve("V0", false).status, 63);
  EXPECT_EQ(read_curve("v-1", false).status, 63);
  EXPECT_EQ(read_curve("v)", false).status, 63);
  EXPECT_EQ(read_curve("v", false).status, 63);
}

TEST(GetCurveType, BeatMoveStar) {
  Read r = read_curve("e *)", true);
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.code, 101.0f);
  EXPECT_EQ(r.pos, 3);
  EXPECT_EQ(read_curve("e *)", false).status, 64);
  EXPECT_EQ(read_curve("v3*", false).status, 64);
  // A star alone is a straight beat move.
  r = read_curve("*", true);
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.code, 100.0f);
}

}  // namespace
}  // namespace sorvel
