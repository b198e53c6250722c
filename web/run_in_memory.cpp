// The browser entry's calls into the core: a whole run of Sorvel, made by
// the same driver as the command line, with the two output streams written
// to files (of the in-memory file system) for the page to read back. The run
// state lives in each call's Run object, so the loaded module can make any
// number of runs, each as a fresh process would.
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "base/run_state.h"
#include "driver/run_sorvel.h"
#include "hints/checker.h"
#include "hints/report.h"
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

// The hints checker, keeping besides where each stretch of the run's lines
// comes from, so that the page can lead from an include file back to the
// "#include" that brought it in.
class PageChecker : public sorvel::HintsChecker {
 public:
  using HintsChecker::HintsChecker;
  void file_lines(int run_line, const char* file, int file_line) override {
    starts.push_back({run_line, file ? file : "", file_line});
    HintsChecker::file_lines(run_line, file, file_line);
  }

  struct Start {
    int run_line;
    std::string file;
    int file_line;
  };
  std::vector<Start> starts;
};

// {"findings": [as sorvel-hints --json], "lines": [[run line, file, file line], ...]}
bool write_hints(const std::vector<sorvel::PlacedFinding>& findings,
                 const std::vector<PageChecker::Start>& starts, const char* path) {
  std::string json = "{\"findings\": " + sorvel::json_report(findings) + ", \"lines\": [";
  for (size_t i = 0; i < starts.size(); ++i) {
    if (i) json += ", ";
    json += "[" + std::to_string(starts[i].run_line) + ", " + sorvel::json_string(starts[i].file) +
            ", " + std::to_string(starts[i].file_line) + "]";
  }
  json += "]}\n";
  FILE* f = std::fopen(path, "wb");
  if (!f) return false;
  bool ok = std::fwrite(json.data(), 1, json.size(), f) == json.size();
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

// The same run, watched: with `svg_path`, when the run succeeds, the SVG
// text of its piano roll (drawn at `width` pixels; above `max_notes` notes,
// when that is not negative, as a density image) is written there, and the
// number of notes the roll holds to *notes; with `hints_path`, the hints
// checker watches the run and its findings are written there (see
// write_hints), whatever the outcome.
extern "C" int sorvel_run_watched(int argc, char** argv, const char* err_path,
                                  const char* out_path, const char* svg_path,
                                  const char* hints_path, int width, int max_notes, int* notes) {
  // The checker reads the run's messages back: the messages' file is read
  // as well as written.
  FILE* err = std::fopen(err_path, "w+b");
  FILE* out = err ? std::fopen(out_path, "wb") : nullptr;
  if (!out) {
    if (err) std::fclose(err);
    return -1;
  }
  int status;
  bool written = true;
  {
    sorvel::Run run;
    run.screen = err;
    run.console = out;
    sorvel::RollOptions options;
    if (width >= 400 && width <= 100000) options.width = width;
    if (max_notes >= 0) options.max_notes = static_cast<size_t>(max_notes);
    sorvel::Roll roll;
    sorvel::RollSink sink(roll, options);
    PageChecker checker(run);
    if (hints_path) {
      checker.capture(err);
      run.observer = &checker;
    }
    std::vector<sorvel::BlockSink*> sinks;
    if (svg_path) sinks.push_back(&sink);
    status = sorvel::run_sorvel(run, argc, argv, sinks);
    if (svg_path && status == 0) written = write_roll(run, roll, options, svg_path);
    *notes = static_cast<int>(std::min<size_t>(roll.notes.size(), 0x7fffffff));
    if (hints_path) written = write_hints(checker.finish(status), checker.starts, hints_path) && written;
  }
  std::fclose(err);
  std::fclose(out);
  return written ? status : -2;
}
