// The command scanner and the acceptance tests over the vocabulary table.
#pragma once

#include "base/vocabulary.h"

namespace sorvel {

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
int is_input_code(int code);                   // codes of input types

}  // namespace sorvel
