// Small helpers shared by the preprocessors: name characters and a
// bounds-checked look at the line buffer.
#pragma once

#include "base/chars.h"
#include "input/source.h"

namespace sorvel {

// Characters that a line may hold after expansion (the buffer keeps its zero).
constexpr int kMaxLineText = kLineSize - 1;

// Names start with a letter and go on with letters, digits and "_".
inline bool is_name_char(int c) { return is_alnum(c) || c == '_'; }

// The character at index i of the line, or 0 outside the buffer. Past the
// end of the line the buffer holds zeros, so a look ahead stops there.
inline int char_at(const Source& src, int i) {
  return i >= 0 && i < kLineSize ? src.buffer[i] : 0;
}

// The loose keyword test of "#define" and "#const": the word's letters are
// compared in place from the position and any one match is enough ("#dfooo6"
// passes for "define"); white space must follow them. Steps over the word and
// the blanks after it; 80 when the test fails.
inline int loose_keyword(Source& src, const char* word, int length) {
  bool match = false;
  for (int k = 0; k < length; ++k)
    if (char_at(src, src.pos + k) == word[k]) match = true;
  if (!match || !is_space(char_at(src, src.pos + length))) return 80;
  src.pos += length;
  src.skip_blanks();
  return 0;
}

}  // namespace sorvel
