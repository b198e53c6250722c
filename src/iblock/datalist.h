// A p-field's data list: values, separators, fuse marks, repeats, loops,
// input-type switches and commands, up to the next p-field line or "}".
#pragma once

#include "pfield/state.h"

namespace sorvel {

// Reads the data list of p-field P_NO and fills the rest of the block.
// Returns 0 or an error number.
int do_pfield(Ctx& c, DataList& d);

}  // namespace sorvel
