// Commands met in a p-field's data list.
#pragma once

#include "pfield/state.h"

namespace sorvel {

// Runs the command with code `code` (its name already passed). Returns 0 or an
// error number.
int do_commands(Ctx& c, int code, DataList& d);

}  // namespace sorvel
