// The families of hints the checker runs: one list, in families.cpp.
#pragma once

#include <memory>
#include <vector>

#include "base/run_state.h"
#include "hints/family.h"
#include "hints/finding.h"

namespace sorvel {

// Adds one of each family of hints to `families`, each adding its findings
// to `out`.
void add_families(const Run& run, Findings& out, std::vector<std::unique_ptr<Family>>& families);

}  // namespace sorvel
