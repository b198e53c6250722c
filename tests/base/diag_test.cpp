// The message printer, the warning and error framings and the caret line.
#include "base/diag.h"

#include <gtest/gtest.h>

#include <string>

#include "base/catalog.h"
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

TEST(Mprintf, OnlyBareLettersConvert) {
  Screens s;
  Mprintf(s.run, "%d|%s|%c|%f|%f|%f|", -7L, "text", 'Z', 3.14159, 0.1f, 1234567.891);
  // "%%" is one percent sign; a width is not understood: "%5d" prints "5d"
  // without taking an argument, so 9 goes to the following "%d".
  Mprintf(s.run, "100%% [%5d] %d [%7.2f] %x", 9);
  EXPECT_EQ(s.both(), "-7|text|Z|   3.14|   0.10|1234567.89|100% [5d] 9 [7.2f] x");

  Screens quiet(false);
  Mprintf(quiet.run, "abc %d", 1);
  EXPECT_EQ(quiet.both(), "abc 1");
}

TEST(PutBuff, CaretLine) {
  const struct {
    const char* line;
    int pos;
    const char* want;
  } cases[] = {
      {"p4 1 2 3\n", 3, "p4 1 2 3L\n   ^\n"},  // a newline shows as "L"
      {"abc", 0, "abc\n^\n"},
      {"a\tb\tcd", 4, "a\tb\tcd\n \t \t^\n"},  // tabs kept in the marker line
      {"a\nb", 2, "aLb\n  ^\n"},
      {"ab", 5, "ab\n  \n"},  // past the text: blanks under it, no caret
      {"", 0, "\n\n"},
  };
  for (const auto& c : cases) {
    Capture out;
    put_buff(out.f, c.line, c.pos);
    EXPECT_EQ(out.text(), c.want) << c.line;
  }
}

TEST(WarningNo, ShortFormUpToNineLongFormAboveAndSilencedBySuppress) {
  Screens s;
  warning_no(s.run, 1, 5, "p3 -1", 3);
  warning_no(s.run, 7, 5, "p3 -1", 3);   // not catalogued
  warning_no(s.run, -4, 5, "p3 -1", 3);  // signed comparison
  warning_no(s.run, 26, 2, "RD(2)", 4);  // a "%" in a text is text
  warning_no(s.run, 13, 1, "x", 0);      // not catalogued
  EXPECT_EQ(s.both(),
            "\nWARNING: P3 Duration < 0! (Event turned into rest...)"
            "\nWARNING: Unspecified warning..."
            "\nWARNING: Unspecified warning..."
            "\n\nWARNING: Line 2: Yowza! Should RD be > 1 (100%)?\nRD(2)\n    ^\n"
            "\n\nWARNING: Line 1: Unspecified warning...\nx\n^\n");

  Screens quiet;
  quiet.run.SUPRESS = 1;
  for (int n : {1, 10, 99}) warning_no(quiet.run, n, 1, "x", 0);
  error_no(quiet.run, 27, 1, "x", 0);  // errors are never silenced
  EXPECT_EQ(quiet.both(), "\n\nERROR: Line 1: Data is out of bounds.\nx\n^\n");
}

TEST(ErrorNo, Framings) {
  // Whole-file errors and uncatalogued numbers up to 9: no line.
  for (int n : {3, 4, 5, 8, 9, 0, 6, -500}) {
    Screens s;
    error_no(s.run, n, 40, "never shown", 2);
    const std::string text = s.both();
    EXPECT_EQ(text.substr(0, 8), "\nERROR: ") << n;
    EXPECT_EQ(text.find("Line"), std::string::npos) << n;
    EXPECT_EQ(text.substr(text.size() - 2), "\n\n") << n;
  }
  Screens unknown;
  error_no(unknown.run, 6, 40, "never shown", 2);
  EXPECT_EQ(unknown.both(), "\nERROR: Unspecified error...\n\n");

  // Line form; the marker line keeps a leading tab.
  Screens line;
  error_no(line.run, 25, 12, "\tp4 /* x", 4);
  error_no(line.run, 66, 8, "ab", 1);
  EXPECT_EQ(line.both(),
            "\n\nERROR: Line 12: Reached EOF! (missing comment \"*/\"?)\n\tp4 /* x\n\t   ^\n"
            "\n\nERROR: Line 8: Unspecified error...\nab\n ^\n");

  // 999 prints nothing, 1000 the line and caret only.
  Screens special;
  error_no(special.run, kErrAlreadyPrinted, 3, "abc", 1);
  error_no(special.run, kErrCaretOnly, 3, "abc\n", 2);
  EXPECT_EQ(special.both(), "abcL\n  ^\n");
}

}  // namespace
}  // namespace sorvel
