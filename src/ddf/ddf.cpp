#include "ddf/ddf.h"

namespace sorvel {

int do_DDF(Ctx&, int, DataList&) { return 200; }
int do_S2(Ctx&, DataList&) { return 200; }

}  // namespace sorvel
