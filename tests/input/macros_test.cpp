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
  return std::string("\n\tExpanding macro \"") + name + "\" into line " + std::to_string(line) + "...";
}

std::string no_macro(const char* name, int line) {
  return "\n\nERROR: Line " + std::to_string(line) + ": There is no macro \"" + name +
         "\" in your input file!\n";
}

// Reads `defs` statement by statement (each must pass), then one more line;
// returns its status.
int status_after(TextInput& in, int statements) {
  for (int k = 0; k < statements; ++k) EXPECT_EQ(statement(in), 0) << k;
  int status = 0;
  next_line(in, &status);
  return status;
}

// --- definitions ---

TEST(MacroDefinition, Bodies) {
  // The reader turns each line end into a blank; the body adds the newline.
  TextInput in("#define A #x y#\n$A z\n#define B #x\ny#\n#define C #a ; # c\nb /* # */#d\n");
  ASSERT_EQ(statement(in), 0);
  EXPECT_EQ(in.src.cur(), ' ');  // just after the closing "#"
  EXPECT_EQ(next_line(in), "x y z ");
  EXPECT_EQ(in.messages(), expanding("A", 2));
  ASSERT_EQ(statement(in), 0);
  EXPECT_EQ(in.run.macro_list[1].body, "x \ny");
  ASSERT_EQ(statement(in), 0);
  EXPECT_EQ(in.run.macro_list[2].body, "a ; # c \nb /* # */");  // "#" in comments stays
  EXPECT_EQ(in.src.cur(), 'd');
  EXPECT_EQ(in.run.IN_MACRO_DEF, 0);
}

TEST(MacroDefinition, ParametersOverLinesWithEverySeparator) {
  // (A "#" between parameters counts as one of the definition's three "#"s
  // for the line pass, so this body holds no "$".)
  TextInput in("#define M(a, b#c'\n d) #abcd#\n");
  ASSERT_EQ(statement(in), 0);
  const Macro& m = in.run.macro_list[0];
  EXPECT_EQ(m.nargs, 4);
  EXPECT_EQ(m.args, (std::vector<std::string>{"a", "b", "c", "d"}));
}

std::string params(int n) {
  std::string s = "#define P(";
  for (int k = 0; k < n; ++k) s += (k ? "'a" : "a") + std::to_string(k);
  return s + ") #x#\n";
}

TEST(MacroDefinition, Failures) {
  const struct {
    std::string text;
    int status;
  } cases[] = {
      {"#dfoo6 N #x#\n", 80},       // six letters from the "d", then white space
      {"#defineA #x#\n", 80},
      {"#define 9A #x#\n", 88},     // names start with a letter
      {"#define M(a'9) #x#\n", 88},
      {"#define M() #x#\n", 88},    // an empty list names nothing
      {"#define A x#\n", 81},       // body not opened by "#"
      {"#define M (a) #x#\n", 81},  // "(" only counts right after the name
      {"#define A #x\n", 8},        // input ends inside the body
      {"#define A #x", 8},
      {"#define A #x ; #\n", 8},    // that "#" is in a comment
      {params(129), 86},
      {"#define A #1#\n#define A #2#\n", 84},
      {"#undef Z\n", 91},
      {"#define A #1#\n#xxxxx A\n", 80},
      {"#define A #1#\n#undefA\n", 80},
  };
  for (const auto& c : cases) {
    TextInput in(c.text);
    int status = 0;
    while (!status && !in.src.at_eof()) status = statement(in);
    EXPECT_EQ(status, c.status) << c.text;
  }
}

TEST(MacroDefinition, LimitsThatPass) {
  TextInput loose("#dfooo6 N #x#\n" + params(128));
  ASSERT_EQ(statement(loose), 0);
  ASSERT_EQ(statement(loose), 0);
  EXPECT_NE(find_macro(loose.run.macro_list, "N"), nullptr);
  EXPECT_EQ(loose.run.macro_list[1].nargs, 128);

  // " \n" from the first line, then the rest: 2047 characters in all pass.
  TextInput fits("#define A #\n" + std::string(2045, 'x') + "#\n");
  ASSERT_EQ(statement(fits), 0);
  EXPECT_EQ(fits.run.macro_list[0].body.size(), 2047u);

  TextInput over("#define A #\n" + std::string(2046, 'x') + "#\n");
  EXPECT_EQ(statement(over), 1000);
  EXPECT_EQ(over.messages(),
            "\n\nERROR: Line 2: The macro body has exceeded the maximum number\n"
            "of characters allowed (2048).\n");
}

TEST(MacroDefinition, Undef) {
  TextInput in("#define A #1#\n#undef Z\n#undef A\n#define A #2#\n$A\n#xnxxx A\n");
  ASSERT_EQ(statement(in), 0);
  EXPECT_EQ(statement(in), 1000);
  EXPECT_EQ(in.messages(), no_macro("Z", 2));
  EXPECT_EQ(statement(in), 0);
  EXPECT_TRUE(in.run.macro_list.empty());
  EXPECT_EQ(statement(in), 0);
  EXPECT_EQ(next_line(in), "2 ");
  EXPECT_EQ(statement(in), 0);  // any one of u n d e f in place will do
  EXPECT_TRUE(in.run.macro_list.empty());
}

// --- calls ---

TEST(MacroCall, ArgumentsAreSubstituted) {
  TextInput in("#define M(a'b) #$b-$a#\n$M(1'2)\n$M(1#2) $M (1'2)\n$M(f(x)'y) r\n");
  ASSERT_EQ(statement(in), 0);
  EXPECT_EQ(next_line(in), "2-1 ");
  EXPECT_EQ(in.messages(), expanding("b", 2) + expanding("a", 2) + expanding("M", 2));
  // Blanks before "(" are skipped to read the arguments, but the call's text
  // ends at the name.
  EXPECT_EQ(next_line(in), "2-1 2-1 (1'2) ");
  EXPECT_EQ(next_line(in), "y-f(x) r ");

  TextInput plain("#define A #x#\n$A(q) z\n$A(q z\n");
  ASSERT_EQ(statement(plain), 0);
  EXPECT_EQ(next_line(plain), "x z ");  // a list after a call without parameters goes
  EXPECT_EQ(next_line(plain), "x");     // an unclosed one runs to the end of the line
}

TEST(MacroCall, Failures) {
  const struct {
    const char* text;
    int statements, status;
  } cases[] = {
      {"#define M(a'b) #$b-$a#\n$M(1'2'3)\n", 1, 82},
      {"#define M(a'b) #$b-$a#\n$M(1\n", 1, 86},
      {"#define M(a'b) #$b-$a#\n$M(1)\n", 1, 86},
      {"#define M(a'b) #$b-$a#\n$M 1'2\n", 1, 85},
      {"#define D(a'a) #$a#\n$D(1'2)\n", 1, 84},
      {"a $Nope b\n", 0, 1000},
  };
  for (const auto& c : cases) {
    TextInput in(c.text);
    EXPECT_EQ(status_after(in, c.statements), c.status) << c.text;
  }
}

TEST(MacroCall, ArgumentsArePlainTextExpandedInTheBody) {
  TextInput in("#define X #7#\n#define M(a) #[$a]#\n$M($X)\n");
  ASSERT_EQ(status_after(in, 2), 0);
  EXPECT_EQ(std::string(in.src.buffer), "[7] ");
  EXPECT_EQ(in.messages(), expanding("X", 3) + expanding("a", 3) + expanding("M", 3));

  // The outer call's parameters are not seen from an inner call's argument.
  TextInput inner("#define TWO(x) #[$x]#\n#define ONE(p) #$TWO($p)#\n$ONE(5)\n");
  EXPECT_EQ(status_after(inner, 2), 1000);
  EXPECT_EQ(inner.messages(), no_macro("p", 3));
}

std::string chain(int top) {
  std::string s = "#define M0 #x#\n";
  for (int k = 1; k <= top; ++k)
    s += "#define M" + std::to_string(k) + " #$M" + std::to_string(k - 1) + "#\n";
  return s + "$M" + std::to_string(top) + "\n";
}

TEST(MacroCall, NestingAndSizeLimits) {
  // The call in the line is depth 0: M64 reaches M0 at depth 64.
  TextInput ok(chain(64));
  ok.run.SUPRESS = 1;
  EXPECT_EQ(status_after(ok, 65), 0);
  EXPECT_EQ(std::string(ok.src.buffer), "x ");
  TextInput deep(chain(65));
  EXPECT_EQ(status_after(deep, 66), 89);
  EXPECT_EQ(deep.messages(), "");  // nothing was spliced
  TextInput self("#define R #a$R#\n$R\n");
  EXPECT_EQ(status_after(self, 1), 89);

  // 1000 characters per call: the third would make the line 3001 long.
  TextInput line("#define L #" + std::string(1000, 'a') + "#\n$L$L$L\n");
  EXPECT_EQ(status_after(line, 1), 89);
  EXPECT_EQ(std::string(line.src.buffer), std::string(2000, 'a') + "$L ");
  EXPECT_EQ(line.messages(), expanding("L", 2) + expanding("L", 2));

  // 1 + 500 + 500 * 500 expansions, all of empty bodies.
  std::string d, c;
  for (int k = 0; k < 500; ++k) d += "$E", c += "$D";
  TextInput wide("#define E ##\n#define D #" + d + "#\n#define C #" + c + "#\n$C\n");
  wide.run.SUPRESS = 1;
  EXPECT_EQ(status_after(wide, 3), 89);
}

// --- the line pass ---

TEST(MacroLinePass, CallsInCommentsAreLeftAlone) {
  TextInput in("#define A #x#\ny ; $Nope\n/* $Nope */ $A\n/* open\n$Nope */ $A\n/* /* */ $A */\n");
  ASSERT_EQ(statement(in), 0);
  EXPECT_EQ(next_line(in), "y ; $Nope ");
  EXPECT_EQ(next_line(in), "/* $Nope */ x ");
  EXPECT_EQ(next_line(in), "/* open ");
  EXPECT_EQ(in.run.IN_COMMENT, 1);
  EXPECT_EQ(next_line(in), "$Nope */ x ");
  EXPECT_EQ(in.run.IN_COMMENT, 0);
  EXPECT_EQ(next_line(in), "/* /* */ x */ ");  // block comments do not nest here
}

TEST(MacroLinePass, StatementsStopTheScan) {
  for (const char* text : {"#undef X $Nope\n", "#const Q 1 $Nope\n", "#ifx $Nope\n", "#e $Nope\n"}) {
    TextInput in(text);
    EXPECT_EQ(status_after(in, 0), 0) << text;
  }
}

// Where definitions stand shows through the constant pass: a "~" inside one
// is left alone.
TEST(MacroLinePass, DefinitionsAreMarkedAcrossLines) {
  TextInput in("#const K 1\n#define A #x ~K\n~K y#  ~K\n");
  in.run.SUPRESS = 1;
  ASSERT_EQ(statement(in), 0);
  ASSERT_EQ(statement(in), 0);
  EXPECT_EQ(in.run.macro_list[0].body, "x ~K \n~K y");
  EXPECT_EQ(std::string(in.src.buffer), "~K y#  1.000 ");
}

TEST(MacroLinePass, GreaterThanMakesHashPlainText) {
  TextInput in("#const K 1\n> x #y ~K\nx #y ~K\n");
  in.run.SUPRESS = 1;
  ASSERT_EQ(statement(in), 0);
  EXPECT_EQ(next_line(in), "> x #y 1.000 ");
  EXPECT_EQ(next_line(in), "x #y ~K ");
  EXPECT_EQ(in.run.IN_MACRO_DEF, 1);  // the definition goes on

  for (int at : {84, 85, 86}) {  // except a ">" at index 85
    TextInput pad("#const K 1\n" + std::string(static_cast<size_t>(at), 'x') + "> #y ~K\n");
    pad.run.SUPRESS = 1;
    ASSERT_EQ(statement(pad), 0);
    EXPECT_EQ(next_line(pad).substr(static_cast<size_t>(at)), at == 85 ? "> #y ~K " : "> #y 1.000 ");
  }

  // The text put in place of a call is scanned again, from its second
  // character when the call stood at index 0: there its ">" goes unseen.
  TextInput start("#const K 1\n#define G #>#\n$G #y ~K\n $G #y ~K\n");
  start.run.SUPRESS = 1;
  ASSERT_EQ(statement(start), 0);
  ASSERT_EQ(statement(start), 0);
  EXPECT_EQ(next_line(start), "> #y ~K ");
  start.run.IN_MACRO_DEF = 0;
  EXPECT_EQ(next_line(start), " > #y 1.000 ");
}

}  // namespace
}  // namespace sorvel
