// Whole runs in-process: the command line, the file checks and opening order,
// and that no temporary file outlives a run (each test checks its own
// temporary directory at the end).
#include "driver/run_sorvel.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "support/capture.h"
#include "support/scratch.h"

namespace sorvel {
namespace {

namespace fs = std::filesystem;

const std::string kBannerLine = "\nSorvel (1.0.0, Nov 21 2026, 12:00:00)\n";

const std::string kUsage = kBannerLine +
                           "A score generator for Csound and Standard MIDI Files\n"
                           "Written by the Sorvel developers\n"
                           "Report problems through the project's issue tracker\n"
                           "\n"
                           "  Usage: sorvel [options] infile outfile\n"
                           "  Options:\n"
                           "  -l <logfile>  screen ouput (text)\n"
                           "  -m            outfile is a MIDI file (format 1)\n"
                           "  -s            suppress non-error messages\n"
                           "  -t            verbose tempo information\n"
                           "  -x <expfile>  macro expansions (text)\n\n";

const std::string kNoData = "\n\n\t(N.B. No I-Block Data Written)";
const std::string kNoTime = "\n\nGlobal cumulative duration of all i-blocks =    0.00 (secs)\n";
const std::string kDuplicate = "\nERROR: You can't use a filename multiple times!\n\n";

// The banner and file summary of a run.
std::string info(const std::string& in, const std::string& out, const char* log = nullptr,
                 const char* exp = nullptr, bool midi = false) {
  std::string s = kBannerLine +
                  "A score generator for Csound and Standard MIDI Files\n"
                  "Written by the Sorvel developers\n"
                  "Free software: use it, study it, share it\n"
                  "Report problems through the project's issue tracker\n"
                  "\n\nInput\t= \"" + in + "\"\nOutput\t= \"" + out + "\" " +
                  (midi ? "[MIDI file (type 1)]\n" : "[Csound score-file]\n");
  if (log) s += std::string("Log \t= \"") + log + "\"\n";
  if (exp) s += std::string("MExp\t= \"") + exp + "\"\n";
  return s;
}

class Driver : public ::testing::Test {
 protected:
  std::string dir = testing::make_dir("driver-test");  // the test's own files
  std::string tmp = testing::make_dir("driver-test");  // the run's temporary directory

  struct Result {
    int status;
    std::string screen, console;
  };

  void TearDown() override {
    EXPECT_TRUE(fs::is_empty(tmp)) << "a temporary file was left behind";
    fs::remove_all(dir);
    fs::remove_all(tmp);
  }

  Result run(std::vector<std::string> args, const std::string& tmp_dir = "") {
    sorvel::Run r;
    r.tmp_dir = tmp_dir.empty() ? tmp : tmp_dir;
    testing::Capture screen, console;
    r.screen = screen.f;
    r.console = console.f;
    std::vector<char*> argv;
    std::string program = "sorvel";
    argv.push_back(program.data());
    for (std::string& a : args) argv.push_back(a.data());
    argv.push_back(nullptr);
    int status = run_sorvel(r, static_cast<int>(argv.size()) - 1, argv.data());
    return {status, screen.text(), console.text()};
  }

  std::string path(const std::string& name) const { return dir + "/" + name; }

  void write(const std::string& name, const std::string& text) const {
    testing::write_file(path(name), text);
  }
  std::optional<std::string> read(const std::string& name) const {
    return testing::read_file(path(name));
  }

  // A failure that prints `screen` and must leave `out` unwritten.
  void expect_refused(std::vector<std::string> args, const std::string& screen,
                      const std::string& console = "") {
    Result r = run(args);
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.screen, screen);
    EXPECT_EQ(r.console, console);
    EXPECT_FALSE(fs::exists(path("out.sco")));
  }
};

TEST_F(Driver, CommandLinesThatPrintTheUsage) {
  write("a.sor", "");
  const std::string in = path("a.sor"), out = path("out.sco");
  const std::vector<std::vector<std::string>> lines = {
      {},
      {"-a", in, out},  {"-L", in, out},      {"-", in, out},  // unknown options
      {in},             {in, out, path("b")}, {in, out, "-s"},  // not exactly two names last
      {"-s", "-t"},
  };
  for (const auto& args : lines) expect_refused(args, kUsage);

  const std::string no_log = "\nError: No logfile name\n\n";
  const std::string no_exp = "\nError: No macro-expansion file name\n\n";
  expect_refused({"-l"}, "", no_log);
  expect_refused({"-x"}, "", no_exp);
  expect_refused({"-x", "-s", in, out}, "", no_exp);
}

TEST_F(Driver, OptionLettersAndJoinedNames) {
  // "-mx" is "-m": a MIDI file, and no expansion file name is looked for.
  write("a.sor", "; one line\n");
  Result r = run({"-mx", path("a.sor"), path("out.mid")});
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.screen,
            info(path("a.sor"), path("out.mid"), nullptr, nullptr, true) + kNoData + kNoTime + "\n");
  EXPECT_EQ(read("out.mid"), "");  // nothing written, and no score end

  // A log name joined to its option; the last newline comes after the log
  // is closed: screen only.
  const std::string log = path("run.log");
  const std::string expected = info(path("a.sor"), path("out.sco"), log.c_str()) + kNoData + kNoTime;
  r = run({"-l" + log, path("a.sor"), path("out.sco")});
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.screen, expected + "\n");
  EXPECT_EQ(read("run.log"), expected);
  EXPECT_EQ(read("out.sco"), "\ne\n");
}

TEST_F(Driver, OneFileForTwoPurposesIsRefusedBeforeAnythingIsOpened) {
  const std::string in = path("a.sor"), out = path("out.sco"), other = path("b.txt");
  write("a.sor", "; keep me\n");
  ASSERT_EQ(link(in.c_str(), path("hard.sor").c_str()), 0);
  fs::create_symlink(in, path("soft.sor"));
  const std::vector<std::vector<std::string>> lines = {
      {"-l", in, in, out},
      {"-l" + out, in, out},
      {"-x", in, in, out},
      {"-x", out, in, out},
      {"-l", other, "-x", other, in, out},
      // Two names of one existing file.
      {in, dir + "/./a.sor"},
      {"-l", dir + "/../" + fs::path(dir).filename().string() + "/a.sor", in, out},
      {path("hard.sor"), in},
      {"-x", path("soft.sor"), in, out},
  };
  for (const auto& args : lines) expect_refused(args, kDuplicate);
  EXPECT_FALSE(fs::exists(other));
  EXPECT_EQ(read("a.sor"), "; keep me\n");
}

TEST_F(Driver, FilesThatCannotBeOpened) {
  write("a.sor", "");
  const std::string in = path("a.sor"), out = path("out.sco");
  const std::string nowhere = path("no/such/dir");
  expect_refused({in, nowhere + ".sco"}, "\nERROR: Can't open \"" + nowhere + ".sco\".\n\n");
  // Later opens fail after the output was made ready: the failed run puts
  // no output in place, and nothing else may stay behind.
  for (const char* opt : {"-x", "-l"}) {
    Result r = run({opt, nowhere + ".f", in, out});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.screen, "\nERROR: Can't open \"" + nowhere + ".f\".\n\n");
  }
  Result r = run({in, out}, path("missing-dir"));
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.screen, "\nERROR: Can't open temporary file\n\n");
  EXPECT_FALSE(fs::exists(out));
}

TEST_F(Driver, ADirectoryAsInputReadsAsEmpty) {
  fs::create_directory(path("folder"));
  Result r = run({path("folder"), path("out.sco")});
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.screen, info(path("folder"), path("out.sco")) + kNoData + kNoTime + "\n");
  EXPECT_EQ(read("out.sco"), "\ne\n");
}

}  // namespace
}  // namespace sorvel
