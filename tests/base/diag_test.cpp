// The message printer, the warning and error framings and the caret line.
#include "base/diag.h"

#include <gtest/gtest.h>

#include <string>

#include "support/capture.h"

namespace sorvel {
namespace {

using testing::Capture;

// A run whose screen and log are captured; the log is attached but only
// written to when MKLOG is on.
struct Screens {
  Run run;
  Capture screen, log;
  explicit Screens(bool with_log = true) {
    run.screen = screen.f;
    run.fllog = log.f;
    run.MKLOG = with_log ? 1 : 0;
  }
  // The screen text, after checking that the log holds the very same bytes.
  std::string both() {
    std::string s = screen.text();
    EXPECT_EQ(log.text(), run.MKLOG ? s : std::string());
    return s;
  }
};

TEST(Mprintf, ConvertsOnlyBareLetters) {
  Screens s;
  Mprintf(s.run, "%d|%d|%s|%c|%f|%f|%f", 42, -7, "text", 'Z', 3.14159, -1.0, 0.1f);
  EXPECT_EQ(s.both(), "42|-7|text|Z|   3.14|  -1.00|   0.10");

  Screens t;
  Mprintf(t.run, "%f|%f|%f", 1234567.891, 2.5, 0.0);  // wider than seven columns: no cut
  EXPECT_EQ(t.both(), "1234567.89|   2.50|   0.00");
}

TEST(Mprintf, OtherCharactersAfterPercentPrintAsTheyStand) {
  Screens s;
  // "%%" is one percent sign; a width is not understood: "%5d" prints "5d"
  // without taking an argument, so 9 goes to the following "%d".
  Mprintf(s.run, "100%% [%5d] %d [%7.2f] %x", 9);
  EXPECT_EQ(s.both(), "100% [5d] 9 [7.2f] x");
}

TEST(Mprintf, ProgressLineAsTheDriverWritesIt) {
  Screens s;
  Mprintf(s.run, "\n\n%d events generated in block #%d (i%d).\n", 12, 1, 3);
  Mprintf(s.run, "Total i-block duration: %f (secs), %f (beats)\n", 6.0, 4.0f);
  EXPECT_EQ(s.both(),
            "\n\n12 events generated in block #1 (i3).\n"
            "Total i-block duration:    6.00 (secs),    4.00 (beats)\n");
}

TEST(Mprintf, WithoutLogOnlyTheScreen) {
  Screens s(false);
  Mprintf(s.run, "abc %d", 1);
  EXPECT_EQ(s.both(), "abc 1");
}

TEST(PutBuff, CaretUnderPositionAndNewlineShownAsL) {
  Capture c;
  put_buff(c.f, "p4 1 2 3\n", 3);
  EXPECT_EQ(c.text(), "p4 1 2 3L\n   ^\n");

  Capture first;
  put_buff(first.f, "abc", 0);
  EXPECT_EQ(first.text(), "abc\n^\n");
}

TEST(PutBuff, TabsKeptInTheMarkerLine) {
  Capture c;
  put_buff(c.f, "a\tb\tcd", 4);
  EXPECT_EQ(c.text(), "a\tb\tcd\n \t \t^\n");

  // A newline before the caret is a blank in the marker line.
  Capture nl;
  put_buff(nl.f, "a\nb", 2);
  EXPECT_EQ(nl.text(), "aLb\n  ^\n");
}

TEST(PutBuff, PositionPastTheTextAndEmptyLine) {
  Capture past;
  put_buff(past.f, "ab", 5);
  EXPECT_EQ(past.text(), "ab\n  \n");  // blanks under the text, no caret

  Capture empty;
  put_buff(empty.f, "", 0);
  EXPECT_EQ(empty.text(), "\n\n");
}

TEST(WarningNo, ShortFormUpToNine) {
  Screens s;
  warning_no(s.run, 1, 5, "p3 -1", 3);
  warning_no(s.run, 2, 5, "p3 -1", 3);
  warning_no(s.run, 7, 5, "p3 -1", 3);   // not catalogued
  warning_no(s.run, -4, 5, "p3 -1", 3);  // signed comparison
  EXPECT_EQ(s.both(),
            "\nWARNING: P3 Duration < 0! (Event turned into rest...)"
            "\nWARNING: I-block skipped! (i-no < 0)"
            "\nWARNING: Unspecified warning..."
            "\nWARNING: Unspecified warning...");
}

TEST(WarningNo, LongFormWithLineAndCaret) {
  Screens s;
  warning_no(s.run, 10, 7, "p4 1 2 3", 5);
  EXPECT_EQ(s.both(),
            "\n\nWARNING: Line 7: Reached end of i-time or i-events -- event(s) not added.\n"
            "p4 1 2 3\n     ^\n");

  // A percent sign in a catalogue text is text, not a conversion.
  Screens pct;
  warning_no(pct.run, 26, 2, "RD(2)", 4);
  EXPECT_EQ(pct.both(), "\n\nWARNING: Line 2: Yowza! Should RD be > 1 (100%)?\nRD(2)\n    ^\n");

  Screens unknown;
  warning_no(unknown.run, 13, 1, "x", 0);
  EXPECT_EQ(unknown.both(), "\n\nWARNING: Line 1: Unspecified warning...\nx\n^\n");

  // The one text that says "of i-events".
  Screens w14;
  warning_no(w14.run, 14, 3, "", 0);
  EXPECT_EQ(w14.both(),
            "\n\nWARNING: Line 3: Reached end of i-time of i-events, duration altered.\n\n\n");
}

TEST(WarningNo, SilencedBySuppressButErrorsAreNot) {
  Screens s;
  s.run.SUPRESS = 1;
  warning_no(s.run, 1, 1, "x", 0);
  warning_no(s.run, 10, 1, "x", 0);
  warning_no(s.run, 99, 1, "x", 0);
  EXPECT_EQ(s.both(), "");
  error_no(s.run, 3, 1, "x", 0);
  error_no(s.run, 27, 1, "x", 0);
  EXPECT_EQ(s.both(),
            "\nERROR: Comments seemed to be mismatched... reached EOF.\n\n"
            "\n\nERROR: Line 1: Data is out of bounds.\nx\n^\n");
}

TEST(ErrorNo, WholeFileErrorsHaveNoLine) {
  Screens s;
  for (int n : {3, 4, 5, 8, 9}) error_no(s.run, n, 40, "never shown", 2);
  EXPECT_EQ(s.both(),
            "\nERROR: Comments seemed to be mismatched... reached EOF.\n\n"
            "\nERROR: P-fields don't match i-block header!\n\n"
            "\nERROR: Reached end-of-file before \"}\" was found.\n\n"
            "\nERROR: EOF reached: missing macro body end (#).\n\n"
            "\nERROR: Ouch! Can't open the temporary file (huh?).\n\n");
}

TEST(ErrorNo, UnknownSmallNumbersUseTheShortForm) {
  for (int n : {0, 1, 2, 6, 7, -1, -500}) {
    Screens s;
    error_no(s.run, n, 40, "never shown", 2);
    EXPECT_EQ(s.both(), "\nERROR: Unspecified error...\n\n") << "error " << n;
  }
}

TEST(ErrorNo, LineFormWithCaret) {
  // A line that begins with a tab: the marker line keeps the tab.
  Screens s;
  error_no(s.run, 25, 12, "\tp4 /* x", 4);
  EXPECT_EQ(s.both(),
            "\n\nERROR: Line 12: Reached EOF! (missing comment \"*/\"?)\n"
            "\tp4 /* x\n\t   ^\n");

  Screens num;
  error_no(num.run, 500, 3, "te(x)", 3);
  EXPECT_EQ(num.both(),
            "\n\nERROR: Line 3: Expecting a digit or decimal point in floating-point number.\n"
            "te(x)\n   ^\n");

  Screens unknown;
  error_no(unknown.run, 66, 8, "ab", 1);
  EXPECT_EQ(unknown.both(), "\n\nERROR: Line 8: Unspecified error...\nab\n ^\n");
}

TEST(ErrorNo, TextsWithLineBreaksAndOddSpelling) {
  Screens s;
  error_no(s.run, 113, 2, "#endif x", 7);
  EXPECT_EQ(s.both(),
            "\n\nERROR: Line 2: Error in \"#endif\" Statement. \n(N.B. #if and #endif must be "
            "isolated to their own lines\nwith no other data than whitespace.)\n"
            "#endif x\n       ^\n");

  Screens t;
  error_no(t.run, 53, 1, "", 0);
  error_no(t.run, 108, 1, "", 0);
  EXPECT_EQ(t.both(),
            "\n\nERROR: Line 1: TIME Varibale: Bad time percentage.\n\n\n"
            "\n\nERROR: Line 1: Illegal number of terms or operations in\"const\" equation.\n\n\n");
}

TEST(ErrorNo, SilentAndCaretOnlyNumbers) {
  Screens silent;
  error_no(silent.run, 999, 3, "abc", 1);
  EXPECT_EQ(silent.both(), "");

  Screens caret;
  error_no(caret.run, 1000, 3, "abc\n", 2);
  EXPECT_EQ(caret.both(), "abcL\n  ^\n");
}

}  // namespace
}  // namespace sorvel
