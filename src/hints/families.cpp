#include "hints/families.h"

#include "hints/preproc_hints.h"

namespace sorvel {

void add_families(const Run& run, Findings& out, std::vector<std::unique_ptr<Family>>& families) {
  families.push_back(std::make_unique<PreprocHints>(run, out));
}

}  // namespace sorvel
