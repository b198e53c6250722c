// Global blocks: everything between two i-blocks.
#pragma once

#include <cstdio>

#include "input/source.h"

namespace sorvel {

// Reads a g-block up to the "i" that opens the next i-block. Returns 0 with
// the position on that "i", a positive error number, or -1 at end of input.
int parse_gblock(Source& src, FILE* output);

// Runs one g-block command; the position stands just after its name (after
// the one character of ">" and "#"). Returns 0 or an error number.
int do_gcommand(int code, Source& src, FILE* output);

// ">": the rest of the line goes to the score, after a newline; nothing is
// written to a MIDI file. The position ends at the end of the line.
void do_direct_out(Source& src, FILE* output);

}  // namespace sorvel
