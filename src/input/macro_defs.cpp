// Macro statements of a g-block: #define, #undef, and the routing of #if and
// #endif met there.
#include <algorithm>
#include <utility>

#include "base/catalog.h"
#include "base/observer.h"
#include "input/comments.h"
#include "input/conditionals.h"
#include "input/macros.h"
#include "input/names.h"
#include "input/preproc.h"

namespace sorvel {

int parse_macro(Source& src) {
  Run& run = src.run;
  switch (char_at(src, src.pos)) {
    case 'd': {
      Macro macro;
      int r = get_macro(src, macro);
      if (r) return r;
      return store_macro(std::move(macro), run.macro_list);
    }
    case 'i':
      return get_if(src, run.if_value);
    case 'e':
      if (is_endif(src.buffer, src.pos)) src.pos += 5;
      return 0;
    default:
      return do_undefine(src);
  }
}

int get_macro(Source& src, Macro& macro) {
  int r = get_define(src);
  if (r) return r;
  r = get_name(src, macro.name);
  if (r) return r;
  if (src.cur() == '(') {
    r = get_args(src, macro);
    if (r) return r;
  }
  src.skip_blanks();
  return get_body(src, macro.body);
}

int get_define(Source& src) { return loose_keyword(src, "define", 6); }

int get_name(Source& src, std::string& name) {
  return read_defined_name(src, name, kErrMacroNameStart, "macro", kMacroNameMax);
}

int get_args(Source& src, Macro& macro) {
  ++src.pos;  // the "("
  for (;;) {
    std::string name;
    int r = get_name(src, name);
    if (r) return r;
    if (macro.nargs == kMaxMacroArgs) return kErrMacroSyntax;
    macro.args.push_back(std::move(name));
    ++macro.nargs;
    r = src.skip_wc();
    if (r) return r;
    int c = src.cur();
    if (c == '\'' || c == '#' || c == ',') ++src.pos;
    src.skip_blanks();
    if (src.cur() == ')') {
      ++src.pos;
      return kOk;
    }
  }
}

namespace {

// The body under construction reached its limit: 1000, message printed.
int body_too_long(Source& src) { return too_long(src, "macro body", kMacroBodyMax); }

// Copies the character at the position into the body and passes it; 1000
// when that character is the one that fills the body to its limit (the
// position then stands after it).
int copy_to_body(Source& src, std::string& body) {
  body += static_cast<char>(src.cur());
  ++src.pos;
  return body.size() < static_cast<size_t>(kMacroBodyMax) ? kOk : body_too_long(src);
}

}  // namespace

int get_body(Source& src, std::string& body) {
  int r = src.skip_wc();
  if (r) return r;
  if (src.cur() != '#') return kErrMacroBodyHashes;
  ++src.pos;
  body.clear();
  CommentState comment;  // a "#" in a comment does not end the body
  for (;;) {
    int c = src.cur();
    if (c == '\0') {
      // The line's end is a newline of the body, then the next line.
      if (src.at_eof()) return kErrEofInMacroBody;
      body += '\n';
      if (body.size() >= static_cast<size_t>(kMacroBodyMax)) return body_too_long(src);
      r = src.get_buff();
      if (r > 0) return r;
      comment.line = false;
      continue;
    }
    if (!comment.in() && c == '#') {
      ++src.pos;
      return kOk;
    }
    const int mark = comment.step(c, char_at(src, src.pos + 1), CommentRules::kOutsideComments);
    for (int k = 0; k < (mark ? mark : 1); ++k)
      if ((r = copy_to_body(src, body))) return r;
  }
}

int store_macro(Macro&& macro, std::vector<Macro>& list) {
  if (find_macro(list, macro.name)) return kErrMacroDefined;
  list.push_back(std::move(macro));
  return kOk;
}

int store_macro(Macro&& macro, std::unordered_map<std::string, Macro>& list) {
  std::string name = macro.name;
  return list.try_emplace(std::move(name), std::move(macro)).second ? kOk : kErrMacroDefined;
}

int do_undefine(Source& src) {
  // Any one of "u", "n", "d", "e", "f" in its place passes.
  int r = loose_keyword(src, "undef", 5);
  if (r) return r;
  std::string name;
  while (src.cur() && !is_space(src.cur())) name += static_cast<char>(src.buffer[src.pos++]);
  auto& list = src.run.macro_list;
  if (list.empty()) return kErrNoMacrosToUndefine;
  if (list.erase(name)) return kOk;
  if (src.run.observer) {
    const int end = src.pos;
    src.run.observer->name_missing(src.line, 'm', name.c_str(),
                                   end - static_cast<int>(name.size()), end);
  }
  return no_such_name(src, "macro", name);
}

const Macro* find_macro(const std::vector<Macro>& list, const std::string& name) {
  for (auto it = list.rbegin(); it != list.rend(); ++it)
    if (it->name == name) return &*it;
  return nullptr;
}

const Macro* find_macro(const std::unordered_map<std::string, Macro>& list,
                        const std::string& name) {
  auto it = list.find(name);
  return it == list.end() ? nullptr : &it->second;
}


}  // namespace sorvel
