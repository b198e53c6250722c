// I-blocks: header, p-field lines and the end check.
#pragma once

#include "pfield/state.h"

namespace sorvel {

// Reads one i-block from its "i" to its "}". Returns kOk, kSkipBlock when
// the block was skipped (kEndOfInput, the same -1, when the input ended), or
// a positive error number.
int parse_iblock(Ctx& c);

}  // namespace sorvel
