// The Csound score writer.
#pragma once

#include <cstdio>

#include "base/run.h"
#include "output/block.h"

namespace sorvel {

// Writes the block's sounding events as "i" statements, removing rests from
// the list. Returns 1 when at least one line was written, else 0.
int print_csound(Run& run, Block& block, FILE* stream);

}  // namespace sorvel
