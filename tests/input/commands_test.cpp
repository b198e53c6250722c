// The command scanner over the vocabulary table: each acceptance test admits
// exactly its names, and the digit and "x" rules.
#include "input/commands.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace sorvel {
namespace {

std::string lowered(int a, int b) {
  auto low = [](int c) { return static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c); };
  return {low(a), low(b)};
}

// Every pair of characters (either case) that `test` admits, lowered.
std::set<std::string> admitted(int (*test)(const char*, int)) {
  std::set<std::string> names;
  for (int a = 1; a < 128; ++a)
    for (int b = 0; b < 128; ++b) {
      const char text[3] = {static_cast<char>(a), static_cast<char>(b), '\0'};
      if (test(text, 0)) names.insert(lowered(a, b));
    }
  return names;
}

// The names of `list` and every pair that begins with a character of `lead`.
std::set<std::string> pairs(const std::string& list, const std::string& lead = "") {
  std::set<std::string> names;
  for (size_t i = 0; i + 1 < list.size(); i += 3) names.insert(list.substr(i, 2));
  for (char a : lead)
    for (int b = 0; b < 128; ++b) names.insert(lowered(a, b));
  return names;
}

TEST(Commands, EachAcceptanceTestAdmitsExactlyItsNames) {
  EXPECT_EQ(admitted(is_command), pairs("db dv ex ho in ms mo no op pf ra rd re rh rs rw s2 se", "#"));
  EXPECT_EQ(admitted(is_gcommand), pairs("pf rd rs sr te", "#>"));
  EXPECT_EQ(admitted(is_out_type), pairs("re in db hz op od tr bn xx"));
  for (int code : {CMD_DB, CMD_IN, CMD_NO, CMD_OP, CMD_RE, CMD_RH}) EXPECT_TRUE(is_input_code(code));
  for (int code : {int{CMD_EX}, int{CMD_HZ}, int{CMD_PF}, int{CMD_TR}, int{CMD_MACRO}, 8, -1, 99})
    EXPECT_FALSE(is_input_code(code)) << code;
}

struct Scan {
  int ok;
  int code;
  int pos;
  CommandExtras extras;
};

Scan scan(const char* text) {
  Scan s{0, -7, 0, {}};
  s.ok = get_command(s.code, text, s.pos, &s.extras);
  return s;
}

TEST(Commands, CodesAndHowFarTheScanGoes) {
  const struct { const char* text; int code; int pos; } cases[] = {
      {"EX", CMD_EX, 2}, {"te", CMD_TE, 2}, {"Sr", CMD_SR, 2}, {"s2", CMD_S2, 2},
      {"od", CMD_OD, 2}, {"#c", CMD_CONST, 1}, {"$C", CMD_CONST, 1}, {"#d", CMD_MACRO, 1},
      {"$", CMD_MACRO, 1}, {">x", CMD_DIRECT, 1}, {"ba", -7, 2},  // known letter, unknown name
  };
  for (const auto& c : cases) {
    const Scan s = scan(c.text);
    EXPECT_EQ(s.ok, 1) << c.text;
    EXPECT_EQ(s.code, c.code) << c.text;
    EXPECT_EQ(s.pos, c.pos) << c.text;
  }
  for (const char* text : {"", "a1", "zz", "r", "re8", "bn12"}) EXPECT_EQ(scan(text).ok, 0) << text;
}

TEST(Commands, DigitsAfterReAndBnAndXAfterNoAndOp) {
  Scan s = scan("re07 ");
  EXPECT_EQ(s.extras.digits, 7);
  EXPECT_EQ(s.pos, 4);
  EXPECT_EQ(scan("bn3").extras.digits, 3);
  EXPECT_EQ(scan("re").extras.digits, -1);
  s = scan("NOX");
  EXPECT_EQ(s.code, CMD_NO);
  EXPECT_EQ(s.extras.nx, 1);
  EXPECT_EQ(s.pos, 3);
  s = scan("op8");
  EXPECT_EQ(s.extras.nx, 0);
  EXPECT_EQ(s.pos, 2);
  EXPECT_EQ(scan("od").extras.nx, -1);
}

}  // namespace
}  // namespace sorvel
