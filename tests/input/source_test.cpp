// The line reader, the comment skippers and the number scanners that every
// parser reads through: their limits, wrap-around and precision.
#include "input/source.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <string>

#include "base/catalog.h"
#include "support/text_input.h"

namespace sorvel {
namespace {

using testing::TextInput;

std::string rest(const Source& src) { return src.buffer + src.pos; }

TEST(GetBuff, LineLengthLimitAndLineEnds) {
  // 2047 characters fill the buffer: the newline comes as a line of its own.
  TextInput full(std::string(2047, 'a') + "\nnext\n");
  ASSERT_EQ(full.src.get_buff(), kOk);
  EXPECT_EQ(std::string(full.src.buffer), std::string(2047, 'a'));
  ASSERT_EQ(full.src.get_buff(), kOk);
  EXPECT_EQ(std::string(full.src.buffer), " ");
  ASSERT_EQ(full.src.get_buff(), kOk);
  EXPECT_EQ(std::string(full.src.buffer), "next ");
  EXPECT_EQ(full.src.line, 3);

  TextInput shorter(std::string(2046, 'b') + "\nz\n");
  ASSERT_EQ(shorter.src.get_buff(), kOk);
  EXPECT_EQ(std::string(shorter.src.buffer), std::string(2046, 'b') + " ");

  // CR, LF and byte 255 become blanks; a NUL byte ends the line's text.
  TextInput odd(std::string("a\rb\xff" "c\r\nab\0cd\n", 13));
  ASSERT_EQ(odd.src.get_buff(), kOk);
  EXPECT_EQ(std::string(odd.src.buffer), "a b c  ");
  ASSERT_EQ(odd.src.get_buff(), kOk);
  EXPECT_EQ(std::string(odd.src.buffer), "ab");
  odd.src.pos = 2;
  EXPECT_TRUE(odd.src.at_line_end());
}

TEST(GetBuff, EndOfInputIsKnownOnlyAfterAReadMeetsIt) {
  TextInput in("p2 4 4\n");
  ASSERT_EQ(in.src.get_buff(), kOk);
  EXPECT_FALSE(in.src.at_eof());
  in.src.pos = 3;
  EXPECT_EQ(in.src.get_buff(), kEndOfInput);  // buffer, position and line left alone
  EXPECT_EQ(std::string(in.src.buffer), "p2 4 4 ");
  EXPECT_EQ(in.src.pos, 3);
  EXPECT_EQ(in.src.line, 1);
  EXPECT_TRUE(in.src.at_eof());

  TextInput last("a\nlast");
  ASSERT_EQ(last.src.get_buff(), kOk);
  ASSERT_EQ(last.src.get_buff(), kOk);
  EXPECT_TRUE(last.src.at_eof());
  EXPECT_EQ(last.src.skip_lines(), kOk);  // nothing more is read
}

TEST(Comments, BlockCommentsNestAcrossLinesAndSlashStarSlashDoesNotClose) {
  TextInput nested("/* a /* b\n c */ d\n */ x\n");
  nested.read_line();
  int kind = -1;
  ASSERT_EQ(nested.src.is_comment(kind), 1);
  EXPECT_EQ(kind, 1);
  ASSERT_EQ(nested.src.skip_comment(kind), kOk);
  EXPECT_EQ(nested.src.line, 3);
  EXPECT_EQ(rest(nested.src), " x ");

  for (const char* text : {"/*/ a */b", "/**/b"}) {
    TextInput in(text);
    in.read_line();
    EXPECT_EQ(in.src.skip_comment(1), kOk);
    EXPECT_EQ(rest(in.src), "b") << text;
  }

  TextInput open("/* a /* b */\n c\n");
  open.read_line();
  EXPECT_EQ(open.src.skip_comment(1), kEndOfInput);
}

TEST(Skipping, OneCommentAndOneCommaOrSlashAtMost) {
  TextInput wc("  ; first\n  /* second */ /* third */ x\n");
  wc.read_line();
  EXPECT_EQ(wc.src.skip_wc(), kOk);
  EXPECT_EQ(rest(wc.src), "/* second */ /* third */ x ");
  EXPECT_EQ(wc.src.skip_wc(), kOk);
  EXPECT_EQ(rest(wc.src), "/* third */ x ");

  // skip_stuff: the "," or "/" must follow the comment directly.
  const struct {
    const char* text;
    const char* rest;
  } cases[] = {
      {"  , x", "x"}, {"/* c *// x", "x"}, {"/* c */ / x", "/ x"}, {" ,, x", ", x"}, {" ' x", "' x"},
  };
  for (const auto& c : cases) {
    TextInput in(c.text);
    in.read_line();
    EXPECT_EQ(in.src.skip_stuff(), 0) << c.text;
    EXPECT_EQ(rest(in.src), c.rest) << c.text;
  }
}

// Scans the line `text` with `scanner`.
template <class T>
struct Scan {
  int ok;
  T value;
  int pos;
};
template <class T>
Scan<T> scan(const char* text, int (Source::*scanner)(T&), T start = T{}) {
  TextInput in(text);
  in.read_line();
  T v = start;
  const int ok = (in.src.*scanner)(v);
  return {ok, v, in.src.pos};
}

// Digits accumulate in 32 bits and wrap before any range check; a value out
// of range fails with the position back on its first digit. get_li and
// get_uli skip the blanks after the number.
TEST(IntegerScanners, RangesAndWrapAround) {
  const struct {
    const char* text;
    int (Source::*scanner)(int&);
    int ok, value, pos;
  } signed_cases[] = {
      {"-32768 ", &Source::get_i, 1, -32768, 6},
      {"  +32767", &Source::get_i, 1, 32767, 8},
      {"  32768", &Source::get_i, 0, 0, 2},
      {" -32769", &Source::get_i, 0, 0, 2},
      {" - 5", &Source::get_i, 0, 0, 2},  // after the blank and the sign
      {"12abc", &Source::get_i, 1, 12, 2},
      {"4294967296", &Source::get_i, 1, 0, 10},
      {"4294967295", &Source::get_i, 1, -1, 10},
      {"-4294967295", &Source::get_i, 1, 1, 11},
      {"  -123  x", &Source::get_li, 1, -123, 8},
      {"2147483648", &Source::get_li, 1, INT_MIN, 10},
      {"-", &Source::get_li, 0, 0, 1},
  };
  for (const auto& c : signed_cases) {
    const Scan<int> s = scan(c.text, c.scanner);
    EXPECT_EQ(s.ok, c.ok) << c.text;
    EXPECT_EQ(s.value, c.value) << c.text;
    EXPECT_EQ(s.pos, c.pos) << c.text;
  }

  const struct {
    const char* text;
    int (Source::*scanner)(unsigned&);
    int ok;
    unsigned value;
    int pos;
  } unsigned_cases[] = {
      {"-5", &Source::get_ui, 0, 0, 0},
      {"65535", &Source::get_ui, 1, 65535, 5},
      {" 65536", &Source::get_ui, 0, 0, 1},
      {"+7 ", &Source::get_ui, 1, 7, 2},
      {"4294967296", &Source::get_ui, 1, 0, 10},
      {" 4294967295  x", &Source::get_uli, 1, 4294967295u, 13},
      {"4294967301", &Source::get_uli, 1, 5, 10},
      {"+12", &Source::get_uli, 1, 12, 3},
      {"-1", &Source::get_uli, 0, 0, 0},
  };
  for (const auto& c : unsigned_cases) {
    const Scan<unsigned> s = scan(c.text, c.scanner);
    EXPECT_EQ(s.ok, c.ok) << c.text;
    EXPECT_EQ(s.value, c.value) << c.text;
    EXPECT_EQ(s.pos, c.pos) << c.text;
  }
}

TEST(GetF, FormsOfARealNumber) {
  const struct {
    const char* text;
    float value;
    int pos;
  } cases[] = {
      {".5", 0.5f, 2},      {"-.25", -0.25f, 4}, {" \t3.25x", 3.25f, 6},
      {"1e3", 1.0f, 1},     // no exponent syntax
      {"5.", 5.0f, 2},      {".", 0.0f, 1},
  };
  for (const auto& c : cases) {
    const Scan<float> s = scan(c.text, &Source::get_f);
    EXPECT_EQ(s.ok, 1) << c.text;
    EXPECT_EQ(s.value, c.value) << c.text;
    EXPECT_EQ(s.pos, c.pos) << c.text;
  }
  for (const char* text : {" - 5", "abc", " ", "--1"}) {
    const Scan<float> s = scan(text, &Source::get_f, 99.0f);
    EXPECT_EQ(s.ok, 0) << text;
    EXPECT_EQ(s.value, 99.0f) << text;  // left alone
  }
  EXPECT_TRUE(std::signbit(scan("-0", &Source::get_f).value));
  EXPECT_TRUE(std::signbit(scan("-0.000", &Source::get_f).value));
  EXPECT_FALSE(std::signbit(scan("+0", &Source::get_f).value));
}

TEST(GetF, SinglePrecisionAndAThirtyTwoBitDivisor) {
  // 16777217 is not a float: the running value rounds at the last digit.
  EXPECT_EQ(scan("16777217", &Source::get_f).value, 16777216.0f);
  // All digits gathered as one number, then one division by the power of ten.
  EXPECT_EQ(scan("123.456", &Source::get_f).value, 123456.0f / 1000.0f);
  EXPECT_EQ(scan("1677721.7", &Source::get_f).value, 16777216.0f / 10.0f);
  // Past nine decimals the divisor wraps: 10^10 mod 2^32 = 1410065408, and
  // 10^12 mod 2^32 = 3567587328 is negative as a signed 32-bit integer.
  EXPECT_EQ(scan("0.0000000001", &Source::get_f).value, 1.0f / 1410065408.0f);
  EXPECT_EQ(scan("0.000000000001", &Source::get_f).value, 1.0f / -727379968.0f);
}

TEST(GetDf, DoublePrecision) {
  TextInput in("16777217 -0 0.1 2.5e -.75");
  in.read_line();
  double v = 0;
  ASSERT_EQ(in.src.get_df(v), 1);
  EXPECT_EQ(v, 16777217.0);
  ASSERT_EQ(in.src.get_df(v), 1);
  EXPECT_TRUE(std::signbit(v));
  ASSERT_EQ(in.src.get_df(v), 1);
  EXPECT_EQ(v, 0.1);
  ASSERT_EQ(in.src.get_df(v), 1);
  EXPECT_EQ(v, 2.5);
  EXPECT_EQ(in.src.cur(), 'e');
  ++in.src.pos;
  ASSERT_EQ(in.src.get_df(v), 1);
  EXPECT_EQ(v, -0.75);
  EXPECT_EQ(in.src.get_df(v), 0);
}

}  // namespace
}  // namespace sorvel
