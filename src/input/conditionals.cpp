// Conditional sections: #if(value) ... #endif.
#include "base/run.h"
#include "input/preproc.h"
#include "input/source.h"

namespace sorvel {

int in_if0(const Run& run) { return run.IN_IF0; }

int is_if(const char*, int) { return 0; }
int is_endif(const char*, int) { return 0; }
int do_if_interface(Source&) { return 0; }
int do_endif(Source&) { return 0; }

}  // namespace sorvel

namespace sorvel {

int ifdef_match(const Run& run) { return run.IF_MATCH == 0 ? 1 : 0; }

}  // namespace sorvel
