// One run of Sorvel, from the command line to the exit status.
#pragma once

#include <vector>

#include "base/run_state.h"
#include "output/sink.h"

namespace sorvel {

// Runs Sorvel with the given arguments (argv[0] is the program name) and
// returns the exit status: 0 on success, 1 on any failure. Messages go to
// run.screen and run.console. Every block that sounded goes, once written,
// to each of `sinks` in turn (the roll, for example).
int run_sorvel(Run& run, int argc, char** argv, const std::vector<BlockSink*>& sinks = {});

}  // namespace sorvel
