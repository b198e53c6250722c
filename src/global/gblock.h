// Global blocks: everything between two i-blocks.
#pragma once

#include <cstdio>

#include "input/source.h"

namespace sorvel {

// Reads a g-block up to the "i" that opens the next i-block. Returns 0 with
// the position on that "i", a positive error number, or -1 at end of input.
int parse_gblock(Source& src, FILE* output);

}  // namespace sorvel
