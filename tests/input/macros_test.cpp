#include <gtest/gtest.h>

#include <string>

#include "input/macros.h"
#include "preproc_support.h"

namespace sorvel {
namespace {

using testing::next_line;
using testing::statement;
using testing::TextInput;

std::string expanding(const char* name, int line) {
  return std::string("\n\tExpanding macro \"") + name + "\" into line " + std::to_string(line) +
         "...";
}

std::string no_macro(const char* name, int line) {
  return "\n\nERROR: Line " + std::to_string(line) + ": There is no macro \"" + name +
         "\" in your input file!\n";
}

// --- definitions ---

TEST(MacroDefinition, SimpleBodyIsStoredAndCalled) {
  TextInput in("#define A #x y#\n$A z\n");
  ASSERT_EQ(statement(in), 0);
  EXPECT_EQ(in.src.cur(), ' ');  // just after the closing "#"
  EXPECT_EQ(next_line(in), "x y z ");
  EXPECT_EQ(in.messages(), expanding("A", 2));
}

TEST(MacroDefinition, BodyOverSeveralLinesKeepsItsLineBreaks) {
  // The reader turns each line end into a blank; the body adds the newline.
  TextInput in("#define B #x\ny#\n$B\n");
  ASSERT_EQ(statement(in), 0);
  ASSERT_EQ(in.run.macro_list.size(), 1u);
  EXPECT_EQ(in.run.macro_list[0].body, "x \ny");
  EXPECT_EQ(next_line(in), "x \ny ");
}

TEST(MacroDefinition, HashInsideACommentDoesNotCloseTheBody) {
  TextInput in("#define B #x ; note # more\ny#z\n");
  ASSERT_EQ(statement(in), 0);
  EXPECT_EQ(in.run.macro_list[0].body, "x ; note # more \ny");
  EXPECT_EQ(in.src.cur(), 'z');
  EXPECT_EQ(in.run.IN_MACRO_DEF, 0);

  TextInput block("#define C #a /* # */ b#\n");
  ASSERT_EQ(statement(block), 0);
  EXPECT_EQ(block.run.macro_list[0].body, "a /* # */ b");
}

TEST(MacroDefinition, ParametersOverLinesWithEverySeparator) {
  // (A "#" between parameters counts as one of the definition's three "#"s
  // for the line pass, so this body holds no "$".)
  TextInput in("#define M(a, b#c'\n d) #abcd#\n");
  ASSERT_EQ(statement(in), 0);
  const Macro& m = in.run.macro_list[0];
  EXPECT_EQ(m.nargs, 4);
  ASSERT_EQ(m.args.size(), 4u);
  EXPECT_EQ(m.args[0], "a");
  EXPECT_EQ(m.args[3], "d");
  EXPECT_EQ(m.body, "abcd");
}

TEST(MacroDefinition, LooseKeywordTest) {
  // Six characters from the "d" with any one in place, then white space.
  TextInput loose("#dfooo6 N #x#\n");
  EXPECT_EQ(statement(loose), 0);
  EXPECT_NE(find_macro(loose.run.macro_list, "N"), nullptr);

  TextInput short_word("#dfoo6 N #x#\n");
  EXPECT_EQ(statement(short_word), 80);

  TextInput glued("#defineA #x#\n");
  EXPECT_EQ(statement(glued), 80);
}

TEST(MacroDefinition, MalformedDefinitions) {
  const struct {
    const char* text;
    int status;
  } cases[] = {
      {"#define 9A #x#\n", 88},      // name must start with a letter
      {"#define M(a'9) #x#\n", 88},  // so must a parameter
      {"#define M() #x#\n", 88},     // an empty list names nothing
      {"#define A x#\n", 81},        // body not opened by "#"
      {"#define M (a) #x#\n", 81},   // "(" only counts right after the name
      {"#define A #x\n", 8},         // input ends inside the body
      {"#define A #x", 8},
      {"#define A #x ; #\n", 8},     // the "#" is in a comment
  };
  for (const auto& c : cases) {
    TextInput in(c.text);
    EXPECT_EQ(statement(in), c.status) << c.text;
  }
}

TEST(MacroDefinition, BodyLengthLimit) {
  // " \n" from the first line, then the rest: 2047 characters in all pass.
  std::string ok = "#define A #\n" + std::string(2045, 'x') + "#\n";
  TextInput fits(ok);
  ASSERT_EQ(statement(fits), 0);
  EXPECT_EQ(fits.run.macro_list[0].body.size(), 2047u);

  std::string over = "#define A #\n" + std::string(2046, 'x') + "#\n";
  TextInput too_long(over);
  EXPECT_EQ(statement(too_long), 1000);
  EXPECT_EQ(too_long.messages(),
            "\n\nERROR: Line 2: The macro body has exceeded the maximum number\n"
            "of characters allowed (2048).\n");
}

std::string params(int n) {
  std::string s = "#define P(";
  for (int k = 0; k < n; ++k) s += (k ? "'a" : "a") + std::to_string(k);
  return s + ") #x#\n";
}

TEST(MacroDefinition, AtMost128Parameters) {
  TextInput ok(params(128));
  ASSERT_EQ(statement(ok), 0);
  EXPECT_EQ(ok.run.macro_list[0].nargs, 128);

  TextInput over(params(129));
  EXPECT_EQ(statement(over), 86);
}

TEST(MacroDefinition, RedefinitionAndUndef) {
  TextInput in("#define A #1#\n#define A #2#\n#undef A\n#define A #2#\n$A\n");
  EXPECT_EQ(statement(in), 0);
  EXPECT_EQ(statement(in), 84);
  EXPECT_EQ(statement(in), 0);
  EXPECT_TRUE(in.run.macro_list.empty());
  EXPECT_EQ(statement(in), 0);
  EXPECT_EQ(next_line(in), "2 ");
}

TEST(MacroDefinition, UndefFailures) {
  TextInput empty("#undef Z\n");
  EXPECT_EQ(statement(empty), 91);

  TextInput missing("#define A #1#\n#undef Z\n");
  ASSERT_EQ(statement(missing), 0);
  EXPECT_EQ(statement(missing), 1000);
  EXPECT_EQ(missing.messages(), no_macro("Z", 2));
  EXPECT_EQ(missing.run.macro_list.size(), 1u);

  // Five characters with any one of u n d e f in place, then white space.
  TextInput loose("#define A #1#\n#xnxxx A\n");
  ASSERT_EQ(statement(loose), 0);
  EXPECT_EQ(statement(loose), 0);
  EXPECT_TRUE(loose.run.macro_list.empty());

  TextInput bad("#define A #1#\n#xxxxx A\n#undefA\n");
  ASSERT_EQ(statement(bad), 0);
  EXPECT_EQ(statement(bad), 80);
  EXPECT_EQ(statement(bad), 80);
}

TEST(MacroDefinition, EndifInAStatementStepsOverIt) {
  TextInput in("x #endif y\n");
  in.read_line(3);
  EXPECT_EQ(parse_macro(in.src), 0);
  EXPECT_EQ(in.src.pos, 8);

  TextInput other("x #else\n");
  other.read_line(3);
  EXPECT_EQ(parse_macro(other.src), 0);
  EXPECT_EQ(other.src.pos, 3);  // nothing done
}

// --- calls ---

TEST(MacroCall, ArgumentsAreSubstituted) {
  TextInput in("#define M(a'b) #$b-$a#\n$M(1'2)\n$M(1#2) $M (1'2)\n");
  ASSERT_EQ(statement(in), 0);
  EXPECT_EQ(next_line(in), "2-1 ");
  EXPECT_EQ(in.messages(), expanding("b", 2) + expanding("a", 2) + expanding("M", 2));
  // Blanks before "(" are skipped to read the arguments but the call's text
  // ends at the name.
  EXPECT_EQ(next_line(in), "2-1 2-1 (1'2) ");
}

TEST(MacroCall, ArgumentErrors) {
  const struct {
    const char* call;
    int status;
  } cases[] = {
      {"$M(1'2'3)\n", 82},
      {"$M(1\n", 86},
      {"$M(1)\n", 86},
      {"$M\n", 85},
      {"$M 1'2\n", 85},
  };
  for (const auto& c : cases) {
    TextInput in(std::string("#define M(a'b) #$b-$a#\n") + c.call);
    ASSERT_EQ(statement(in), 0);
    int status = 0;
    next_line(in, &status);
    EXPECT_EQ(status, c.status) << c.call;
  }

  TextInput twice("#define D(a'a) #$a#\n$D(1'2)\n");
  ASSERT_EQ(statement(twice), 0);
  int status = 0;
  next_line(twice, &status);
  EXPECT_EQ(status, 84);
}

TEST(MacroCall, ArgumentListsBalanceTheirParentheses) {
  TextInput in("#define M(a'b) #$b-$a#\n#define A #x#\n$M(f(x)'y) r\n$A(q) z\n$A(q z\n");
  ASSERT_EQ(statement(in), 0);
  ASSERT_EQ(statement(in), 0);
  EXPECT_EQ(next_line(in), "y-f(x) r ");
  EXPECT_EQ(next_line(in), "x z ");  // a list after a call without parameters is dropped
  EXPECT_EQ(next_line(in), "x");     // an unclosed list runs to the end of the line
}

TEST(MacroCall, UnknownName) {
  TextInput in("a $Nope b\n");
  int status = 0;
  next_line(in, &status);
  EXPECT_EQ(status, 1000);
  EXPECT_EQ(in.messages(), no_macro("Nope", 1));
}

TEST(MacroCall, ArgumentsArePlainTextExpandedInTheBody) {
  TextInput in("#define X #7#\n#define M(a) #[$a]#\n$M($X)\n");
  ASSERT_EQ(statement(in), 0);
  ASSERT_EQ(statement(in), 0);
  EXPECT_EQ(next_line(in), "[7] ");
  EXPECT_EQ(in.messages(), expanding("X", 3) + expanding("a", 3) + expanding("M", 3));
}

TEST(MacroCall, OuterParameterNotVisibleInAnInnerArgument) {
  TextInput in("#define TWO(x) #[$x]#\n#define ONE(p) #$TWO($p)#\n$ONE(5)\n");
  ASSERT_EQ(statement(in), 0);
  ASSERT_EQ(statement(in), 0);
  int status = 0;
  next_line(in, &status);
  EXPECT_EQ(status, 1000);
  EXPECT_EQ(in.messages(), no_macro("p", 3));
}

TEST(MacroCall, QuietUnderSuppress) {
  TextInput in("#define A #x#\n$A\n");
  in.run.SUPRESS = 1;
  ASSERT_EQ(statement(in), 0);
  EXPECT_EQ(next_line(in), "x ");
  EXPECT_EQ(in.messages(), "");
}

std::string chain(int top) {
  std::string s = "#define M0 #x#\n";
  for (int k = 1; k <= top; ++k)
    s += "#define M" + std::to_string(k) + " #$M" + std::to_string(k - 1) + "#\n";
  return s;
}

TEST(MacroCall, NestingDepthLimit) {
  // The call in the line is depth 0: M64 reaches M0 at depth 64.
  TextInput ok(chain(64) + "$M64\n");
  for (int k = 0; k <= 64; ++k) ASSERT_EQ(statement(ok), 0);
  EXPECT_EQ(next_line(ok), "x ");

  TextInput deep(chain(65) + "$M65\n");
  for (int k = 0; k <= 65; ++k) ASSERT_EQ(statement(deep), 0);
  int status = 0;
  next_line(deep, &status);
  EXPECT_EQ(status, 89);
  EXPECT_EQ(deep.messages(), "");  // nothing was spliced

  TextInput self("#define R #a$R#\n$R\n");
  ASSERT_EQ(statement(self), 0);
  next_line(self, &status);
  EXPECT_EQ(status, 89);
}

TEST(MacroCall, ExpandedLineLimit) {
  // 1000 characters per call: the third would make the line 3001 long.
  TextInput in("#define L #" + std::string(1000, 'a') + "#\n$L$L$L\n");
  ASSERT_EQ(statement(in), 0);
  int status = 0;
  std::string line = next_line(in, &status);
  EXPECT_EQ(status, 89);
  EXPECT_EQ(line, std::string(2000, 'a') + "$L ");
  EXPECT_EQ(in.messages(), expanding("L", 2) + expanding("L", 2));
}

TEST(MacroCall, CallsThatMultiplyToNothingAreStopped) {
  // 1 + 500 + 500 * 500 expansions, all of empty bodies.
  std::string d, c;
  for (int k = 0; k < 500; ++k) d += "$E", c += "$D";
  TextInput in("#define E ##\n#define D #" + d + "#\n#define C #" + c + "#\n$C\n");
  in.run.SUPRESS = 1;
  for (int k = 0; k < 3; ++k) ASSERT_EQ(statement(in), 0);
  int status = 0;
  next_line(in, &status);
  EXPECT_EQ(status, 89);
}

// --- the line pass ---

TEST(MacroLinePass, CallsInCommentsAreLeftAlone) {
  TextInput in(
      "#define A #x#\n"
      "y ; $Nope\n"
      "/* $Nope */ $A\n"
      "/* open\n"
      "$Nope */ $A\n"
      "/* /* */ $A */\n");
  ASSERT_EQ(statement(in), 0);
  EXPECT_EQ(next_line(in), "y ; $Nope ");
  EXPECT_EQ(next_line(in), "/* $Nope */ x ");
  EXPECT_EQ(next_line(in), "/* open ");
  EXPECT_EQ(in.run.IN_COMMENT, 1);
  EXPECT_EQ(next_line(in), "$Nope */ x ");
  EXPECT_EQ(in.run.IN_COMMENT, 0);
  EXPECT_EQ(next_line(in), "/* /* */ x */ ");  // block comments do not nest here
}

// Definitions are seen through the constant pass: a "~" in one is left alone.
TEST(MacroLinePass, DefinitionsAreMarkedAcrossLines) {
  TextInput in("#const K 1\n#define A #x ~K\n~K y#  ~K\n");
  ASSERT_EQ(statement(in), 0);
  in.run.SUPRESS = 1;
  EXPECT_EQ(statement(in), 0);
  EXPECT_EQ(in.run.macro_list[0].body, "x ~K \n~K y");
  EXPECT_EQ(in.src.buffer, std::string("~K y#  1.000 "));
}

TEST(MacroLinePass, GreaterThanMakesHashPlainText) {
  TextInput in("#const K 1\n> x #y ~K\nx #y ~K\n");
  in.run.SUPRESS = 1;
  ASSERT_EQ(statement(in), 0);
  EXPECT_EQ(next_line(in), "> x #y 1.000 ");
  EXPECT_EQ(next_line(in), "x #y ~K ");
  EXPECT_EQ(in.run.IN_MACRO_DEF, 1);  // the definition goes on
}

TEST(MacroLinePass, GreaterThanAtIndex85DoesNotCount) {
  for (int at : {84, 85, 86}) {
    TextInput in("#const K 1\n" + std::string(static_cast<size_t>(at), 'x') + "> #y ~K\n");
    in.run.SUPRESS = 1;
    ASSERT_EQ(statement(in), 0);
    std::string tail = next_line(in).substr(static_cast<size_t>(at));
    EXPECT_EQ(tail, at == 85 ? "> #y ~K " : "> #y 1.000 ") << at;
  }
}

TEST(MacroLinePass, ACallAtTheStartOfTheLineRescansFromItsSecondCharacter) {
  // The body's ">" is stepped over when the call stood at index 0.
  TextInput start("#const K 1\n#define G #>#\n$G #y ~K\n");
  start.run.SUPRESS = 1;
  ASSERT_EQ(statement(start), 0);
  ASSERT_EQ(statement(start), 0);
  EXPECT_EQ(next_line(start), "> #y ~K ");

  TextInput later("#const K 1\n#define G #>#\n $G #y ~K\n");
  later.run.SUPRESS = 1;
  ASSERT_EQ(statement(later), 0);
  ASSERT_EQ(statement(later), 0);
  EXPECT_EQ(next_line(later), " > #y 1.000 ");
}

TEST(MacroLinePass, StatementsStopTheScan) {
  for (const char* text : {"#undef X $Nope\n", "#const Q 1 $Nope\n", "#ifx $Nope\n",
                           "#e $Nope\n"}) {
    TextInput in(text);
    int status = -2;
    next_line(in, &status);
    EXPECT_EQ(status, 0) << text;
  }
}

}  // namespace
}  // namespace sorvel
