// The browser entry's one call into the core: a whole run of Sorvel, made by
// the same driver as the command line, with the two output streams written
// to files (of the in-memory file system) for the page to read back. The run
// state lives in this call's Run object, so the loaded module can make any
// number of runs, each as a fresh process would.
#include <cstdio>

#include "base/run_state.h"
#include "driver/run_sorvel.h"

extern "C" int sorvel_run_in_memory(int argc, char** argv, const char* err_path,
                                    const char* out_path) {
  FILE* err = std::fopen(err_path, "wb");
  FILE* out = std::fopen(out_path, "wb");
  if (!err || !out) {
    if (err) std::fclose(err);
    if (out) std::fclose(out);
    return -1;
  }
  int status;
  {
    sorvel::Run run;
    run.screen = err;
    run.console = out;
    status = sorvel::run_sorvel(run, argc, argv);
  }
  std::fclose(err);
  std::fclose(out);
  return status;
}
