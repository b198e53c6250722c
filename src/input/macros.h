// Macros: "#define NAME(p1'p2) #body#", "#undef NAME" and calls
// "$NAME(a1'a2)", expanded in the line buffer as each line is read.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "base/run_state.h"
#include "input/source.h"

namespace sorvel {

constexpr int kMacroNameMax = 2048;  // a name or body of this many characters is refused
constexpr int kMacroBodyMax = 2048;
constexpr int kMaxMacroArgs = 128;   // parameters of one definition
constexpr int kMaxMacroDepth = 64;   // nested expansions below a call met in a line
// Expansions allowed while one line is read: bodies whose calls expand to
// nothing could otherwise multiply without bound.
constexpr long kMaxExpansions = 10000;

// --- definitions (macro_defs.cpp) ---

// Reads a whole definition, entered on the "d" of "#define".
int get_macro(Source& src, Macro& macro);
// The loose keyword test: six characters from the "d", then white space.
int get_define(Source& src);
// A macro or parameter name after white space and comments: kOk,
// kErrMacroNameStart, or kErrCaretOnly.
int get_name(Source& src, std::string& name);
// The parameter list, when "(" follows the name.
int get_args(Source& src, Macro& macro);
// The body between "#"s, over as many lines as it takes.
int get_body(Source& src, std::string& body);
// Adds the definition to the list: kOk, or kErrMacroDefined when the name is taken.
int store_macro(Macro&& macro, std::vector<Macro>& list);
int store_macro(Macro&& macro, std::unordered_map<std::string, Macro>& list);
// "#undef NAME", entered just after the "#".
int do_undefine(Source& src);
// The newest definition of `name`, or null.
const Macro* find_macro(const std::vector<Macro>& list, const std::string& name);
const Macro* find_macro(const std::unordered_map<std::string, Macro>& list,
                        const std::string& name);

// --- calls (macro_calls.cpp) ---

// Expands the call whose "$" is just before the scan position, in the line
// buffer. The position is left where the inserted text begins; on a failure
// it stays where reading the call stopped (after its name, or inside or after
// its argument list), however deep in the body the failure arose.
int expand_macro(Source& src);
// The end of the call that starts with the "$" at `i`: "$", the name and, when
// "(" follows at once, a balanced argument list.
size_t skip_name(const std::string& text, size_t i);
// From "(" to just after its matching ")" (or to the end of the text).
size_t skip_args(const std::string& text, size_t i);

}  // namespace sorvel
