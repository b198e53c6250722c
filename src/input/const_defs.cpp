// Constant statements of a g-block: "#const NAME value".
#include <utility>

#include "base/diag.h"
#include "input/constants.h"
#include "input/names.h"
#include "input/preproc.h"

namespace sorvel {

int parse_var(Source& src) {
  if (src.cur() != 'c') return 0;
  return get_var(src);
}

int get_var(Source& src) {
  int r = get_vdefine(src);
  if (r) return r;
  Constant constant;
  r = get_vdata(src, constant);
  if (r) return r;
  return store_var(std::move(constant), src.run.var_list);
}

int get_vdefine(Source& src) { return loose_keyword(src, "const", 5); }

int get_vdata(Source& src, Constant& constant) {
  int r = src.skip_wc();
  if (r) return r;
  if (!is_alpha(src.cur())) return 109;
  constant.name.clear();
  while (is_name_char(src.cur())) {
    constant.name += static_cast<char>(src.cur());
    ++src.pos;
    if (constant.name.size() >= static_cast<size_t>(kConstNameMax)) {
      Mprintf(src.run, "\n\nERROR: Line %d: The constant name has exceeded the", src.line);
      Mprintf(src.run, " maximum number\nof characters allowed (%d).\n", kConstNameMax);
      return 1000;
    }
  }
  src.skip_blanks();
  if (src.cur() == '$') return 103;
  if (!src.get_df(constant.value)) return 500;
  return 0;
}

int store_var(Constant&& constant, std::unordered_map<std::string, Constant>& list) {
  std::string name = constant.name;
  return list.try_emplace(std::move(name), std::move(constant)).second ? 0 : 100;
}

const Constant* find_var(const std::unordered_map<std::string, Constant>& list,
                         const std::string& name) {
  auto it = list.find(name);
  return it == list.end() ? nullptr : &it->second;
}

int find_vname(Source& src, const Constant*& found) {
  if (found) return 1;
  std::string name;
  if (is_alpha(src.cur()))
    while (is_name_char(src.cur())) name += static_cast<char>(src.buffer[src.pos++]);
  found = find_var(src.run.var_list, name);
  if (found) return 1;
  Mprintf(src.run, "\n\nERROR: Line %d: There is no constant \"%s\" in your input file!\n",
          src.line, name.c_str());
  return 1000;
}


}  // namespace sorvel
