// Macro calls: "$NAME" and "$NAME(a1'a2)", replaced by the macro's body with
// the arguments put in for "$p1", "$p2" and any nested calls expanded.
#include <cstring>
#include <utility>

#include "base/catalog.h"
#include "base/diag.h"
#include "base/observer.h"
#include "input/macros.h"
#include "input/names.h"

namespace sorvel {

namespace {

// What one expansion from the line needs along the way.
struct Expansion {
  Source& src;
  Run& run;
  size_t call_name = 0;  // where the name of the call met in the line begins
};

int char_in(const std::string& text, size_t i) {
  return i < text.size() ? static_cast<unsigned char>(text[i]) : 0;
}

std::string read_name(const std::string& text, size_t& i) {
  if (i >= text.size()) return {};
  const size_t start = i;
  i = name_end(text.c_str(), i);
  return text.substr(start, i - start);
}

// Reads the arguments of a call to `macro` from `text` at `i`. Each becomes a
// macro named after its parameter whose body is the argument's text. The
// position moves as the call is read and stays where a failure is met:
// after the blanks before a missing "(" (85), at the end of the text when the
// list runs into it (86), on a "'" met in the last argument (82). The list of
// arguments is made once the ")" has been passed, so two parameters of one
// name fail (84) with the position after the ")".
int read_call_args(const Macro& macro, const std::string& text, size_t& i,
                   std::vector<Macro>& args) {
  while (is_space(char_in(text, i))) ++i;
  if (char_in(text, i) != '(') return kErrMacroCallParen;
  ++i;
  std::vector<std::string> bodies;
  for (int k = 0; k < macro.nargs; ++k) {
    const bool last = k == macro.nargs - 1;
    std::string body;
    for (;;) {
      int c = char_in(text, i);
      if (c == 0) return kErrMacroSyntax;
      if (last && c == '\'') return kErrStrayQuote;
      ++i;
      if (!last && (c == '\'' || c == '#')) break;
      if (last && c == ')') break;
      body += static_cast<char>(c);
    }
    bodies.push_back(std::move(body));
  }
  for (int k = 0; k < macro.nargs; ++k) {
    Macro arg;
    arg.name = macro.args[static_cast<size_t>(k)];
    arg.body = std::move(bodies[static_cast<size_t>(k)]);
    int r = store_macro(std::move(arg), args);
    if (r) return r;
  }
  return kOk;
}

// Expands the call whose "$" is at text[pos - 1]. `args` are the arguments of
// the enclosing call (null for a call met in the line); `depth` counts the
// expansions this one is nested in.
int expand(Expansion& x, const std::vector<Macro>* args, std::string& text, size_t& pos,
           int depth) {
  if (depth > kMaxMacroDepth || ++x.src.expansions > kMaxExpansions) return kErrMacroTooLong;
  size_t dollar = pos - 1;
  std::string name = read_name(text, pos);
  const Macro* found = args ? find_macro(*args, name) : nullptr;
  if (!found) found = find_macro(x.run.macro_list, name);
  if (!args) x.call_name = dollar + 1;
  if (!found) {
    // A call inside a body is not in the line: the call that led to it is.
    if (x.run.observer)
      x.run.observer->name_missing(x.src.line, 'm', name.c_str(), static_cast<int>(x.call_name),
                                   static_cast<int>(args ? x.call_name : pos));
    return no_such_name(x.src, "macro", name);
  }
  const Macro macro = *found;  // expansion works on a copy, never on the definition

  std::vector<Macro> call_args;
  if (macro.nargs > 0) {
    int r = read_call_args(macro, text, pos, call_args);
    if (r) return r;
  }

  std::string body = macro.body;
  for (size_t i = 0; i < body.size();) {
    if (body[i] != '$') {
      ++i;
      continue;
    }
    ++i;
    int r = expand(x, &call_args, body, i, depth + 1);
    if (r) return r;
    if (char_in(body, i) == '$') i = skip_name(body, i);
  }

  // Splice: the text before the call, the body, the text after the call.
  size_t end = skip_name(text, dollar);
  size_t length = dollar + body.size() + (text.size() - end);
  if (length > static_cast<size_t>(kMaxLineText)) return kErrMacroTooLong;
  if (!x.run.SUPRESS)
    Mprintf(x.run, "\n\tExpanding macro \"%s\" into line %d...", name.c_str(), x.src.line);
  text.replace(dollar, end - dollar, body);
  pos = dollar;
  return kOk;
}

}  // namespace

size_t skip_args(const std::string& text, size_t i) {
  int level = 0;
  for (; i < text.size(); ++i) {
    if (text[i] == '(') ++level;
    if (text[i] == ')' && --level == 0) return i + 1;
  }
  return i;
}

size_t skip_name(const std::string& text, size_t i) {
  ++i;  // the "$"
  read_name(text, i);
  if (char_in(text, i) == '(') i = skip_args(text, i);
  return i;
}

int expand_macro(Source& src) {
  Expansion x{src, src.run};
  std::string text(src.buffer);
  size_t pos = static_cast<size_t>(src.pos);
  if (pos == 0 || pos > text.size()) return 0;  // not just after a "$" of the line
  int r = expand(x, nullptr, text, pos, 0);
  src.pos = static_cast<int>(pos);
  if (r) return r;
  std::memset(src.buffer, 0, sizeof src.buffer);
  std::memcpy(src.buffer, text.data(), text.size());
  return 0;
}

}  // namespace sorvel
