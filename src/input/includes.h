// The include pass: copies the input into the temporary file, splicing in
// every #include |name| file.
#pragma once

#include <cstdio>

#include "base/run_state.h"

namespace sorvel {

// Returns 0 when the source was copied to its end, or a positive result when
// the pass failed (its message has been printed).
int parse_includes(Run& run, FILE* source, FILE* tmp, int& counter);

}  // namespace sorvel
