// The Csound score writer.
#pragma once

#include <cstdio>

#include "base/run_state.h"
#include "output/block.h"

namespace sorvel {

// Writes the block's sounding events as "i" statements, removing rests from
// the list. Returns 1 when at least one line was written, else 0.
int print_csound(Run& run, Block& block, FILE* stream);

// One p-field value as the score writes it: converted by its output type
// `code` ("re" with `decimals`, "bn" with the size index `fft`), in its field
// width, followed by one blank; nothing for "xx". Writes at p (which needs
// room for kNumTextMax characters) and returns the end.
char* put_pfield(char* p, float v, int code, int decimals, int fft, unsigned srate);

}  // namespace sorvel
