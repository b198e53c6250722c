// The command line: options, file names, the banner and the usage text.
#pragma once

#include <cstdio>

#include "base/run_state.h"

namespace sorvel {

extern const char* const VERSION;

// Parses the options and the two file names into `run`. Returns 0 when the
// command line is good, 1 otherwise (the message has been printed).
int get_options(Run& run, int argc, char** argv);

// Returns 1 (after printing the message) when a file name is used twice.
int check_fnames(Run& run);

void print_usage(FILE* stream);
void print_info(FILE* stream, const Run& run);

}  // namespace sorvel
