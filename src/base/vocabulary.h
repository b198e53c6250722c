// The command vocabulary: every name of the language that the command scanner
// reads (i-block commands, g-block commands, input types, output types), one
// row each, with its code and what it is allowed as. Adding a command is one
// code and one row here, plus its handler.
#pragma once

namespace sorvel {

// Command codes (8 is not used).
enum CommandCode {
  CMD_EX = 0, CMD_TE = 1, CMD_DB = 2, CMD_DV = 3, CMD_HZ = 4, CMD_HO = 5, CMD_IN = 6,
  CMD_MO = 7, CMD_SE = 9, CMD_NO = 10, CMD_OP = 11, CMD_PF = 12, CMD_OD = 13, CMD_RE = 14,
  CMD_RH = 15, CMD_RA = 16, CMD_RD = 17, CMD_RS = 18, CMD_RW = 19, CMD_DIRECT = 20,
  CMD_MACRO = 21, CMD_MS = 22, CMD_XX = 23, CMD_S2 = 24, CMD_CONST = 25, CMD_TR = 26,
  CMD_BN = 27, CMD_SR = 28,
  kCommandCodes  // one past the last code: a new code goes before it
};

// What a name is allowed as, and how it is scanned (bits of CommandRow::use).
enum CommandUse : unsigned {
  kInputType = 1u << 0,   // an input type of a data list
  kOutputType = 1u << 1,  // an output type, in a p-field's parentheses
  kDataList = 1u << 2,    // a command of a data list (and between p-field lines)
  kGblock = 1u << 3,      // a command of a g-block
  kDigits = 1u << 4,      // digits (0 to 7) may follow the name
  kTakesX = 1u << 5,      // an "x" may follow the name
  kOneChar = 1u << 6,     // the scan passes the first character only
};

struct CommandRow {
  char name[3];  // lower case; a name of one character matches whatever follows it
  int code;
  unsigned use;
};

inline constexpr CommandRow kCommands[] = {
    {"ex", CMD_EX, kDataList},
    {"te", CMD_TE, kGblock},
    {"db", CMD_DB, kInputType | kOutputType},
    {"dv", CMD_DV, kDataList},
    {"hz", CMD_HZ, kOutputType},
    {"ho", CMD_HO, kDataList},
    {"in", CMD_IN, kInputType | kOutputType},
    {"mo", CMD_MO, kDataList},
    {"se", CMD_SE, kDataList},
    {"no", CMD_NO, kInputType | kTakesX},
    {"op", CMD_OP, kInputType | kOutputType | kTakesX},
    {"pf", CMD_PF, kDataList | kGblock},
    {"od", CMD_OD, kOutputType},
    {"re", CMD_RE, kInputType | kOutputType | kDigits},
    {"rh", CMD_RH, kInputType},
    {"ra", CMD_RA, kDataList},
    {"rd", CMD_RD, kDataList | kGblock},
    {"rs", CMD_RS, kDataList | kGblock},
    {"rw", CMD_RW, kDataList},
    {">", CMD_DIRECT, kGblock | kOneChar},
    {"#", CMD_MACRO, kDataList | kGblock | kOneChar},
    {"$", CMD_MACRO, kOneChar},
    {"ms", CMD_MS, kDataList},
    {"xx", CMD_XX, kOutputType},
    {"s2", CMD_S2, kDataList},
    {"#c", CMD_CONST, kDataList | kGblock | kOneChar},
    {"$c", CMD_CONST, kOneChar},
    {"tr", CMD_TR, kOutputType},
    {"bn", CMD_BN, kOutputType | kDigits},
    {"sr", CMD_SR, kGblock},
};

// The row of the name that begins with the characters a and b (either case),
// or null. A two-character row wins over a one-character row.
const CommandRow* find_command(int a, int b);

// Whether a two-letter name begins with the letter a (either case).
bool is_command_letter(int a);

// Every use that a row of `code` has; 0 for a code no row has.
unsigned command_use(int code);

}  // namespace sorvel
