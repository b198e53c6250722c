// What a run does to the files around it, where a case cannot lay them out
// (tests/cases/driver holds the rest): a failed run leaves the previous
// output as it was (or none), links lead to the file they point to, special
// files are written directly, two names for one file are refused whether or
// not it exists, an include file may not be one of the run's own files.
// Every test runs twice: with files that have no name until they are put in
// place, and the plain way (named from the start), which is what systems
// without such files get.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "driver/run_sorvel.h"
#include "support/capture.h"
#include "support/scratch.h"

namespace sorvel {
namespace {

namespace fs = std::filesystem;

const std::string kBlock = "i1 = 5 0 4 {\np2 1\np3 1\np4 100\np5 60\n}\n";
const std::string kTypo = "i1 = 5 0 4 {\np2 1\np3 1\np4 1 x\np5 60\n}\n";
const std::string kDuplicate = "\nERROR: You can't use a filename multiple times!\n\n";

class Files : public ::testing::TestWithParam<bool> {
 protected:
  std::string dir = testing::make_dir("files-test");  // the run's working directory
  std::string tmp = testing::make_dir("files-tmp");   // its temporary directory
  const fs::path home = fs::current_path();

  struct Result {
    int status;
    std::string screen;
  };

  void TearDown() override {
    fs::current_path(home);
    EXPECT_TRUE(fs::is_empty(tmp)) << "a temporary file was left behind";
    for (const auto& entry : fs::recursive_directory_iterator(dir))
      EXPECT_EQ(entry.path().filename().string().find(".sorvel-"), std::string::npos)
          << "a new file was left behind: " << entry.path();
    fs::remove_all(dir);
    fs::remove_all(tmp);
  }

  // Runs sorvel with `args` in the test's directory.
  Result run(std::vector<std::string> args) {
    sorvel::Run r;
    r.tmp_dir = tmp;
    r.plain_files = GetParam();
    testing::Capture screen, console;
    r.screen = screen.f;
    r.console = console.f;
    std::vector<char*> argv;
    std::string program = "sorvel";
    argv.push_back(program.data());
    for (std::string& a : args) argv.push_back(a.data());
    argv.push_back(nullptr);
    fs::current_path(dir);
    const int status = run_sorvel(r, static_cast<int>(argv.size()) - 1, argv.data());
    fs::current_path(home);
    return {status, screen.text()};
  }

  std::string path(const std::string& name) const { return dir + "/" + name; }

  void write(const std::string& name, const std::string& text) const {
    testing::write_file(path(name), text);
  }
  std::optional<std::string> read(const std::string& name) const {
    return testing::read_file(path(name));
  }

  unsigned mode_of(const std::string& name) const {
    struct stat st;
    if (stat(path(name).c_str(), &st) != 0) return 0;
    return st.st_mode & 07777;
  }

  std::set<std::string> names() const {
    std::set<std::string> out;
    for (const auto& entry : fs::directory_iterator(dir)) out.insert(entry.path().filename().string());
    return out;
  }
};

INSTANTIATE_TEST_SUITE_P(Both, Files, ::testing::Values(false, true),
                         [](const auto& info) { return info.param ? "Plain" : "Unnamed"; });

TEST_P(Files, AFailedRunLeavesThePreviousOutputAsItWas) {
  write("in.sor", kTypo);
  write("out.sco", "a previous score\n");
  chmod(path("out.sco").c_str(), 0640);
  for (const char* option : {"-s", "-m"}) {
    const Result r = run({option, "in.sor", "out.sco"});
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(read("out.sco"), "a previous score\n");
    EXPECT_EQ(mode_of("out.sco"), 0640u);
  }
  // Without a previous file, none appears.
  EXPECT_EQ(run({"-s", "in.sor", "new.sco"}).status, 1);
  EXPECT_EQ(run({"-s", "-m", "in.sor", "new.mid"}).status, 1);
  EXPECT_EQ(names(), (std::set<std::string>{"in.sor", "out.sco"}));

  // A good run replaces it and keeps its permissions.
  write("in.sor", kBlock);
  EXPECT_EQ(run({"-s", "in.sor", "out.sco"}).status, 0);
  EXPECT_EQ(read("out.sco")->substr(0, 18), "\n;I-block #1 (i1):");
  EXPECT_EQ(mode_of("out.sco"), 0640u);
}

TEST_P(Files, TheLogAndTheExpansionFileArePutInPlaceWhateverTheOutcome) {
  write("in.sor", kTypo);
  write("run.log", "an old log\n");
  write("run.x", "an old expansion\n");
  const Result r = run({"-l", "run.log", "-x", "run.x", "in.sor", "out.sco"});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(read("run.log"), r.screen);
  EXPECT_EQ(read("run.x"), "i1 = 5 0 4 { \np2 1 \np3 1 \np4 1 x \n");
  EXPECT_FALSE(fs::exists(path("out.sco")));
}

TEST_P(Files, ASymbolicLinkLeadsToTheFileItPointsTo) {
  fs::create_directory(path("scores"));
  write("scores/real.sco", "the real score\n");
  fs::create_symlink("scores/real.sco", path("link.sco"));
  fs::create_symlink("scores/new.sco", path("dangling.sco"));

  write("in.sor", kTypo);
  EXPECT_EQ(run({"-s", "in.sor", "link.sco"}).status, 1);
  EXPECT_EQ(read("scores/real.sco"), "the real score\n");
  EXPECT_EQ(run({"-s", "in.sor", "dangling.sco"}).status, 1);
  EXPECT_FALSE(fs::exists(path("scores/new.sco")));

  write("in.sor", kBlock);
  EXPECT_EQ(run({"-s", "in.sor", "link.sco"}).status, 0);
  EXPECT_TRUE(fs::is_symlink(path("link.sco")));
  EXPECT_EQ(read("scores/real.sco")->substr(0, 18), "\n;I-block #1 (i1):");
  EXPECT_EQ(run({"-s", "in.sor", "dangling.sco"}).status, 0);
  EXPECT_TRUE(fs::is_symlink(path("dangling.sco")));
  EXPECT_EQ(read("scores/new.sco"), read("scores/real.sco"));
}

TEST_P(Files, SpecialFilesAreWrittenDirectly) {
  write("in.sor", kBlock);
  EXPECT_EQ(run({"in.sor", "/dev/null"}).status, 0);
  EXPECT_EQ(run({"-m", "in.sor", "/dev/null"}).status, 0);
  EXPECT_EQ(run({"-l", "/dev/null", "-x", "/dev/zero", "in.sor", "out.sco"}).status, 0);
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
  EXPECT_TRUE(fs::is_character_file("/dev/zero"));
  EXPECT_EQ(names(), (std::set<std::string>{"in.sor", "out.sco"}));
  // A directory cannot be written, as before.
  fs::create_directory(path("folder"));
  EXPECT_EQ(run({"in.sor", "folder"}).screen, "\nERROR: Can't open \"folder\".\n\n");
}

TEST_P(Files, TwoNamesForOneFileAreRefusedWhetherOrNotItExists) {
  write("a.sor", kBlock);
  fs::create_directory(path("sub"));
  fs::create_symlink("o.sco", path("link.sco"));  // dangling: writing it makes o.sco
  ASSERT_EQ(link(path("a.sor").c_str(), path("hard.sor").c_str()), 0);
  fs::create_symlink("a.sor", path("soft.sor"));
  const std::string up = "../" + fs::path(dir).filename().string() + "/a.sor";
  const std::vector<std::vector<std::string>> lines = {
      {"-l", "./o.sco", "a.sor", "o.sco"},
      {"-x", "o.sco", "a.sor", "sub/../o.sco"},
      {"-l", "run.log", "-x", "./run.log", "a.sor", "o.sco"},
      {"-l", "link.sco", "a.sor", "o.sco"},
      {"x", "./x"},  // an input that does not exist either
      // Names of the existing input: a path through "..", a hard link, a symbolic link.
      {"-l", up, "a.sor", "o.sco"},
      {"hard.sor", "a.sor"},
      {"-x", "soft.sor", "a.sor", "o.sco"},
  };
  for (const auto& args : lines) {
    const Result r = run(args);
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.screen, kDuplicate);
  }
  EXPECT_EQ(read("a.sor"), kBlock);
  // Names alike but for their directory are two files.
  EXPECT_EQ(run({"-s", "-l", "sub/o.sco", "a.sor", "o.sco"}).status, 0);
  EXPECT_EQ(names(),
            (std::set<std::string>{"a.sor", "hard.sor", "soft.sor", "sub", "link.sco", "o.sco"}));
}

TEST_P(Files, AnIncludeFileThatIsOneOfTheRunsOwnFilesIsRefused) {
  write("defs.sor", "; definitions\n");
  fs::create_symlink("defs.sor", path("alias.sor"));
  const std::vector<std::pair<std::string, std::vector<std::string>>> lines = {
      {"defs.sor", {"in.sor", "defs.sor"}},
      {"alias.sor", {"in.sor", "defs.sor"}},
      {"defs.sor", {"-m", "in.sor", "alias.sor"}},
      {"defs.sor", {"-x", "defs.sor", "in.sor", "out.sco"}},
      {"./defs.sor", {"-l", "defs.sor", "in.sor", "out.sco"}},
  };
  for (const auto& [include, args] : lines) {
    write("defs.sor", "; definitions\n");
    write("in.sor", "#include |" + include + "|\n" + kBlock);
    const Result r = run(args);
    EXPECT_EQ(r.status, 1);
    const std::string message = "\nBad include file name: \"" + include + "\"\n\n";
    ASSERT_GE(r.screen.size(), message.size());
    EXPECT_EQ(r.screen.substr(r.screen.size() - message.size()), message) << include;
    if (args[0][0] != '-' || args[0] == "-m") {
      EXPECT_EQ(read("defs.sor"), "; definitions\n");
    }
  }
  EXPECT_FALSE(fs::exists(path("out.sco")));
}

TEST_P(Files, TheTemporaryFileGoesWhereTmpdirSays) {
  write("in.sor", kBlock);
  const char* saved = std::getenv("TMPDIR");
  const std::string keep = saved ? saved : "";
  sorvel::Run r;  // tmp_dir left empty: TMPDIR decides
  setenv("TMPDIR", path("nowhere").c_str(), 1);
  testing::Capture screen, console;
  r.screen = screen.f;
  r.console = console.f;
  r.plain_files = GetParam();
  std::string a0 = "sorvel", a1 = path("in.sor"), a2 = path("out.sco");
  char* argv[] = {a0.data(), a1.data(), a2.data(), nullptr};
  EXPECT_EQ(run_sorvel(r, 3, argv), 1);
  EXPECT_EQ(screen.text(), "\nERROR: Can't open temporary file\n\n");
  if (saved)
    setenv("TMPDIR", keep.c_str(), 1);
  else
    unsetenv("TMPDIR");
  EXPECT_FALSE(fs::exists(path("out.sco")));
}

// Permissions, tried as an ordinary user (a child of this test that gives up
// root; skipped when the test does not run as root). A score that can be
// written in a directory that takes no new files is written where it is, as
// it always was; a score that cannot be written is "Can't open", and stays.
TEST(FilesAsAUser, ADirectoryThatTakesNoNewFilesAndAScoreThatCannotBeWritten) {
  if (geteuid() != 0) GTEST_SKIP() << "needs root to become another user";
  const uid_t nobody = 65534;
  const std::string dir = testing::make_dir("files-user"), tmp = testing::make_dir("files-user-tmp");
  ASSERT_EQ(chmod(dir.c_str(), 0755), 0);
  ASSERT_EQ(chown(tmp.c_str(), nobody, nobody), 0);
  std::ofstream(dir + "/in.sor") << kBlock;
  std::ofstream(dir + "/open.sco") << "a score the user may write\n";
  std::ofstream(dir + "/shut.sco") << "a score the user may not write\n";
  ASSERT_EQ(chown((dir + "/open.sco").c_str(), nobody, nobody), 0);
  ASSERT_EQ(chmod((dir + "/shut.sco").c_str(), 0644), 0);

  auto run_as_nobody = [&](const char* out) {
    const pid_t pid = fork();
    if (pid == 0) {
      static FILE* sink = std::fopen("/dev/null", "w");
      if (setgid(nobody) != 0 || setuid(nobody) != 0 || chdir(dir.c_str()) != 0) _exit(126);
      sorvel::Run r;
      r.screen = r.console = sink;
      r.tmp_dir = tmp;
      std::string a0 = "sorvel", a1 = "-s", a2 = "in.sor", a3 = out;
      char* argv[] = {a0.data(), a1.data(), a2.data(), a3.data(), nullptr};
      _exit(run_sorvel(r, 4, argv));
    }
    int status = -1;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  };
  EXPECT_EQ(run_as_nobody("open.sco"), 0);
  std::ifstream in(dir + "/open.sco");
  std::string first;
  std::getline(in, first);
  std::getline(in, first);
  EXPECT_EQ(first, ";I-block #1 (i1):");
  EXPECT_EQ(run_as_nobody("shut.sco"), 1);
  std::ifstream shut(dir + "/shut.sco");
  std::getline(shut, first);
  EXPECT_EQ(first, "a score the user may not write");
  EXPECT_EQ(run_as_nobody("new.sco"), 1);  // a new file cannot be made
  EXPECT_FALSE(fs::exists(dir + "/new.sco"));
  EXPECT_TRUE(fs::is_empty(tmp));
  fs::remove_all(dir);
  fs::remove_all(tmp);
}

}  // namespace
}  // namespace sorvel
