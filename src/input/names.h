// Small helpers shared by the preprocessors: name characters and a
// bounds-checked look at the line buffer.
#pragma once

#include <cstddef>
#include <string>

#include "base/catalog.h"
#include "base/chars.h"
#include "base/observer.h"
#include "input/source.h"

namespace sorvel {

// Characters that a line may hold after expansion (the buffer keeps its zero).
constexpr int kMaxLineText = kLineSize - 1;

// Names start with a letter and go on with letters, digits and "_".
inline bool is_name_char(int c) { return is_alnum(c) || c == '_'; }

// The end of the name that begins at text[i] (a letter, then letters, digits
// and "_"), or i when no letter stands there. The text ends at a zero.
inline size_t name_end(const char* text, size_t i) {
  if (is_alpha(text[i]))
    while (is_name_char(text[i])) ++i;
  return i;
}

// The name of a definition, at the scan position after white space and one
// comment: `not_a_name` when no letter begins it; 1000, with the message
// printed for a name of `what` ("macro", "constant"), once it reaches `max`
// characters (the position then stands after the last one read).
int read_defined_name(Source& src, std::string& name, int not_a_name, const char* what, int max);

// 1000, with the message printed: the name or body (`what`: "macro body")
// has reached its limit of `max` characters.
int too_long(Source& src, const std::string& what, int max);

// 1000, with the message printed: no macro or constant (`what`) of that name.
int no_such_name(Source& src, const char* what, const std::string& name);

// The character at index i of the line, or 0 outside the buffer. Past the
// end of the line the buffer holds zeros, so a look ahead stops there.
inline int char_at(const Source& src, int i) {
  return i >= 0 && i < kLineSize ? src.buffer[i] : 0;
}

// The loose keyword test of "#define", "#undef" and "#const": the word's
// characters are read from the position, any one of them matching its letter
// is enough ("#dfooo6" passes for "define"), and then white space must follow.
// The characters are read before the white space is looked at, so a failure
// (80) leaves the position on the character after them ("#constant": on the
// "a" of "ant"); a line that ends first leaves it at the line's end.
// On success the blanks after the word are skipped too, and the observer
// hears which characters passed for the word.
inline int loose_keyword(Source& src, const char* word, int length) {
  const int begin = src.pos;
  bool match = false;
  for (int k = 0; k < length && src.cur(); ++k) {
    if (src.cur() == word[k]) match = true;
    ++src.pos;
  }
  if (!match || !is_space(src.cur())) return kErrMacroStatement;
  if (src.run.observer)
    src.run.observer->directive(src.line, word, src.buffer + begin, begin, src.pos - begin);
  src.skip_blanks();
  return kOk;
}

}  // namespace sorvel
