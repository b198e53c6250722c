#include "global/gblock.h"

namespace sorvel {

int parse_gblock(Source& src, FILE*) {
  for (;;) {
    int r = src.get_buff();
    if (r) return r;
  }
}

}  // namespace sorvel
