// Pieces of a hint's wording: a text in quotes, and the characters of a
// line that a finding is about.
#pragma once

#include <string>

namespace sorvel {

inline std::string quoted(const std::string& s) { return "\"" + s + "\""; }

// The characters [begin, end) of a line.
inline std::string span(const char* text, int begin, int end) {
  return std::string(text + begin, static_cast<size_t>(end - begin));
}

}  // namespace sorvel
