// Constants: #const NAME value, ~NAME, ~[equation], ~@1 to ~@4.
#include "input/preproc.h"
#include "input/source.h"

namespace sorvel {

int parse_variables(Source& src, const unsigned char*) {
  src.pos = 0;
  return 0;
}

}  // namespace sorvel

namespace sorvel {

int parse_var(Source&) { return 0; }

}  // namespace sorvel
