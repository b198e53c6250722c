// The browser entry's calls into the core: a whole run of Sorvel, made by
// the same driver as the command line, with the two output streams written
// to files (of the in-memory file system) for the page to read back. The run
// state lives in each call's Run object, so the loaded module can make any
// number of runs, each as a fresh process would.
#include <algorithm>
#include <cstdio>
#include <string>

#include "base/run_state.h"
#include "driver/run_sorvel.h"
#include "roll/collect.h"
#include "roll/roll.h"

namespace {

// Opens the two stream files; false (with neither left open) when one fails.
bool open_streams(const char* err_path, const char* out_path, FILE*& err, FILE*& out) {
  err = std::fopen(err_path, "wb");
  out = std::fopen(out_path, "wb");
  if (err && out) return true;
  if (err) std::fclose(err);
  if (out) std::fclose(out);
  return false;
}

// Writes the roll's picture of a finished run, as sorvel-roll draws it.
bool write_roll(const sorvel::Run& run, sorvel::Roll& roll, const sorvel::RollOptions& options,
                const char* svg_path) {
  double end = 0.0;
  for (const sorvel::RollNote& n : roll.notes)
    end = std::max(end, static_cast<double>(n.start) + static_cast<double>(n.dur));
  roll.beats = sorvel::beat_times(run, end);
  roll.caption = run.in_fname ? run.in_fname : "";
  const std::string svg = sorvel::draw_roll(roll, options);
  FILE* f = std::fopen(svg_path, "wb");
  if (!f) return false;
  bool ok = std::fwrite(svg.data(), 1, svg.size(), f) == svg.size();
  ok = (std::fclose(f) == 0) && ok;
  return ok;
}

}  // namespace

extern "C" int sorvel_run_in_memory(int argc, char** argv, const char* err_path,
                                    const char* out_path) {
  FILE* err;
  FILE* out;
  if (!open_streams(err_path, out_path, err, out)) return -1;
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

// The same run, with its piano roll: when the run succeeds, the SVG text of
// the roll (drawn at `width` pixels; above `max_notes` notes, when that is
// not negative, as a density image) is written to svg_path, and the number
// of notes the roll holds to *notes.
extern "C" int sorvel_run_with_roll(int argc, char** argv, const char* err_path,
                                    const char* out_path, const char* svg_path, int width,
                                    int max_notes, int* notes) {
  FILE* err;
  FILE* out;
  if (!open_streams(err_path, out_path, err, out)) return -1;
  int status;
  bool drawn = true;
  {
    sorvel::Run run;
    run.screen = err;
    run.console = out;
    sorvel::RollOptions options;
    if (width >= 400 && width <= 100000) options.width = width;
    if (max_notes >= 0) options.max_notes = static_cast<size_t>(max_notes);
    sorvel::Roll roll;
    sorvel::RollSink sink(roll, options);
    status = sorvel::run_sorvel(run, argc, argv, {&sink});
    if (status == 0) drawn = write_roll(run, roll, options, svg_path);
    *notes = static_cast<int>(std::min<size_t>(roll.notes.size(), 0x7fffffff));
  }
  std::fclose(err);
  std::fclose(out);
  return drawn ? status : -2;
}
