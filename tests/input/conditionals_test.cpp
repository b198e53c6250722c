#include "input/conditionals.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "input/preproc.h"
#include "preproc_support.h"

namespace sorvel {
namespace {

using testing::next_line;
using testing::statement;
using testing::TextInput;

// Reads every line to the end of input; returns the lines the parsers would
// see (from the position get_buff leaves) and the first non-zero status.
struct ReadAll {
  std::string lines;
  int status = 0;
};

ReadAll read_all(TextInput& in) {
  ReadAll out;
  for (;;) {
    int r = in.src.get_buff();
    if (r) {
      out.status = r;
      return out;
    }
    out.lines += std::string(in.src.buffer + in.src.pos) + "|";
  }
}

TEST(Conditional, FalseSectionIsSkipped) {
  TextInput in("a\n#if(0)\nb\n#endif\nc\n");
  ReadAll all = read_all(in);
  EXPECT_EQ(all.status, -1);
  // The #if line hands over the rest of the #endif line.
  EXPECT_EQ(all.lines, "a | |c |");
  EXPECT_EQ(in.run.IF_MATCH, 0);
  EXPECT_EQ(in.run.IN_IF0, 0);
  EXPECT_EQ(ifdef_match(in.run), 1);
}

TEST(Conditional, TrueSectionIsKept) {
  for (const char* cond : {"1", "0.5", " 2 "}) {
    TextInput in(std::string("#if(") + cond + ")\nb\n#endif\nc\n");
    ReadAll all = read_all(in);
    EXPECT_EQ(all.status, -1);
    EXPECT_EQ(all.lines, " |b | |c |") << cond;
    EXPECT_EQ(in.run.IF_MATCH, 0);
  }
}

TEST(Conditional, ReadingGoesOnAfterTheEndif) {
  TextInput in("#if(0)\nb\n  #endif x\n");
  ASSERT_EQ(in.src.get_buff(), 0);
  EXPECT_EQ(in.src.line, 3);
  EXPECT_EQ(std::string(in.src.buffer + in.src.pos), " x ");
}

TEST(Conditional, NestedSections) {
  TextInput skip_all("#if(0)\n#if(1)\nx\n#endif\ny\n#endif\nz\n");
  ReadAll all = read_all(skip_all);
  EXPECT_EQ(all.lines, " |z |");
  EXPECT_EQ(skip_all.run.IF_MATCH, 0);

  TextInput inner("#if(1)\n#if(0)\nx\n#endif\ny\n#endif\nz\n");
  all = read_all(inner);
  EXPECT_EQ(all.lines, " | |y | |z |");
  EXPECT_EQ(inner.run.IF_MATCH, 0);
}

TEST(Conditional, EndifInACommentDoesNotEndTheSection) {
  TextInput in("#if(0)\n; #endif\n/* #endif\n#endif */\n#endif\nz\n");
  ReadAll all = read_all(in);
  EXPECT_EQ(all.lines, " |z |");
}

TEST(Conditional, SkippedLinesAreNotExpanded) {
  TextInput in("#if(0)\n$Nope ~Nope\n#endif\n");
  ReadAll all = read_all(in);
  EXPECT_EQ(all.status, -1);
  EXPECT_EQ(in.messages(), "");
}

TEST(Conditional, ConditionReading) {
  const struct {
    const char* text;
    int status;
    float value;
  } cases[] = {
      {"if(1)", 0, 1.0f},   {"if( 2.5 )", 0, 2.5f}, {"if(-1)", 115, 9.0f},
      {"if(.5)", 115, 9.0f}, {"if()", 115, 9.0f},    {"if(1", 116, 1.0f},
      {"if(3 x)", 116, 3.0f}, {"if (1)", 114, 9.0f}, {"iff(1)", 114, 9.0f},
  };
  for (const auto& c : cases) {
    TextInput in(c.text);
    in.read_line();
    float value = 9.0f;
    EXPECT_EQ(get_if(in.src, value), c.status) << c.text;
    EXPECT_EQ(value, c.value) << c.text;
  }
}

TEST(Conditional, MalformedConditionLeavesThePreviousValue) {
  // At the start of the run the value is 0: the section is skipped.
  TextInput first("#if(-1)\nx\n#endif\ny\n");
  EXPECT_EQ(read_all(first).lines, " |y |");

  TextInput later("#if(2)\n#endif\n#if(.5)\nx\n#endif\n");
  ReadAll all = read_all(later);
  EXPECT_EQ(all.status, -1);
  // The rest of the line from where the condition failed goes to the parser.
  EXPECT_EQ(all.lines, " | |.5) |x | |");
}

TEST(Conditional, ConditionFromAMacroOrAConstant) {
  TextInput macro("#define A #0#\n#if($A)\nx\n#endif\ny\n");
  ASSERT_EQ(statement(macro), 0);
  EXPECT_EQ(read_all(macro).lines, " |y |");
  EXPECT_EQ(macro.messages(), "\n\tExpanding macro \"A\" into line 2...");

  TextInput constant("#const K 2\n#if(~K)\nx\n#endif\n");
  constant.run.SUPRESS = 1;
  ASSERT_EQ(statement(constant), 0);
  EXPECT_EQ(read_all(constant).lines, " |x | |");
}

TEST(Conditional, BlankBeforeTheParenthesisIsNoIf) {
  TextInput in("#if (1)\n#endif\n");
  int status = 0;
  EXPECT_EQ(next_line(in, &status), "#if (1) ");
  EXPECT_EQ(status, 0);
  EXPECT_EQ(in.run.IF_MATCH, 0);
  next_line(in, &status);
  EXPECT_EQ(status, 118);
}

TEST(Conditional, Mismatches) {
  TextInput stray("x\n#endif\n");
  EXPECT_EQ(read_all(stray).status, 118);

  for (const char* text : {"#if(0)\nx\n", "#if(0)\nx", "#if(0)"}) {
    TextInput open_false(text);
    EXPECT_EQ(read_all(open_false).status, 117) << text;
  }

  TextInput open_true("#if(1)\nx\n");
  EXPECT_EQ(read_all(open_true).status, -1);
  EXPECT_EQ(ifdef_match(open_true.run), 0);

  TextInput bad_endif("x #endix\n");
  bad_endif.read_line(3);
  EXPECT_EQ(do_endif(bad_endif.src), 113);
}

TEST(Conditional, ExpansionFileGetsOnlyReadLines) {
  TextInput in("a\n#if(0)\nb\n#endif\nc\n#if(1)\nd\n#endif\n");
  char* buf = nullptr;
  size_t len = 0;
  in.run.fecho = open_memstream(&buf, &len);
  in.run.MKEXP = 1;
  read_all(in);
  std::fclose(in.run.fecho);
  EXPECT_EQ(std::string(buf, len), "a \nc \nd \n");
  std::free(buf);
}

}  // namespace
}  // namespace sorvel
