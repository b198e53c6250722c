// Runs ended by a signal in the middle of a long input: the run ends with
// the signal's status, its temporary directory (TMPDIR) stays empty, the
// score of an earlier run stays as it was, and nothing else appears beside
// it: no log, no expansion file, no new file.
//
// The program itself is run for SIGINT, SIGTERM and SIGKILL; its new files
// have no name until they are put in place. A run forked from this process
// tries the plain way too (new files named from the start, removed when an
// interrupt or a termination signal comes), for SIGINT and SIGTERM: against
// SIGKILL the plain way has no defence.
#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "driver/run_sorvel.h"

namespace sorvel {
namespace {

namespace fs = std::filesystem;

// A hundred blocks of 200,000 events: many seconds of work.
std::string long_input() {
  std::string s;
  for (int i = 0; i < 100; ++i) s += "i1 = 4 0 -200000 {\np2 1\np3 1\np4 rw(T 1 [0 1] .5 .3)\n}\n";
  return s;
}

std::string make_dir(const char* what) {
  std::string templ = fs::temp_directory_path().string() + "/" + what + "-XXXXXX";
  std::vector<char> name(templ.begin(), templ.end());
  name.push_back('\0');
  if (!mkdtemp(name.data())) std::abort();
  return fs::canonical(name.data()).string();  // as the system names it in /proc
}

std::string read(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

// Whether process `pid` holds open a regular file of `dir` (named or not)
// with something written to it: the run is past its start and writing.
bool writing_in(pid_t pid, const std::string& dir) {
  const std::string fds = "/proc/" + std::to_string(pid) + "/fd";
  std::error_code ec;
  for (const auto& entry : fs::directory_iterator(fds, ec)) {
    std::error_code ec2;
    const fs::path target = fs::read_symlink(entry.path(), ec2);
    if (ec2 || target.string().rfind(dir + "/", 0) != 0) continue;
    struct stat st;
    if (stat(entry.path().c_str(), &st) == 0 && S_ISREG(st.st_mode) && st.st_size > 0 &&
        target.filename() != "in.sor")
      return true;
  }
  return false;
}

class Kills : public ::testing::Test {
 protected:
  std::string dir = make_dir("kills");
  std::string tmp = make_dir("kills-tmp");

  void SetUp() override {
    if (!fs::exists("/proc/self/fd")) GTEST_SKIP() << "no /proc: the run's files cannot be seen";
    std::ofstream(dir + "/in.sor", std::ios::binary) << long_input();
    std::ofstream(dir + "/out.sco", std::ios::binary) << "a previous score\n";
  }

  void TearDown() override {
    fs::remove_all(dir);
    fs::remove_all(tmp);
  }

  // Waits until `pid` writes its output, sends `sig`, and checks the end.
  void kill_and_check(pid_t pid, int sig) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!writing_in(pid, dir) && std::chrono::steady_clock::now() < deadline)
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    int status = 0;
    ASSERT_EQ(waitpid(pid, &status, WNOHANG), 0) << "the run ended before the signal";
    kill(pid, sig);
    ASSERT_EQ(waitpid(pid, &status, 0), pid);
    ASSERT_TRUE(WIFSIGNALED(status)) << "exit status " << WEXITSTATUS(status);
    EXPECT_EQ(WTERMSIG(status), sig);
    EXPECT_TRUE(fs::is_empty(tmp)) << "a temporary file was left behind";
    std::set<std::string> names;
    for (const auto& entry : fs::directory_iterator(dir)) names.insert(entry.path().filename().string());
    EXPECT_EQ(names, (std::set<std::string>{"in.sor", "out.sco"}));
    EXPECT_EQ(read(dir + "/out.sco"), "a previous score\n");
  }
};

TEST_F(Kills, TheProgramLeavesNothingBehind) {
  for (int sig : {SIGINT, SIGTERM, SIGKILL}) {
    SCOPED_TRACE(sig);
    const pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
      const int null = open("/dev/null", O_RDWR);
      if (null < 0 || chdir(dir.c_str()) != 0) _exit(126);
      dup2(null, 1);
      dup2(null, 2);
      setenv("TMPDIR", tmp.c_str(), 1);
      execl(SORVEL_PROGRAM, "sorvel", "-l", "run.log", "-x", "run.x", "in.sor", "out.sco",
            static_cast<char*>(nullptr));
      _exit(127);
    }
    kill_and_check(pid, sig);
  }
}

TEST_F(Kills, ThePlainWayRemovesItsNewFilesOnASignal) {
  for (int sig : {SIGINT, SIGTERM}) {
    SCOPED_TRACE(sig);
    const pid_t pid = fork();
    ASSERT_GE(pid, 0);
    if (pid == 0) {
      if (chdir(dir.c_str()) != 0) _exit(126);
      static FILE* sink = std::fopen("/dev/null", "w");
      sorvel::Run run;
      run.screen = run.console = sink;
      run.tmp_dir = tmp;
      run.plain_files = true;
      std::vector<std::string> args{"sorvel", "-l", "run.log", "-x", "run.x", "in.sor", "out.sco"};
      std::vector<char*> argv;
      for (auto& a : args) argv.push_back(a.data());
      argv.push_back(nullptr);
      _exit(run_sorvel(run, static_cast<int>(args.size()), argv.data()));
    }
    kill_and_check(pid, sig);
  }
}

}  // namespace
}  // namespace sorvel
