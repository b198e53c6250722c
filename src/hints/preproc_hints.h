// Hints on preprocessing: a directive's name misspelled but accepted (H09),
// a macro or constant that is not defined, with the defined name nearest to
// it (H10), an include file found only next to the file that includes it
// (H11), a line too long to be read as one (H12).
#pragma once

#include <string>
#include <vector>

#include "hints/family.h"

namespace sorvel {

class PreprocHints : public Family {
 public:
  using Family::Family;

  void directive(int line, const char* keyword, const char* written, int begin,
                 int length) override;
  void name_missing(int line, char kind, const char* name, int begin, int end) override;
  void include_missing(const char* name, const char* from, int line, int column) override;
  void line_split(int line) override;

 private:
  int last_split_ = -1;
};

// The number of single-character insertions, deletions and replacements
// that turn `a` into `b`.
int edit_distance(const std::string& a, const std::string& b);

// Of `names`, the one nearest to `name` by edit distance (the first in
// byte order among equals), or "" when `names` is empty.
std::string nearest_name(const std::string& name, std::vector<std::string> names);

}  // namespace sorvel
