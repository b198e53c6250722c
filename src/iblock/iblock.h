// I-blocks: header, p-field lines and the end check.
#pragma once

#include "pfield/state.h"

namespace sorvel {

// Reads one i-block from its "i" to its "}". Returns kOk, kSkipBlock when
// the block was skipped (kEndOfInput, the same -1, when the input ended), or
// a positive error number.
int parse_iblock(Ctx& c);

// With -m the run ends after the first i-block. For an observer, reads the
// rest of the input only far enough to name each later block (its header),
// telling the observer of each as a block the MIDI file does not hold. The
// run's messages, files and observer see nothing of this reading.
void name_blocks_left_out(Ctx& c);

}  // namespace sorvel
