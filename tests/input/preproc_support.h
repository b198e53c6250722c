// Reading lines the way a g-block does, for the preprocessor tests.
#pragma once

#include <string>

#include "input/preproc.h"
#include "support/text_input.h"

namespace sorvel::testing {

// Reads the next line. When it starts with "#", the statement goes where the
// g-block sends it: "#c..." to the constants, anything else to the macros.
inline int statement(TextInput& in) {
  int r = in.src.get_buff();
  if (r) return r;
  in.src.skip_blanks();
  if (in.src.cur() != '#') return 0;
  ++in.src.pos;
  return in.src.cur() == 'c' ? parse_var(in.src) : parse_macro(in.src);
}

// Reads the next line and returns it as the parsers will see it.
inline std::string next_line(TextInput& in, int* status = nullptr) {
  int r = in.src.get_buff();
  if (status) *status = r;
  return in.src.buffer;
}

}  // namespace sorvel::testing
