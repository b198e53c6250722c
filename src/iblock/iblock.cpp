#include "iblock/iblock.h"

namespace sorvel {

int parse_iblock(Ctx& c) {
  for (;;) {
    c.src.skip_blanks();
    if (!c.src.at_line_end()) return 0;
    int r = c.src.get_buff();
    if (r) return r;
  }
}

}  // namespace sorvel
