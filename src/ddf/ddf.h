// Dynamic data functions: RA, RW, MO, SE, EX, MS, HO and S2 compute a
// p-field's values over a stretch of the block.
#pragma once

#include "pfield/state.h"

namespace sorvel {

// Engine types of the functions.
enum DdfType { DDF_RA = 0, DDF_RW = 1, DDF_MO = 2, DDF_SE = 3, DDF_EX = 4, DDF_MS = 5, DDF_HO = 6 };

// Reads one function from just after its name and fills the current p-field
// for the events it covers. Sets d.exhausted when the block ran out inside it.
int do_DDF(Ctx& c, int type, DataList& d);

// The S2 command: set choice with groups that become chords.
int do_S2(Ctx& c, DataList& d);

}  // namespace sorvel
