#include "output/csound.h"

namespace sorvel {

int print_csound(Run&, Block& block, FILE*) {
  if (!block.note_list.handle) return 0;
  return 0;
}

}  // namespace sorvel
