#include "input/names.h"

#include "base/catalog.h"
#include "base/diag.h"

namespace sorvel {

int read_defined_name(Source& src, std::string& name, int not_a_name, const char* what, int max) {
  int r = src.skip_wc();
  if (r) return r;
  if (!is_alpha(src.cur())) return not_a_name;
  const std::string what_name = std::string(what) + " name";
  name.clear();
  while (is_name_char(src.cur())) {
    name += static_cast<char>(src.cur());
    ++src.pos;
    if (name.size() >= static_cast<size_t>(max)) return too_long(src, what_name, max);
  }
  return 0;
}

int too_long(Source& src, const std::string& what, int max) {
  Mprintf(src.run, "\n\nERROR: Line %d: The %s has exceeded the", src.line, what.c_str());
  Mprintf(src.run, " maximum number\nof characters allowed (%d).\n", max);
  return kErrCaretOnly;
}

int no_such_name(Source& src, const char* what, const std::string& name) {
  Mprintf(src.run, "\n\nERROR: Line %d: There is no %s \"%s\" in your input file!\n", src.line,
          what, name.c_str());
  return kErrCaretOnly;
}

}  // namespace sorvel
