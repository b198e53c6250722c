// Constant statements of a g-block: "#const NAME value".
#include <utility>

#include "base/catalog.h"
#include "base/observer.h"
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
  int r = read_defined_name(src, constant.name, kErrConstNameStart, "constant", kConstNameMax);
  if (r) return r;
  src.skip_blanks();
  if (src.cur() == '$') return kErrMacroInConst;
  if (!src.get_df(constant.value)) return kErrDigitExpected;
  return kOk;
}

int store_var(Constant&& constant, std::unordered_map<std::string, Constant>& list) {
  std::string name = constant.name;
  return list.try_emplace(std::move(name), std::move(constant)).second ? kOk : kErrConstDefined;
}

const Constant* find_var(const std::unordered_map<std::string, Constant>& list,
                         const std::string& name) {
  auto it = list.find(name);
  return it == list.end() ? nullptr : &it->second;
}

int find_vname(Source& src, const Constant*& found) {
  if (found) return 1;
  const int end = static_cast<int>(name_end(src.buffer, static_cast<size_t>(src.pos)));
  const int start = src.pos;
  std::string name(src.buffer + start, static_cast<size_t>(end - start));
  src.pos = end;
  found = find_var(src.run.var_list, name);
  if (found) return 1;
  if (src.run.observer) src.run.observer->name_missing(src.line, 'c', name.c_str(), start, end);
  return no_such_name(src, "constant", name);
}


}  // namespace sorvel
