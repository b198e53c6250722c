// The preprocessors' limits on the side that must still pass, and where the
// side past them fails: 128 parameters, 2047 characters in a macro body and
// in an expanded line, 64 nested expansions. Also the one place where a ">"
// does not make "#" plain text.
#include <gtest/gtest.h>

#include <string>

#include "base/catalog.h"
#include "input/macros.h"
#include "input/preproc_support.h"

namespace sorvel {
namespace {

using testing::next_line;
using testing::statement;
using testing::TextInput;

// Reads `statements` g-block statements (each must pass), then one more line;
// returns its status.
int status_after(TextInput& in, int statements) {
  for (int k = 0; k < statements; ++k) EXPECT_EQ(statement(in), 0) << k;
  int status = 0;
  next_line(in, &status);
  return status;
}

std::string expanding(const char* name, int line) {
  return std::string("\n\tExpanding macro \"") + name + "\" into line " + std::to_string(line) + "...";
}

TEST(MacroLimits, ParametersAndBodySize) {
  std::string params = "#define P(a0";
  for (int k = 1; k < 128; ++k) params += "'a" + std::to_string(k);
  TextInput many(params + ") #x#\n");
  ASSERT_EQ(statement(many), 0);
  EXPECT_EQ(find_macro(many.run.macro_list, "P")->nargs, 128);

  // " \n" from the first line, then the rest: 2047 characters in all pass.
  TextInput fits("#define A #\n" + std::string(2045, 'x') + "#\n");
  ASSERT_EQ(statement(fits), 0);
  EXPECT_EQ(find_macro(fits.run.macro_list, "A")->body.size(), 2047u);
  TextInput over("#define A #\n" + std::string(2046, 'x') + "#\n");
  EXPECT_EQ(statement(over), 1000);
}

std::string chain(int top) {
  std::string s = "#define M0 #x#\n";
  for (int k = 1; k <= top; ++k)
    s += "#define M" + std::to_string(k) + " #$M" + std::to_string(k - 1) + "#\n";
  return s + "$M" + std::to_string(top) + "\n";
}

TEST(MacroLimits, NestingDepthAndLineLength) {
  // The call in the line is depth 0: M64 reaches M0 at depth 64.
  TextInput ok(chain(64));
  ok.run.SUPRESS = 1;
  EXPECT_EQ(status_after(ok, 65), 0);
  EXPECT_EQ(std::string(ok.src.buffer), "x ");
  TextInput deep(chain(65));
  EXPECT_EQ(status_after(deep, 66), 89);
  EXPECT_EQ(deep.messages(), "");  // nothing was spliced

  // 1000 characters per call: the third would make the line 3001 long, and
  // fails before its "Expanding" line is printed.
  TextInput line("#define L #" + std::string(1000, 'a') + "#\n$L$L$L\n");
  EXPECT_EQ(status_after(line, 1), 89);
  EXPECT_EQ(std::string(line.src.buffer), std::string(2000, 'a') + "$L ");
  EXPECT_EQ(line.messages(), expanding("L", 2) + expanding("L", 2));
}

TEST(ConstantLimits, ExpandedLineLength) {
  // " ~A" and the blank of the line's end after 2040 or 2041 characters: the
  // value's text "1.000" makes 2047 or 2048.
  for (int n : {2040, 2041}) {
    TextInput in("#const A 1\n" + std::string(static_cast<size_t>(n), 'x') + " ~A\n");
    ASSERT_EQ(statement(in), 0);
    int status = -1;
    const std::string line = next_line(in, &status);
    const std::string x(static_cast<size_t>(n), 'x');
    if (n == 2040) {
      EXPECT_EQ(status, kOk);
      EXPECT_EQ(line, x + " 1.000 ");
    } else {
      EXPECT_EQ(status, kErrMacroTooLong);
      // Left as it was; the expansion is announced before the length is
      // checked.
      EXPECT_EQ(line, x + " ~A ");
      EXPECT_EQ(in.messages(), "\n\tExpanding const \"A\" (   1.00) into line 2...");
    }
  }
}

// A ">" makes a "#" after it plain text for the definition scan, so the
// constant pass expands what follows; a ">" at index 85 does not.
TEST(MacroLinePass, GreaterThanMakesHashPlainTextExceptAtIndex85) {
  for (int at : {0, 84, 85, 86}) {
    TextInput in("#const K 1\n" + std::string(static_cast<size_t>(at), 'x') + "> #y ~K\n");
    in.run.SUPRESS = 1;
    ASSERT_EQ(statement(in), 0);
    EXPECT_EQ(next_line(in).substr(static_cast<size_t>(at)), at == 85 ? "> #y ~K " : "> #y 1.000 ")
        << at;
  }
  // The text put in place of a call is scanned again, from its second
  // character when the call stood at index 0: there its ">" goes unseen.
  TextInput call("#const K 1\n#define G #>#\n$G #y ~K\n $G #y ~K\n");
  call.run.SUPRESS = 1;
  ASSERT_EQ(statement(call), 0);
  ASSERT_EQ(statement(call), 0);
  EXPECT_EQ(next_line(call), "> #y ~K ");
  call.run.IN_MACRO_DEF = 0;
  EXPECT_EQ(next_line(call), " > #y 1.000 ");
}

}  // namespace
}  // namespace sorvel
