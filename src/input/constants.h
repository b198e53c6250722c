// Constants: "#const NAME value" and the references "~NAME", "~[equation]"
// and "~@1" to "~@4", replaced in the line by the value as text.
#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "base/run_state.h"
#include "input/source.h"

namespace sorvel {

constexpr int kConstNameMax = 2048;  // a name of this many characters is refused

// --- definitions (const_defs.cpp) ---

// A whole "#const NAME value", entered on the "c".
int get_var(Source& src);
// The loose keyword test: five characters from the "c", then white space.
int get_vdefine(Source& src);
// The name and the value.
int get_vdata(Source& src, Constant& constant);
// Adds the constant to the list: kOk, or kErrConstDefined when the name is taken.
int store_var(Constant&& constant, std::unordered_map<std::string, Constant>& list);
// The newest constant of that name, or null.
const Constant* find_var(const std::unordered_map<std::string, Constant>& list,
                         const std::string& name);
// Reads the name at the position and finds it: 1, or kErrCaretOnly with the message
// printed when there is no such constant.
int find_vname(Source& src, const Constant*& found);

// --- references (const_refs.cpp) ---

// Expands the reference whose "~" is just before the scan position. The
// position is left where the inserted number begins; on a failure it stays
// where the reading stopped (after a name that was read, on the "@" of a
// "~@" that no 1 to 4 follows).
int expand_variables(Source& src);
// Replaces the reference whose "~" is at index `tilde` by the value: kOk, or kErrMacroTooLong
// when the line would grow too long.
int vexpand_in_buff(Source& src, const char* label, double value, int tilde);
// The index just past the reference whose "~" is at `i`: a name, "@" alone,
// or everything up to and including the next "]".
int skip_vname_or_eq(const Source& src, int i);

// --- equations (const_equation.cpp) ---

// Evaluates "[ ... ]" strictly from left to right; entered on the "[".
int parse_vequation(Source& src, double& value);

// --- number text (const_format.cpp) ---

// The value with three decimals, as references are written into the line.
std::string FtoA(double value);

}  // namespace sorvel
