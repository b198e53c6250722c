// The command vocabulary: every two-letter name of the language (i-block
// commands, g-block commands, input types, output types) maps to one code.
#pragma once

namespace sorvel {

// Command codes.
enum CommandCode {
  CMD_EX = 0, CMD_TE = 1, CMD_DB = 2, CMD_DV = 3, CMD_HZ = 4, CMD_HO = 5, CMD_IN = 6,
  CMD_MO = 7, CMD_SE = 9, CMD_NO = 10, CMD_OP = 11, CMD_PF = 12, CMD_OD = 13, CMD_RE = 14,
  CMD_RH = 15, CMD_RA = 16, CMD_RD = 17, CMD_RS = 18, CMD_RW = 19, CMD_DIRECT = 20,
  CMD_MACRO = 21, CMD_MS = 22, CMD_XX = 23, CMD_S2 = 24, CMD_CONST = 25, CMD_TR = 26,
  CMD_BN = 27, CMD_SR = 28
};

// What a name carried beside its code: the digits after "re" or "bn", and
// whether "x" followed "no" or "op".
struct CommandExtras {
  int digits = -1;  // -1: no digits were written
  int nx = -1;      // -1: not "no"/"op"; else 1 when "x" followed, 0 when not
};

// Scans the name at `pos`, stores its code and moves past it (past one
// character for "#", "$" and ">"). Returns 1 when the name was recognised and
// its digits (0 to 7) in range, else 0. A name whose first letter is known but
// whose second is not returns 1 with `code` unchanged.
int get_command(int& code, const char* buffer, int& pos, CommandExtras* extras = nullptr);

// Acceptance tests; they do not move the position.
int is_command(const char* buffer, int pos);   // names legal in a data list
int is_gcommand(const char* buffer, int pos);  // names legal in a g-block
int is_pfield(const char* buffer, int pos);    // "p" and a digit
int is_out_type(const char* buffer, int pos);  // output specifiers
int is_input_code(int code);                   // 2, 6, 10, 11, 13, 14, 15

}  // namespace sorvel
