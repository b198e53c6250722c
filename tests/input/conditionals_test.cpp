#include "input/conditionals.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "input/preproc.h"
#include "preproc_support.h"

namespace sorvel {
namespace {

using testing::statement;
using testing::TextInput;

// Reads lines to the end of input. `lines` collects what each read hands to
// the parsers (from the position get_buff leaves), each followed by "|".
struct ReadAll {
  std::string lines;
  int status = 0;
};

ReadAll read_all(TextInput& in) {
  ReadAll out;
  while (!(out.status = in.src.get_buff())) out.lines += std::string(in.src.buffer + in.src.pos) + "|";
  return out;
}

ReadAll read_all(const std::string& text) {
  TextInput in(text);
  return read_all(in);
}

TEST(Conditional, SectionsKeptAndSkipped) {
  const struct {
    const char* text;
    const char* lines;
  } cases[] = {
      // The #if line hands over what follows its condition, the #endif line
      // what follows "endif" when it ends a skipped section.
      {"a\n#if(0)\nb\n#endif\nc\n", "a | |c |"},
      {"#if(1)\nb\n#endif\nc\n", " |b | |c |"},
      {"#if( 0.5 )\nb\n#endif\n", " |b | |"},
      {"#if(0)\nb\n  #endif x\n", " x |"},
      {"#if(0)\n#if(1)\nx\n#endif\ny\n#endif\nz\n", " |z |"},
      {"#if(1)\n#if(0)\nx\n#endif\ny\n#endif\nz\n", " | |y | |z |"},
      {"#if(0)\n; #endif\n/* #endif\n#endif */\n#endif\nz\n", " |z |"},  // comments
      {"#if(0)\n$Nope ~Nope\n#endif\n", " |"},                            // not expanded
      {"#if (1)\n", "#if (1) |"},                                         // no #if
      // A malformed condition leaves the previous value: 0 at the start.
      {"#if(-1)\nx\n#endif\ny\n", " |y |"},
      {"#if(2)\n#endif\n#if(.5)\nx\n#endif\n", " | |.5) |x | |"},
  };
  for (const auto& c : cases) {
    TextInput in(c.text);
    ReadAll all = read_all(in);
    EXPECT_EQ(all.status, -1) << c.text;
    EXPECT_EQ(all.lines, c.lines) << c.text;
    EXPECT_EQ(in.run.IF_MATCH, 0) << c.text;
    EXPECT_EQ(in.run.IN_IF0, 0) << c.text;
    EXPECT_EQ(in.messages(), "") << c.text;
  }
}

TEST(Conditional, ConditionReading) {
  const struct {
    const char* text;
    int status;
    float value;
  } cases[] = {
      {"if(1)", 0, 1.0f},    {"if( 2.5 )", 0, 2.5f}, {"if(-1)", 115, 9.0f},
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

TEST(Conditional, Mismatches) {
  EXPECT_EQ(read_all("x\n#endif\n").status, 118);
  EXPECT_EQ(read_all("#if (1)\n#endif\n").status, 118);
  for (const char* text : {"#if(0)\nx\n", "#if(0)\nx", "#if(0)"})
    EXPECT_EQ(read_all(text).status, 117) << text;

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
