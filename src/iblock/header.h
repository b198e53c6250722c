// The i-block header and the head of each p-field line.
#pragma once

#include "pfield/state.h"

namespace sorvel {

// Reads the header from its "i" to its "{". Returns kOk, kSkipBlock when the
// instrument number is negative (the block is to be skipped), or an error.
int do_p1(Ctx& c);

// Reads the block length: beats, or "-" and a number of events.
int get_amount(Ctx& c);

// Resets the per-p-field state before p-field P_NO is read.
void reset_pfield(Ctx& c);

// Reads the output specifier of p-field P_NO, then its data list.
int do_pN(Ctx& c, DataList& d);

}  // namespace sorvel
