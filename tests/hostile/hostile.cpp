// Hostile inputs: bytes a text editor never writes, lines far past the line
// buffer, things left open at the end of the input, nesting and repetition
// without end, numbers past every limit. Each must end with its numbered
// error (or run to completion where the language allows it), leave no
// temporary file and stay inside its time limit (CTest's timeout).
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "driver/run.h"
#include "support/capture.h"

namespace sorvel {
namespace {

namespace fs = std::filesystem;

std::string make_dir(const char* what) {
  std::string templ = fs::temp_directory_path().string() + "/" + what + "-XXXXXX";
  std::vector<char> name(templ.begin(), templ.end());
  name.push_back('\0');
  if (!mkdtemp(name.data())) std::abort();
  return name.data();
}

std::string repeat(const std::string& s, size_t n) {
  std::string out;
  out.reserve(s.size() * n);
  for (size_t i = 0; i < n; ++i) out += s;
  return out;
}

class Hostile : public ::testing::Test {
 protected:
  std::string dir = make_dir("hostile");
  std::string tmp = make_dir("hostile-tmp");
  std::string screen;
  int status = -1;

  void TearDown() override {
    EXPECT_TRUE(fs::is_empty(tmp)) << "a temporary file was left behind";
    fs::remove_all(dir);
    fs::remove_all(tmp);
  }

  void write(const std::string& name, const std::string& text) {
    std::ofstream(dir + "/" + name, std::ios::binary) << text;
  }

  // Runs "sorvel -s in.sor out.sco" in the test's directory on `input`.
  void run(const std::string& input, size_t max_events = 100000) {
    write("in.sor", input);
    testing::Capture err, out;
    sorvel::Run r;
    r.screen = err.f;
    r.console = out.f;
    r.tmp_dir = tmp;
    r.MAX_EVENTS = max_events;
    std::vector<std::string> args{"sorvel", "-s", "in.sor", "out.sco"};
    std::vector<char*> argv;
    for (auto& a : args) argv.push_back(a.data());
    const fs::path home = fs::current_path();
    fs::current_path(dir);
    status = run_sorvel(r, static_cast<int>(argv.size()), argv.data());
    fs::current_path(home);
    screen = err.text();
  }

  // The last message of the run, from its "ERROR" on.
  std::string error() const {
    size_t at = screen.rfind("ERROR");
    return at == std::string::npos ? "" : screen.substr(at);
  }
};

TEST_F(Hostile, NulBytesEndALineAndFfBytesAreBlanks) {
  static const char kText[] = "i1 = 3 0 4 {\n p2 1\0 hidden garbage }\n\xff\xff p3 1 }\n";
  run(std::string(kText, sizeof kText - 1));
  EXPECT_EQ(status, 0) << screen;
  EXPECT_NE(screen.find("4 events generated in block #1 (i1)."), std::string::npos) << screen;
}

TEST_F(Hostile, AnOverlongCommentLineGoesOnAsText) {
  // The line buffer holds 2047 characters: what follows is a new line.
  run(";" + repeat("x", 5000) + "\n");
  EXPECT_EQ(status, 1);
  const std::string line2 = repeat("x", 2047);
  EXPECT_EQ(error(), "ERROR: Line 2: Invalid G-block command or character.\n" + line2 + "\n^\n");
}

TEST_F(Hostile, AnOverlongDataLineReadsInPieces) {
  run("i1 = 3 0 -3000 {\n p2 " + repeat("1 ", 3000) + "\n p3 1 }\n");
  EXPECT_EQ(status, 0) << error();
  EXPECT_NE(screen.find("3000 events generated"), std::string::npos);
}

TEST_F(Hostile, ThingsLeftOpenAtTheEnd) {
  run("/* a comment never closed\n\n");
  EXPECT_EQ(error(), "ERROR: Comments seemed to be mismatched... reached EOF.\n\n");
  run("i1 = 3 0 4 {\n p2 1\n");
  EXPECT_EQ(error(), "ERROR: Reached end-of-file before \"}\" was found.\n\n");
  run("i1 = 3 0 4 { p2 1 /* open\n");
  EXPECT_EQ(status, 1);
  EXPECT_EQ(error().substr(0, 51), "ERROR: Line 1: Reached EOF! (missing comment \"*/\"?)");
  run("i1 = 3 0 4 {");
  EXPECT_EQ(status, 0);
}

TEST_F(Hostile, DeeplyNestedComments) {
  const std::string open = repeat(repeat("/*", 1000) + "\n", 200);
  const std::string close = repeat(repeat("*/", 1000) + "\n", 200);
  run(open + close + "i1 = 3 0 1 { p2 1 p3 1 }\n");
  EXPECT_EQ(status, 0) << error();
  EXPECT_NE(screen.find("1 events generated"), std::string::npos);
}

TEST_F(Hostile, NumbersPastTheirLimits) {
  run("i99999 = 3 0 4 { p2 1 }\n");
  EXPECT_EQ(error().substr(0, 28), "ERROR: Line 1: Bad i-number.");
  run("i1 = 99999 0 4 { p2 1 }\n");
  EXPECT_EQ(error().substr(0, 40), "ERROR: Line 1: Bad number of parameters?");
  run("i1 = 3 0 4 { p99999 1 }\n");
  EXPECT_EQ(error().substr(0, 34), "ERROR: Line 1: Bad p-field number.");
  run("i1 = 3 0 4 { p2 1 x99999999999999999999 p3 1 }\n");
  EXPECT_EQ(status, 0) << error();
  run("rs(65536)\n");
  EXPECT_EQ(error().substr(0, 58),
            "ERROR: Line 1: Format RS(ui): ui = UNSIGNED INT (0-65535).");
  // Forty decimals wrap the scanner's divisor to zero: 1 / 0 is an infinite
  // rhythm, which fills the block at once.
  run("i1 = 3 0 4 { p2 0." + repeat("0", 40) + "1 p3 1 }\n");
  EXPECT_EQ(status, 0) << error();
}

TEST_F(Hostile, EventCountsInTheBillionsStopAtTheEventLimit) {
  const std::string memory = "ERROR: Line 1: Yikes, out of memory!";
  run("i1 = 3 0 -4000000000 { p2 1 }\n", 1000);
  EXPECT_EQ(error().substr(0, memory.size()), memory);
  // Rests move the beat backwards, so a block measured in beats never fills.
  run("i1 = 3 0 4 { p2 1 -2 }\n", 1000);
  EXPECT_EQ(error().substr(0, memory.size()), memory);
  run("i1 = 3 0 4 { p2 -1 x4000000000 }\n", 1000);
  EXPECT_EQ(error().substr(0, memory.size()), memory);
  // A rhythm that is not a number never reaches the end either.
  run("i1 = 3 0 4 { p2 0." + repeat("0", 40) + " }\n", 1000);
  EXPECT_EQ(error().substr(0, memory.size()), memory);
}

TEST_F(Hostile, TooManyPfields) {
  run("i1 = 129 0 4 { p2 1 }\n");
  EXPECT_EQ(screen.substr(screen.find("\n\nERROR")),
            "\n\nERROR: Bad number of p-fields (3 - 128)\ni1 = 129 0 4 { p2 1 } \n"
            "        ^\n");
}

}  // namespace
}  // namespace sorvel
