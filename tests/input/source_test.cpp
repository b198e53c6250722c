// The line reader, the white-space and comment skippers and the number
// scanners that every parser reads through.
#include "input/source.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

#include "support/capture.h"

namespace sorvel {
namespace {

// A reader over an in-memory input (which may hold NUL bytes).
struct Input {
  std::string text;
  FILE* f;
  Run run;
  Source src;
  explicit Input(std::string t)
      : text(std::move(t)), f(fmemopen(text.data(), text.size(), "r")), src(run, f) {}
  ~Input() { std::fclose(f); }
  std::string buffer() const { return src.buffer; }
  std::string rest() const { return src.buffer + src.pos; }
};

// A reader over a single line already in the buffer, for the scanners; no
// further line can be read.
struct Line {
  Run run;
  FILE* f = std::fopen("/dev/null", "r");
  Source src{run, f};
  explicit Line(const char* text) { std::strcpy(src.buffer, text); }
  ~Line() { std::fclose(f); }
};

TEST(GetBuff, LongestLineAndItsNewlineComeInTwoReads) {
  std::string long_line(2047, 'a');
  Input in(long_line + "\nnext\n");
  ASSERT_EQ(in.src.get_buff(), 0);
  EXPECT_EQ(in.buffer(), long_line);
  EXPECT_EQ(in.src.line, 1);
  ASSERT_EQ(in.src.get_buff(), 0);
  EXPECT_EQ(in.buffer(), " ");  // the newline alone, as a line of its own
  EXPECT_EQ(in.src.line, 2);
  ASSERT_EQ(in.src.get_buff(), 0);
  EXPECT_EQ(in.buffer(), "next ");
  EXPECT_EQ(in.src.line, 3);
}

TEST(GetBuff, OneCharacterShorterFitsInOneRead) {
  std::string line(2046, 'b');
  Input in(line + "\nz\n");
  ASSERT_EQ(in.src.get_buff(), 0);
  EXPECT_EQ(in.buffer(), line + " ");
  ASSERT_EQ(in.src.get_buff(), 0);
  EXPECT_EQ(in.buffer(), "z ");
  EXPECT_EQ(in.src.line, 2);
}

TEST(GetBuff, LineEndsAndByte255BecomeBlanks) {
  Input in("a\rb\xff" "c\r\n\n");
  ASSERT_EQ(in.src.get_buff(), 0);
  EXPECT_EQ(in.buffer(), "a b c  ");
  EXPECT_EQ(in.src.pos, 0);
  ASSERT_EQ(in.src.get_buff(), 0);
  EXPECT_EQ(in.buffer(), " ");  // an empty line still counts
  EXPECT_EQ(in.src.line, 2);
}

TEST(GetBuff, NulEndsTheLineText) {
  Input in(std::string("ab\0cd\nxy\n", 9));
  ASSERT_EQ(in.src.get_buff(), 0);
  EXPECT_EQ(in.buffer(), "ab");
  EXPECT_FALSE(in.src.at_line_end());
  in.src.pos = 2;
  EXPECT_TRUE(in.src.at_line_end());
  ASSERT_EQ(in.src.get_buff(), 0);
  EXPECT_EQ(in.buffer(), "xy ");
  EXPECT_EQ(in.src.line, 2);
}

TEST(GetBuff, EndOfInputLeavesBufferAndPositionAlone) {
  Input in("p2 4 4\n");
  ASSERT_EQ(in.src.get_buff(), 0);
  // The last line ended with its newline: the end is not known yet.
  EXPECT_FALSE(in.src.at_eof());
  in.src.pos = 3;
  EXPECT_EQ(in.src.get_buff(), -1);
  EXPECT_EQ(in.buffer(), "p2 4 4 ");
  EXPECT_EQ(in.src.pos, 3);
  EXPECT_EQ(in.src.line, 1);
  EXPECT_TRUE(in.src.at_eof());
  EXPECT_EQ(in.src.get_buff(), -1);
}

TEST(GetBuff, LastLineWithoutNewlineMeetsTheEnd) {
  Input in("a\nlast");
  ASSERT_EQ(in.src.get_buff(), 0);
  EXPECT_FALSE(in.src.at_eof());
  ASSERT_EQ(in.src.get_buff(), 0);
  EXPECT_EQ(in.buffer(), "last");
  EXPECT_TRUE(in.src.at_eof());
  EXPECT_EQ(in.src.get_buff(), -1);
  EXPECT_EQ(in.src.line, 2);
}

TEST(GetBuff, EchoesEachLineWithMacroExpansionFile) {
  Input in("p2 4\r\n\n; note\n");
  testing::Capture echo;
  in.run.MKEXP = 1;
  in.run.fecho = echo.f;
  while (in.src.get_buff() == 0) {
  }
  EXPECT_EQ(echo.text(), "p2 4  \n \n; note \n");

  Input quiet("p2 4\n");
  testing::Capture none;
  quiet.run.fecho = none.f;  // open, but -x was not given
  while (quiet.src.get_buff() == 0) {
  }
  EXPECT_EQ(none.text(), "");
}

TEST(Comments, Recognised) {
  int kind = -1;
  EXPECT_EQ(Line("; x").src.is_comment(kind), 1);
  EXPECT_EQ(kind, 0);
  EXPECT_EQ(Line("/* x").src.is_comment(kind), 1);
  EXPECT_EQ(kind, 1);
  EXPECT_EQ(Line("/ *").src.is_comment(kind), 0);
  EXPECT_EQ(Line("*/").src.is_comment(kind), 0);
  EXPECT_EQ(Line("").src.is_comment(kind), 0);
}

TEST(Comments, LineCommentEndsWithItsLine) {
  Input in("x ; comment\nnext\n");
  ASSERT_EQ(in.src.get_buff(), 0);
  in.src.pos = 2;
  EXPECT_EQ(in.src.skip_comment(0), 0);
  EXPECT_TRUE(in.src.at_line_end());
  EXPECT_EQ(in.src.line, 1);
}

TEST(Comments, BlockCommentsNestAcrossLines) {
  Input in("/* a /* b\n c */ d\n */ x\n");
  ASSERT_EQ(in.src.get_buff(), 0);
  int kind;
  ASSERT_EQ(in.src.is_comment(kind), 1);
  ASSERT_EQ(in.src.skip_comment(kind), 0);
  EXPECT_EQ(in.src.line, 3);
  EXPECT_EQ(in.rest(), " x ");
}

TEST(Comments, SlashStarSlashDoesNotClose) {
  Line l("/*/ a */b");
  EXPECT_EQ(l.src.skip_comment(1), 0);
  EXPECT_EQ(l.src.buffer + l.src.pos, std::string("b"));

  Line empty("/**/c");
  EXPECT_EQ(empty.src.skip_comment(1), 0);
  EXPECT_EQ(empty.src.buffer + empty.src.pos, std::string("c"));
}

TEST(Comments, UnclosedBlockCommentReachesTheEnd) {
  Input in("/* a /* b */\n c\n");
  ASSERT_EQ(in.src.get_buff(), 0);
  EXPECT_EQ(in.src.skip_comment(1), -1);
}

TEST(Skipping, SkipLinesCrossesBlankLines) {
  Input in("   \n\n\t x\n");
  ASSERT_EQ(in.src.get_buff(), 0);
  EXPECT_EQ(in.src.skip_lines(), 0);
  EXPECT_EQ(in.rest(), "x ");
  EXPECT_EQ(in.src.line, 3);
}

TEST(Skipping, SkipLinesAtTheEnd) {
  // The last line ends with a newline: one more read meets the end.
  Input in("  \n");
  ASSERT_EQ(in.src.get_buff(), 0);
  EXPECT_EQ(in.src.skip_lines(), -1);

  // The end was met by the read of the last line: nothing more is read.
  Input last("  ");
  ASSERT_EQ(last.src.get_buff(), 0);
  EXPECT_EQ(last.src.skip_lines(), 0);
  EXPECT_TRUE(last.src.at_line_end());

  // skip_wc turns the end of input into 0.
  Input wc("  \n");
  ASSERT_EQ(wc.src.get_buff(), 0);
  EXPECT_EQ(wc.src.skip_wc(), 0);
}

TEST(Skipping, SkipWcTakesOneCommentOnly) {
  Input in("  ; first\n  /* second */ /* third */ x\n");
  ASSERT_EQ(in.src.get_buff(), 0);
  EXPECT_EQ(in.src.skip_wc(), 0);
  EXPECT_EQ(in.rest(), "/* second */ /* third */ x ");
  EXPECT_EQ(in.src.skip_wc(), 0);
  EXPECT_EQ(in.rest(), "/* third */ x ");
}

TEST(Skipping, SkipWcPassesOnErrorsOfTheComment) {
  Input in(" /* never closed\n");
  ASSERT_EQ(in.src.get_buff(), 0);
  EXPECT_EQ(in.src.skip_wc(), 0);  // the -1 of end of input becomes 0
  EXPECT_TRUE(in.src.at_line_end());
}

TEST(Skipping, SkipStuffStepsOverOneCommaOrSlash) {
  Line comma("  , x");
  EXPECT_EQ(comma.src.skip_stuff(), 0);
  EXPECT_EQ(comma.src.cur(), 'x');

  // The "," or "/" must follow the comment directly.
  Line slash("/* c *// x");
  EXPECT_EQ(slash.src.skip_stuff(), 0);
  EXPECT_EQ(slash.src.cur(), 'x');
  Line spaced("/* c */ / x");
  EXPECT_EQ(spaced.src.skip_stuff(), 0);
  EXPECT_EQ(spaced.src.cur(), '/');

  Line two(" ,, x");
  EXPECT_EQ(two.src.skip_stuff(), 0);
  EXPECT_EQ(two.src.buffer + two.src.pos, std::string(", x"));

  Line other(" ' x");
  EXPECT_EQ(other.src.skip_stuff(), 0);
  EXPECT_EQ(other.src.cur(), '\'');
}

TEST(Skipping, GoodCmdFormat) {
  Line ok("  (1)");
  EXPECT_EQ(ok.src.good_cmd_format(), 0);
  EXPECT_EQ(ok.src.cur(), '(');

  Line bad(" x(1)");
  EXPECT_EQ(bad.src.good_cmd_format(), 96);

  Input next_line("RS\n  (7)\n");
  ASSERT_EQ(next_line.src.get_buff(), 0);
  next_line.src.pos = 2;
  EXPECT_EQ(next_line.src.good_cmd_format(), 0);
  EXPECT_EQ(next_line.rest(), "(7) ");

  Input at_end("RS \n");
  ASSERT_EQ(at_end.src.get_buff(), 0);
  at_end.src.pos = 2;
  EXPECT_EQ(at_end.src.good_cmd_format(), 96);

  // A comment is not skipped here.
  Line comment(" ; c");
  EXPECT_EQ(comment.src.good_cmd_format(), 96);
}

TEST(GetC, StopsAtTheEnd) {
  Line l("ab");
  EXPECT_EQ(l.src.get_c(), 'a');
  EXPECT_EQ(l.src.get_c(), 'b');
  EXPECT_EQ(l.src.get_c(), 0);
  EXPECT_EQ(l.src.pos, 2);
}

// Scans `text` with get_i: the result, and the value and position after it.
struct IntScan {
  int ok;
  int value;
  int pos;
};
template <class T, class F>
IntScan scan(const char* text, F f) {
  Line l(text);
  T v{};
  int ok = (l.src.*f)(v);
  return {ok, static_cast<int>(v), l.src.pos};
}

TEST(GetI, RangeOfASixteenBitInteger) {
  auto r = scan<int>("-32768 ", &Source::get_i);
  EXPECT_EQ(r.ok, 1);
  EXPECT_EQ(r.value, -32768);
  EXPECT_EQ(r.pos, 6);  // no white space skipped after the number
  r = scan<int>("  +32767", &Source::get_i);
  EXPECT_EQ(r.ok, 1);
  EXPECT_EQ(r.value, 32767);

  // Out of range: fails with the position back on the first digit.
  r = scan<int>("40000", &Source::get_i);
  EXPECT_EQ(r.ok, 0);
  EXPECT_EQ(r.pos, 0);
  r = scan<int>("  32768", &Source::get_i);
  EXPECT_EQ(r.ok, 0);
  EXPECT_EQ(r.pos, 2);
  r = scan<int>(" -32769", &Source::get_i);
  EXPECT_EQ(r.ok, 0);
  EXPECT_EQ(r.pos, 2);
}

TEST(GetI, NoDigitAndWrapAround) {
  auto r = scan<int>(" - 5", &Source::get_i);
  EXPECT_EQ(r.ok, 0);
  EXPECT_EQ(r.pos, 2);  // after the white space and the sign
  EXPECT_EQ(scan<int>("x1", &Source::get_i).ok, 0);
  r = scan<int>("12abc", &Source::get_i);
  EXPECT_EQ(r.value, 12);
  EXPECT_EQ(r.pos, 2);
  EXPECT_EQ(scan<int>("1 2", &Source::get_i).pos, 1);

  // The digits accumulate in 32 bits and wrap before the range check.
  r = scan<int>("4294967296", &Source::get_i);
  EXPECT_EQ(r.ok, 1);
  EXPECT_EQ(r.value, 0);
  r = scan<int>("4294967295", &Source::get_i);
  EXPECT_EQ(r.ok, 1);
  EXPECT_EQ(r.value, -1);
  r = scan<int>("-4294967295", &Source::get_i);
  EXPECT_EQ(r.ok, 1);
  EXPECT_EQ(r.value, 1);
}

TEST(GetLi, WholeRangeAndTrailingBlanks) {
  auto r = scan<int>("  -123  x", &Source::get_li);
  EXPECT_EQ(r.ok, 1);
  EXPECT_EQ(r.value, -123);
  EXPECT_EQ(r.pos, 8);
  r = scan<int>("2147483648", &Source::get_li);
  EXPECT_EQ(r.value, -2147483647 - 1);
  EXPECT_EQ(scan<int>("40000", &Source::get_li).value, 40000);
  EXPECT_EQ(scan<int>("-", &Source::get_li).ok, 0);
}

TEST(GetUi, UnsignedSixteenBits) {
  auto r = scan<unsigned>("-5", &Source::get_ui);
  EXPECT_EQ(r.ok, 0);
  EXPECT_EQ(r.pos, 0);
  r = scan<unsigned>("65535", &Source::get_ui);
  EXPECT_EQ(r.ok, 1);
  EXPECT_EQ(r.value, 65535);
  r = scan<unsigned>(" 65536", &Source::get_ui);
  EXPECT_EQ(r.ok, 0);
  EXPECT_EQ(r.pos, 1);
  r = scan<unsigned>("+7 ", &Source::get_ui);
  EXPECT_EQ(r.value, 7);
  EXPECT_EQ(r.pos, 2);
  r = scan<unsigned>("4294967296", &Source::get_ui);  // wraps to 0
  EXPECT_EQ(r.ok, 1);
  EXPECT_EQ(r.value, 0);
}

TEST(GetUli, WrapsAroundWithoutRangeCheck) {
  Line l(" 4294967295  4294967296 4294967301 +12");
  unsigned v = 1;
  ASSERT_EQ(l.src.get_uli(v), 1);
  EXPECT_EQ(v, 4294967295u);
  EXPECT_EQ(l.src.pos, 13);  // white space after the number is skipped
  ASSERT_EQ(l.src.get_uli(v), 1);
  EXPECT_EQ(v, 0u);
  ASSERT_EQ(l.src.get_uli(v), 1);
  EXPECT_EQ(v, 5u);
  ASSERT_EQ(l.src.get_uli(v), 1);
  EXPECT_EQ(v, 12u);
  EXPECT_EQ(scan<unsigned>("-1", &Source::get_uli).ok, 0);
}

// Scans `text` with get_f.
struct RealScan {
  int ok;
  float value;
  int pos;
};
RealScan scan_f(const char* text) {
  Line l(text);
  float v = 99.0f;
  int ok = l.src.get_f(v);
  return {ok, v, l.src.pos};
}

TEST(GetF, FormsOfARealNumber) {
  EXPECT_EQ(scan_f(".5").value, 0.5f);
  EXPECT_EQ(scan_f("-.25").value, -0.25f);
  EXPECT_EQ(scan_f("+2.5").value, 2.5f);
  EXPECT_EQ(scan_f(" \t3.25x").value, 3.25f);
  EXPECT_EQ(scan_f(" \t3.25x").pos, 6);

  RealScan e = scan_f("1e3");  // no exponent syntax
  EXPECT_EQ(e.ok, 1);
  EXPECT_EQ(e.value, 1.0f);
  EXPECT_EQ(e.pos, 1);

  RealScan point = scan_f("5.");
  EXPECT_EQ(point.ok, 1);
  EXPECT_EQ(point.value, 5.0f);
  EXPECT_EQ(point.pos, 2);

  RealScan alone = scan_f(".");
  EXPECT_EQ(alone.ok, 1);
  EXPECT_EQ(alone.value, 0.0f);
}

TEST(GetF, SignOfZeroAndFailures) {
  RealScan z = scan_f("-0");
  EXPECT_EQ(z.value, 0.0f);
  EXPECT_TRUE(std::signbit(z.value));
  EXPECT_TRUE(std::signbit(scan_f("-0.000").value));
  EXPECT_FALSE(std::signbit(scan_f("+0").value));

  RealScan sign_only = scan_f(" - 5");
  EXPECT_EQ(sign_only.ok, 0);
  EXPECT_EQ(sign_only.value, 99.0f);  // left alone
  EXPECT_EQ(scan_f("abc").ok, 0);
  EXPECT_EQ(scan_f("").ok, 0);
  EXPECT_EQ(scan_f("--1").ok, 0);
}

TEST(GetF, SinglePrecisionThroughout) {
  // 16777217 is not a float: the running value rounds at the last digit.
  EXPECT_EQ(scan_f("16777217").value, 16777216.0f);
  // Digits gathered as one whole number, then one division by the power of ten.
  EXPECT_EQ(scan_f("0.1").value, 1.0f / 10.0f);
  EXPECT_EQ(scan_f("123.456").value, 123456.0f / 1000.0f);
  EXPECT_EQ(scan_f("1677721.7").value, 16777216.0f / 10.0f);
}

TEST(GetDf, DoublePrecision) {
  Line l("16777217 -0 0.1 2.5e -.75");
  double v = 0;
  ASSERT_EQ(l.src.get_df(v), 1);
  EXPECT_EQ(v, 16777217.0);
  ASSERT_EQ(l.src.get_df(v), 1);
  EXPECT_TRUE(std::signbit(v));
  ASSERT_EQ(l.src.get_df(v), 1);
  EXPECT_EQ(v, 0.1);
  ASSERT_EQ(l.src.get_df(v), 1);
  EXPECT_EQ(v, 2.5);
  EXPECT_EQ(l.src.cur(), 'e');
  ++l.src.pos;
  ASSERT_EQ(l.src.get_df(v), 1);
  EXPECT_EQ(v, -0.75);
  EXPECT_EQ(l.src.get_df(v), 0);
}

TEST(IsSeparator, TheSeparatorCharacters) {
  for (int c : {' ', '\t', '\n', '\v', '\f', '\r', '/', ',', '\'', ':'})
    EXPECT_EQ(is_separator(c), 1) << "char " << c;
  for (int c : {int{'a'}, int{';'}, int{'.'}, int{'-'}, int{'<'}, int{'0'}, 0, int{'"'}, -1, -56, 255})
    EXPECT_EQ(is_separator(c), 0) << "char " << c;
}

}  // namespace
}  // namespace sorvel
