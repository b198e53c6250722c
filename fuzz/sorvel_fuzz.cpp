// Fuzz target: one whole Sorvel run on the fuzzed bytes.
//
// The first byte chooses the options (-m -s -t -x -l) and whether the run is
// also drawn as a roll; the rest is the input file. Runs happen in a private directory that also holds two include files,
// so "#include |inc1.sor|" (and the input including itself) reach real files.
// After every run the directory must hold nothing but what the run is allowed
// to leave: a leftover temporary file is reported as a crash.
#include <dirent.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "driver/run.h"
#include "roll/collect.h"
#include "roll/roll.h"

namespace {

std::string g_dir;   // the private directory of the runs
std::string g_home;  // the fuzzer's own working directory

void write_file(const char* name, const void* data, size_t size) {
  FILE* f = std::fopen(name, "wb");
  if (!f) std::abort();
  if (size) std::fwrite(data, 1, size, f);
  std::fclose(f);
}

const char* const kInclude1 =
    "; an include file\n#define TWO(a'b) #$a $b#\n#const K 2.5\n"
    "te(90)\n";
const char* const kInclude2 = "#include |inc1.sor|\n> f1 0 16 10 1\n";

void setup() {
  char templ[] = "/tmp/sorvel-fuzz-XXXXXX";
  if (!mkdtemp(templ)) std::abort();
  g_dir = templ;
  char* here = getcwd(nullptr, 0);
  if (!here) std::abort();
  g_home = here;
  std::free(here);
  if (chdir(templ) != 0) std::abort();
  write_file("inc1.sor", kInclude1, std::strlen(kInclude1));
  write_file("inc2.sor", kInclude2, std::strlen(kInclude2));
  if (chdir(g_home.c_str()) != 0) std::abort();
}

// Files a run may leave in the directory.
bool allowed(const char* name) {
  static const char* const kNames[] = {".",       "..",      "inc1.sor", "inc2.sor",
                                       "in.sor",  "out.sco", "run.log",  "run.x"};
  for (const char* n : kNames)
    if (std::strcmp(name, n) == 0) return true;
  return false;
}

void check_directory() {
  DIR* d = opendir(".");
  if (!d) std::abort();
  while (dirent* e = readdir(d)) {
    if (!allowed(e->d_name)) {
      std::fprintf(stderr, "left behind: %s\n", e->d_name);
      std::abort();
    }
  }
  closedir(d);
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

  std::vector<std::string> args{"sorvel"};
  if (flags & 1) args.push_back("-m");
  if (flags & 2) args.push_back("-s");
  if (flags & 4) args.push_back("-t");
  if (flags & 8) args.push_back("-xrun.x");
  if (flags & 16) args.push_back("-lrun.log");
  args.push_back("in.sor");
  args.push_back("out.sco");
  std::vector<char*> argv;
  for (std::string& a : args) argv.push_back(a.data());
  argv.push_back(nullptr);

  static FILE* sink = std::fopen("/dev/null", "w");
  sorvel::Run run;
  run.screen = sink;
  run.console = sink;
  run.tmp_dir = g_dir;
  run.MAX_EVENTS = 20000;  // keeps each run fast; the limit itself is what is tested
  // Bit 32 draws the run's roll too; bit 64 makes it a density image.
  sorvel::Roll roll;
  sorvel::RollOptions roll_options;
  if (flags & 64) roll_options.max_notes = 16;
  sorvel::RollSink roll_sink(roll, roll_options);
  std::vector<sorvel::BlockSink*> sinks;
  if (flags & 32) sinks.push_back(&roll_sink);
  const int status = sorvel::run_sorvel(run, static_cast<int>(argv.size()) - 1, argv.data(), sinks);
  if (status == 0 && (flags & 32)) {
    roll.beats = sorvel::beat_times(run, 600.0);
    if (sorvel::draw_roll(roll, roll_options).empty()) std::abort();
  }
  check_directory();
  if (chdir(g_home.c_str()) != 0) std::abort();
  return 0;
}
