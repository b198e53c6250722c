// The settings commands RS, SR, RD, DV and PF: a name, "(", a value, ")".
// Each is entered just after its name and returns 0 or an error number.
#pragma once

#include "input/source.h"

namespace sorvel {

int set_rand_seed(Source& src);
int set_samp_rate(Source& src);
int set_rand_dev(Source& src);
int set_rand_dev2(Source& src);
// PF is refused in p2 (P_NO 2).
int set_pfactor(Source& src, int P_NO);

}  // namespace sorvel
