// Fuzz target: one whole Sorvel run on the fuzzed bytes.
//
// The first byte chooses the options (-m -s -t -x -l) and the files around
// the run: whether a previous score is there, whether the output is named
// through a symbolic link, whether the file layer works the plain way (new
// files named from the start); a run beside a previous score is also drawn
// as a roll (a density image when the files work the plain way); the rest is
// the input file. A run without a previous score has the hints checker
// listening, and its findings are printed both ways. Runs happen in a
// private directory that also holds two include files, so
// "#include |inc1.sor|" (and the input including itself, or including one of
// the run's own files) reach real files. After every run the directory must
// hold nothing but what the run is allowed to leave, a failed run must have
// left the previous score as it was (or none), and the temporary directory must
// be empty: anything else is reported as a crash. The private directory is
// removed when the fuzzer exits.
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "driver/run_sorvel.h"
#include "hints/checker.h"
#include "hints/report.h"
#include "roll/collect.h"
#include "roll/roll.h"

namespace {

std::string g_dir;   // the private directory of the runs
std::string g_tmp;   // the runs' temporary directory, inside it: always empty
std::string g_home;  // the fuzzer's own working directory

const char* const kPrevious = "; the score of an earlier run\n";

void write_file(const char* name, const void* data, size_t size) {
  FILE* f = std::fopen(name, "wb");
  if (!f) std::abort();
  if (size) std::fwrite(data, 1, size, f);
  std::fclose(f);
}

// The whole of a file; false when it cannot be read.
bool read_file(const char* name, std::string& text) {
  FILE* f = std::fopen(name, "rb");
  if (!f) return false;
  text.clear();
  char buf[4096];
  size_t n;
  while ((n = std::fread(buf, 1, sizeof buf, f)) > 0) text.append(buf, n);
  std::fclose(f);
  return true;
}

bool exists(const char* name) {
  struct stat st;
  return lstat(name, &st) == 0;
}

void fail(const char* what) {
  std::fprintf(stderr, "%s\n", what);
  std::abort();
}

const char* const kInclude1 =
    "; an include file\n#define TWO(a'b) #$a $b#\n#const K 2.5\n"
    "te(90)\n";
const char* const kInclude2 = "#include |inc1.sor|\n> f1 0 16 10 1\n";

void remove_scratch() {
  std::error_code ec;
  std::filesystem::remove_all(g_dir, ec);
}

void setup() {
  char templ[] = "/tmp/sorvel-fuzz-XXXXXX";
  if (!mkdtemp(templ)) std::abort();
  g_dir = templ;
  g_tmp = g_dir + "/tmp";
  char* here = getcwd(nullptr, 0);
  if (!here) std::abort();
  g_home = here;
  std::free(here);
  if (chdir(templ) != 0 || mkdir("tmp", 0700) != 0) std::abort();
  write_file("inc1.sor", kInclude1, std::strlen(kInclude1));
  write_file("inc2.sor", kInclude2, std::strlen(kInclude2));
  if (symlink("out.sco", "link.sco") != 0) std::abort();
  if (chdir(g_home.c_str()) != 0) std::abort();
  std::atexit(remove_scratch);
}

// Files a run may leave in the directory.
bool allowed(const char* name) {
  static const char* const kNames[] = {".",      "..",      "inc1.sor", "inc2.sor", "in.sor",
                                       "out.sco", "run.log", "run.x",    "link.sco", "tmp"};
  for (const char* n : kNames)
    if (std::strcmp(name, n) == 0) return true;
  return false;
}

void check_directory(const char* path, bool empty) {
  DIR* d = opendir(path);
  if (!d) std::abort();
  while (dirent* e = readdir(d)) {
    const bool dots = std::strcmp(e->d_name, ".") == 0 || std::strcmp(e->d_name, "..") == 0;
    if (empty ? !dots : !allowed(e->d_name)) {
      std::fprintf(stderr, "left behind in %s: %s\n", path, e->d_name);
      std::abort();
    }
  }
  closedir(d);
}

// What a run leaves: the previous score after a failure, a score after a
// success; a log and an expansion file only when asked for.
void check_outputs(int status, bool previous, bool log, bool expansion) {
  std::string text;
  const bool out = read_file("out.sco", text);
  if (status != 0 && previous && (!out || text != kPrevious)) fail("a failed run changed the score");
  if (status != 0 && !previous && out) fail("a failed run left a score");
  if (status == 0 && !out) fail("a run that succeeded left no score");
  if (!log && exists("run.log")) fail("a log without -l");
  if (!expansion && exists("run.x")) fail("an expansion file without -x");
  if (!exists("link.sco")) fail("the link to the score is gone");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (g_dir.empty()) setup();
  // Runs happen inside the private directory, so include names resolve
  // there; the fuzzer's own paths are relative to its directory.
  if (chdir(g_dir.c_str()) != 0) std::abort();
  const uint8_t flags = size ? data[0] : 0;
  if (size) {
    ++data;
    --size;
  }
  write_file("in.sor", data, size);
  for (const char* name : {"out.sco", "run.log", "run.x"}) std::remove(name);
  const bool previous = flags & 32;
  if (previous) write_file("out.sco", kPrevious, std::strlen(kPrevious));

  std::vector<std::string> args{"sorvel"};
  if (flags & 1) args.push_back("-m");
  if (flags & 2) args.push_back("-s");
  if (flags & 4) args.push_back("-t");
  if (flags & 8) args.push_back("-xrun.x");
  if (flags & 16) args.push_back("-lrun.log");
  args.push_back("in.sor");
  args.push_back(flags & 128 ? "link.sco" : "out.sco");
  std::vector<char*> argv;
  for (std::string& a : args) argv.push_back(a.data());
  argv.push_back(nullptr);

  static FILE* sink = std::fopen("/dev/null", "w");
  sorvel::Run run;
  run.screen = sink;
  run.console = sink;
  run.tmp_dir = g_tmp;
  run.plain_files = flags & 64;
  run.MAX_EVENTS = 20000;  // keeps each run fast; the limit itself is what is tested
  // A run beside a previous score is drawn as a roll too; one that works
  // the plain way, as a density image.
  sorvel::Roll roll;
  sorvel::RollOptions roll_options;
  if (flags & 64) roll_options.max_notes = 16;
  sorvel::RollSink roll_sink(roll, roll_options);
  std::vector<sorvel::BlockSink*> sinks;
  if (previous) sinks.push_back(&roll_sink);
  sorvel::HintsChecker checker(run);
  if (!previous) run.observer = &checker;
  const int status = sorvel::run_sorvel(run, static_cast<int>(argv.size()) - 1, argv.data(), sinks);
  if (!previous) {
    const std::vector<sorvel::PlacedFinding> findings = checker.finish(status);
    if (status != 0 && findings.empty()) fail("a failed run without an error among the findings");
    if (sorvel::json_report(findings)[0] != '[') std::abort();
    if (sorvel::text_report(findings).empty() != findings.empty()) std::abort();
  }
  if (status == 0 && previous) {
    roll.beats = sorvel::beat_times(run, 600.0);
    if (sorvel::draw_roll(roll, roll_options).empty()) std::abort();
  }
  check_directory(".", false);
  check_directory("tmp", true);
  check_outputs(status, previous, flags & 16, flags & 8);
  if (chdir(g_home.c_str()) != 0) std::abort();
  return 0;
}
