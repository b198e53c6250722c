// The parts of the hints checker's frame where faults hide: mapping run lines
// back to files, the text of a message the run printed, JSON strings, and the
// nearest name.
#include <gtest/gtest.h>

#include <string>

#include "hints/line_map.h"
#include "hints/messages.h"
#include "hints/preproc_hints.h"
#include "hints/report.h"

namespace sorvel {
namespace {

TEST(LineMap, IncludeFilesAndTheLinesAfterThem) {
  LineMap map;
  map.start(1, "main.sor", 1);
  map.start(3, "a.inc", 1);     // included at main line 3
  map.start(7, "main.sor", 3);  // a.inc had 4 lines; main goes on after the directive
  map.start(9, "b.inc", 1);
  map.start(9, "main.sor", 5);  // b.inc was empty: the later start wins
  EXPECT_EQ(map.place(2).file, "main.sor");
  EXPECT_EQ(map.place(2).line, 2);
  EXPECT_EQ(map.place(3).file, "a.inc");
  EXPECT_EQ(map.place(6).line, 4);
  EXPECT_EQ(map.place(7).file, "main.sor");
  EXPECT_EQ(map.place(8).line, 4);
  EXPECT_EQ(map.place(9).file, "main.sor");
  EXPECT_EQ(map.place(12).line, 8);
  EXPECT_EQ(map.place(0).file, "");
}

TEST(LineMap, LongLinesReadInParts) {
  LineMap map;
  map.start(1, "in.sor", 1);
  map.split(2);  // line 2 is read as run lines 2, 3 and 4
  map.split(3);
  map.split(6);  // line 4 as run lines 6 and 7
  const LineMap::Place first = map.place(2), second = map.place(3), third = map.place(4);
  EXPECT_EQ(first.line, 2);
  EXPECT_EQ(first.column, 0);
  EXPECT_EQ(second.line, 2);
  EXPECT_EQ(second.column, 2047);
  EXPECT_EQ(third.line, 2);
  EXPECT_EQ(third.column, 4094);
  EXPECT_EQ(map.place(5).line, 3);
  EXPECT_EQ(map.place(5).column, 0);
  EXPECT_EQ(map.place(7).line, 4);
  EXPECT_EQ(map.place(7).column, 2047);
  EXPECT_EQ(map.place(8).line, 5);
}

TEST(Messages, OneLine) {
  EXPECT_EQ(one_line("Error in \"#if\" Statement. \n(N.B. a\nb)"),
            "Error in \"#if\" Statement. (N.B. a b)");
  EXPECT_EQ(one_line("Multiple ':'s! "), "Multiple ':'s!");
  EXPECT_EQ(one_line("  a\n\n  b  \n"), "a b");
}

TEST(Messages, TheLastMessageOnTheScreen) {
  EXPECT_EQ(last_message("\n\tExpanding macro \"A\" into line 3...\n\nERROR: Line 12: There is "
                         "no macro \"B\" in your input file!\n"),
            "There is no macro \"B\" in your input file!");
  EXPECT_EQ(last_message("\nInput\t= \"a\"\n\n\tOpening include file \"x\"...\nERROR: Include "
                         "filename has exceeded maximum\nlength of 255 characters.\n\n"),
            "Include filename has exceeded maximum length of 255 characters.");
  EXPECT_EQ(last_message("banner\n\n\tOpening include file \"a.inc\"...\nBad include file name: "
                         "\"b\"\n\n"),
            "Bad include file name: \"b\"");
  EXPECT_EQ(last_message("\nERROR: Can't open \"x.sor\".\n\n"), "Can't open \"x.sor\".");
  EXPECT_EQ(last_message("\n\nERROR: Bad number of p-fields (3 - 128)\n"),
            "Bad number of p-fields (3 - 128)");
  EXPECT_EQ(last_message("\nERROR: Line x: kept\n"), "Line x: kept");
  EXPECT_EQ(last_message(""), "");
  EXPECT_EQ(last_message("\n\n\n"), "");
}

TEST(Json, StringsForAnyByte) {
  EXPECT_EQ(json_string("plain"), "\"plain\"");
  EXPECT_EQ(json_string("a\"b\\c"), "\"a\\\"b\\\\c\"");
  EXPECT_EQ(json_string(std::string("\n\t\x01\x1f\x7f", 5)),
            "\"\\u000A\\u0009\\u0001\\u001F\\u007F\"");
  EXPECT_EQ(json_string(std::string("a\0b", 3)), "\"a\\u0000b\"");
  // Valid UTF-8 passes: 2, 3 and 4 bytes.
  EXPECT_EQ(json_string("\xc3\xa9\xe2\x82\xac\xf0\x9f\x8e\xb5"),
            "\"\xc3\xa9\xe2\x82\xac\xf0\x9f\x8e\xb5\"");
  // Each byte outside a valid sequence is one U+FFFD.
  EXPECT_EQ(json_string("\xff"), "\"\\uFFFD\"");
  EXPECT_EQ(json_string("\xc3"), "\"\\uFFFD\"");          // cut short at the end
  EXPECT_EQ(json_string("\xc3x"), "\"\\uFFFDx\"");        // cut short before a letter
  EXPECT_EQ(json_string("\xc0\xaf"), "\"\\uFFFD\\uFFFD\"");  // overlong "/"
  EXPECT_EQ(json_string("\xe0\x80\xaf"), "\"\\uFFFD\\uFFFD\\uFFFD\"");  // overlong
  EXPECT_EQ(json_string("\xed\xa0\x80"), "\"\\uFFFD\\uFFFD\\uFFFD\"");  // a surrogate
  EXPECT_EQ(json_string("\xf4\x90\x80\x80"), "\"\\uFFFD\\uFFFD\\uFFFD\\uFFFD\"");  // > U+10FFFF
  EXPECT_EQ(json_string("\x80"), "\"\\uFFFD\"");  // a lone continuation byte
}

TEST(Report, TextAndJsonForms) {
  PlacedFinding a;
  a.file = std::string("p.sor");
  a.line = 3;
  a.column = 5;
  a.end_column = 7;
  a.severity = "hint";
  a.code = std::string("H10");
  a.message = std::string("m");
  a.has_fix = true;
  a.fix_text = std::string("AB");
  PlacedFinding b;
  b.file = std::string("p.sor");
  b.line = 4;
  b.severity = "error";
  b.code = std::string("E999");
  b.message = std::string("n");
  PlacedFinding c;
  c.file = std::string("p.sor");
  c.severity = "error";
  c.code = std::string("E5");
  c.message = std::string("o");
  EXPECT_EQ(text_report({a, b, c}),
            "p.sor:3:5: hint: m\np.sor:4: error: n\np.sor: error: o\n");
  EXPECT_EQ(json_report({}), "[]\n");
  EXPECT_EQ(json_report({a, c}),
            "[\n"
            "  {\"file\": \"p.sor\", \"line\": 3, \"column\": 5, \"end_column\": 7, \"severity\": "
            "\"hint\", \"code\": \"H10\", \"message\": \"m\", \"fix\": {\"line\": 3, \"column\": "
            "5, \"end_column\": 7, \"text\": \"AB\"}},\n"
            "  {\"file\": \"p.sor\", \"line\": null, \"column\": null, \"end_column\": null, "
            "\"severity\": \"error\", \"code\": \"E5\", \"message\": \"o\"}\n"
            "]\n");
}

TEST(NearestName, ByEditDistanceThenByteOrder) {
  EXPECT_EQ(edit_distance("", "abc"), 3);
  EXPECT_EQ(edit_distance("kitten", "sitting"), 3);
  EXPECT_EQ(edit_distance("NOTS", "NOTE"), 1);
  EXPECT_EQ(nearest_name("NOTS", {"REST", "NOTE", "NOTES"}), "NOTE");  // NOTE < NOTES, both 1
  EXPECT_EQ(nearest_name("X", {}), "");
}

}  // namespace
}  // namespace sorvel
