// seam_check: the observer seam changes nothing a run produces. Every
// end-to-end case under CASES is run twice in this process, in two fresh
// directories filled alike: once as sorvel runs it, once with the hints
// checker listening (as sorvel-hints listens). The exit status, the screen,
// the standard output stream and every file left in the directory must be
// the same bytes.
//
//   seam_check CASES
//
// Exit status: 0 when every case agrees, 1 when one differs, 2 when the
// cases cannot be read.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "driver/run_sorvel.h"
#include "hints/checker.h"
#include "support/fenced.h"
#include "support/scratch.h"

namespace fs = std::filesystem;
using sorvel::testing::Block;
using sorvel::testing::read_blocks;
using sorvel::testing::read_file;
using sorvel::testing::read_stream;

namespace {

struct Outcome {
  int status = 0;
  std::string screen, console;
  std::map<std::string, std::string> files;
};

void write(const fs::path& path, const std::string& text) {
  FILE* f = std::fopen(path.c_str(), "wb");
  if (!f) return;
  std::fwrite(text.data(), 1, text.size(), f);
  std::fclose(f);
}

// Runs sorvel with `args` in `dir`, with the checker listening or not.
Outcome run_in(const fs::path& dir, std::vector<std::string> args, bool listen) {
  Outcome o;
  const fs::path back = fs::current_path();
  fs::current_path(dir);
  FILE* screen = std::tmpfile();
  FILE* console = std::tmpfile();
  {
    sorvel::Run run;
    run.screen = screen;
    run.console = console;
    sorvel::HintsChecker checker(run);
    if (listen) {
      checker.capture(screen);
      run.observer = &checker;
    }
    std::vector<char*> argv;
    std::string program = "sorvel";
    argv.push_back(program.data());
    for (std::string& a : args) argv.push_back(a.data());
    o.status = sorvel::run_sorvel(run, static_cast<int>(argv.size()), argv.data());
    if (listen) checker.finish(o.status);
  }
  o.screen = read_stream(screen);
  o.console = read_stream(console);
  std::fclose(screen);
  std::fclose(console);
  fs::current_path(back);
  for (const auto& entry : fs::directory_iterator(dir))
    if (entry.is_regular_file())
      o.files[entry.path().filename().string()] = read_file(entry.path()).value_or("?");
  return o;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: seam_check CASES\n");
    return 2;
  }
  const fs::path cases = fs::absolute(argv[1]);
  const char* tmp = std::getenv("TMPDIR");
  std::string templ = std::string(tmp && *tmp ? tmp : "/tmp") + "/seam-XXXXXX";
  if (!mkdtemp(templ.data())) return 2;
  const fs::path work = templ;

  int checked = 0, differ = 0;
  for (const auto& entry : fs::recursive_directory_iterator(cases)) {
    if (entry.path().extension() != ".case") continue;
    const std::string name = entry.path().stem().string();
    auto text = read_file(entry.path());
    if (!text) return 2;
    const Block* input = nullptr;
    std::vector<Block> blocks = read_blocks(*text);
    std::map<std::string, std::string> previous;
    for (const Block& b : blocks) {
      if (b.kind == "sorvel") input = &b;
      if (b.kind == "previous" && b.words.size() == 1) {
        std::string content;
        for (const std::string& l : b.lines) content += l + "\n";
        previous[b.words[0]] = content;
      }
    }
    if (!input) continue;  // a case of sorvel-hints itself
    std::string source;
    for (const std::string& l : input->lines) source += l + "\n";
    bool noeol = false;
    std::vector<std::string> args;
    for (const std::string& w : input->words) {
      if (w == "noeol")
        noeol = true;
      else if (w.rfind("exit=", 0) != 0)
        args.push_back(w);
    }
    if (noeol && !source.empty()) source.pop_back();
    if (args.empty()) args = {name + ".sor", name + ".sco"};

    Outcome both[2];
    for (int listen = 0; listen < 2; ++listen) {
      const fs::path dir = work / (listen ? "with" : "without");
      fs::remove_all(dir);
      fs::create_directories(dir);
      for (const auto& side : fs::directory_iterator(entry.path().parent_path())) {
        const std::string ext = side.path().extension().string();
        if (ext == ".case" || ext == ".mid") continue;
        fs::copy(side.path(), dir / side.path().filename(), fs::copy_options::recursive);
      }
      write(dir / (name + ".sor"), source);
      for (const auto& [file, content] : previous) write(dir / file, content);
      both[listen] = run_in(dir, args, listen == 1);
    }
    ++checked;
    const Outcome &a = both[0], &b = both[1];
    if (a.status != b.status || a.screen != b.screen || a.console != b.console ||
        a.files != b.files) {
      ++differ;
      std::printf("%s: the run differs with the checker listening (status %d / %d%s%s%s)\n",
                  fs::relative(entry.path(), cases).c_str(), a.status, b.status,
                  a.screen != b.screen ? ", screen" : "", a.console != b.console ? ", console" : "",
                  a.files != b.files ? ", files" : "");
    }
  }
  fs::remove_all(work);
  std::printf("%d cases, %d differ with the checker listening\n", checked, differ);
  return differ ? 1 : 0;
}
