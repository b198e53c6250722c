// The argument readers of the dynamic data functions. Each reads from just
// after the function's name up to and including its ")" into `a`, and returns
// 0 or an error number.
#pragma once

#include "ddf/record.h"
#include "pfield/state.h"

namespace sorvel {

// The "(" and the duration (a number, or T / T*factor for the block's time).
int get_dynfunc_dur(Ctx& c, float& dur);

int get_RA_data(Ctx& c, DdfArgs& a);
int get_RW_data(Ctx& c, DdfArgs& a);
int get_MO_data(Ctx& c, DdfArgs& a);
int get_SE_data(Ctx& c, DdfArgs& a);
int get_MS_data(Ctx& c, DdfArgs& a);
int get_HO_data(Ctx& c, DdfArgs& a);
int get_EX_data(Ctx& c, DdfArgs& a);
int get_S2_data(Ctx& c, DdfArgs& a);

// Range-type letters: f l h t g x b (either case) for distributions 0 to 6.
int is_rrange_type(int ch);
int get_rrange_type(Source& src);

}  // namespace sorvel
