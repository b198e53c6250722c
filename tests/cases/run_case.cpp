// run_case: runs sorvel on one end-to-end case and compares, byte for byte,
// what it printed and wrote with the expected files beside the case.
//
//   run_case SORVEL DIR/NAME.sor
//
// In DIR, for the case NAME:
//   NAME.args    the arguments after the program name, separated by white
//                space; without it the arguments are "NAME.sor NAME.sco"
//   NAME.err     the standard error stream (required)
//   NAME.status  the exit status, a number (required)
//   NAME.stdout  the standard output stream; without it, it must be empty
//   NAME.sco, NAME.mid, NAME.log, NAME.x
//                each one present must equal the file of that name that the
//                run leaves in its directory
//   NAME.sco.old (and likewise for the others)
//                a file that a previous run left: it is in the directory as
//                NAME.sco when the run starts
// Every other file of DIR (inputs, include files) is copied into a fresh
// temporary directory, in which sorvel runs; the directory is removed after.
// The run must leave every file it found as it was, unless an expected file
// names it, and may leave no new file but its own outputs: none at all when
// it fails (a failed run leaves the previous output, or none).
// Exit status: 0 when everything matches, 1 when something differs, 2 when
// the case itself is incomplete or the run could not be made.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "support/program.h"

namespace fs = std::filesystem;
using sorvel::testing::read_file;
using sorvel::testing::read_stream;
using sorvel::testing::run_in;
using sorvel::testing::split_lines;
using sorvel::testing::split_words;

namespace {

// One line made readable: control characters and bytes above 126 escaped.
std::string visible(const std::string& line) {
  std::string out;
  for (unsigned char c : line) {
    if (c == '\t') {
      out += "\\t";
    } else if (c == '\\') {
      out += "\\\\";
    } else if (c < 32 || c > 126) {
      char hex[8];
      std::snprintf(hex, sizeof hex, "\\x%02x", c);
      out += hex;
    } else {
      out += static_cast<char>(c);
    }
  }
  return out;
}

// Lines without their newlines, made visible; a last line without one is marked.
std::vector<std::string> visible_lines(const std::string& text) {
  std::vector<std::string> lines = split_lines(text);
  for (std::string& line : lines) line = visible(line);
  if (!text.empty() && text.back() != '\n') lines.back() += "   (no newline at end)";
  return lines;
}

bool looks_binary(const std::string& s) {
  return std::any_of(s.begin(), s.end(), [](char c) { return c == '\0'; });
}

// Prints the first differing byte with some bytes around it, in hex.
void hex_context(const std::string& want, const std::string& got, size_t at) {
  size_t from = at >= 16 ? at - 16 : 0;
  auto dump = [&](const char* label, const std::string& s) {
    std::printf("  %s", label);
    for (size_t i = from; i < std::min(s.size(), at + 16); ++i)
      std::printf(i == at ? " [%02x]" : " %02x", static_cast<unsigned char>(s[i]));
    std::printf("\n");
  };
  dump("expected:", want);
  dump("actual:  ", got);
}

// A short unified-style diff of the part between the common first and last lines.
void line_diff(const std::string& want, const std::string& got) {
  std::vector<std::string> a = visible_lines(want), b = visible_lines(got);
  size_t head = 0;
  while (head < a.size() && head < b.size() && a[head] == b[head]) ++head;
  size_t tail = 0;
  while (tail < a.size() - head && tail < b.size() - head &&
         a[a.size() - 1 - tail] == b[b.size() - 1 - tail])
    ++tail;
  const size_t context = 2, most = 25;
  size_t from = head >= context ? head - context : 0;
  std::printf("  @@ line %zu @@\n", from + 1);
  for (size_t i = from; i < head; ++i) std::printf("   %s\n", a[i].c_str());
  size_t shown = 0;
  for (size_t i = head; i < a.size() - tail && shown < most; ++i, ++shown)
    std::printf("  -%s\n", a[i].c_str());
  if (a.size() - tail - head > most) std::printf("  -... (%zu more)\n", a.size() - tail - head - most);
  shown = 0;
  for (size_t i = head; i < b.size() - tail && shown < most; ++i, ++shown)
    std::printf("  +%s\n", b[i].c_str());
  if (b.size() - tail - head > most) std::printf("  +... (%zu more)\n", b.size() - tail - head - most);
  for (size_t i = b.size() - tail; i < b.size() && i < b.size() - tail + context; ++i)
    std::printf("   %s\n", b[i].c_str());
}

// Compares one result; prints what differs. True when equal.
bool same(const std::string& what, const std::string& want, const std::string& got) {
  if (want == got) return true;
  size_t at = 0;
  while (at < want.size() && at < got.size() && want[at] == got[at]) ++at;
  std::printf("MISMATCH in %s: expected %zu bytes, got %zu; first difference at byte %zu\n",
              what.c_str(), want.size(), got.size(), at);
  if (looks_binary(want) || looks_binary(got))
    hex_context(want, got, at);
  else
    line_diff(want, got);
  return false;
}

bool is_result_file(const fs::path& file, const std::set<std::string>& results) {
  static const std::set<std::string> kinds = {".err", ".status", ".stdout", ".args", ".old"};
  return kinds.count(file.extension().string()) || results.count(file.filename().string());
}

// The regular files at the top of a directory, with their contents.
std::map<std::string, std::string> snapshot(const fs::path& dir) {
  std::map<std::string, std::string> files;
  for (const auto& entry : fs::directory_iterator(dir)) {
    if (entry.is_directory()) continue;
    files[entry.path().filename().string()] = read_file(entry.path()).value_or("(unreadable)");
  }
  return files;
}

int run_case(const fs::path& program, const fs::path& sor, const fs::path& work) {
  const fs::path dir = sor.parent_path();
  const std::string name = sor.stem().string();
  const std::string label = dir.filename().string() + "/" + name;

  auto want_err = read_file(dir / (name + ".err"));
  auto want_status_text = read_file(dir / (name + ".status"));
  if (!want_err || !want_status_text) {
    std::printf("case %s: %s.err and %s.status are required\n", label.c_str(), name.c_str(),
                name.c_str());
    return 2;
  }
  std::vector<std::string> status_words = split_words(*want_status_text);
  if (status_words.size() != 1 ||
      status_words[0].find_first_not_of("0123456789") != std::string::npos) {
    std::printf("case %s: %s.status must hold one number\n", label.c_str(), name.c_str());
    return 2;
  }
  const int want_status = std::atoi(status_words[0].c_str());

  // The expected outputs of every case of the directory are not inputs.
  std::set<std::string> results;
  for (const auto& entry : fs::directory_iterator(dir))
    if (entry.path().extension() == ".sor")
      for (const char* ext : {".sco", ".mid", ".log", ".x"})
        results.insert(entry.path().stem().string() + ext);
  for (const auto& entry : fs::directory_iterator(dir)) {
    if (is_result_file(entry.path(), results)) continue;
    fs::copy(entry.path(), work / entry.path().filename(), fs::copy_options::recursive);
  }
  for (const char* ext : {".sco", ".mid", ".log", ".x"}) {
    const fs::path old = dir / (name + ext + ".old");
    if (fs::exists(old)) fs::copy_file(old, work / (name + ext));
  }
  const std::map<std::string, std::string> before = snapshot(work);

  std::vector<std::string> args = {name + ".sor", name + ".sco"};
  if (auto text = read_file(dir / (name + ".args"))) args = split_words(*text);

  std::string out, err;
  int status = run_in(program, args, work, out, err);
  if (status == -1) {
    std::printf("case %s: could not run %s: %s\n", label.c_str(), program.c_str(),
                std::strerror(errno));
    return 2;
  }

  bool ok = true;
  if (WIFSIGNALED(status)) {
    std::printf("MISMATCH: %s was killed by signal %d\n", program.filename().c_str(),
                WTERMSIG(status));
    ok = false;
  } else if (WEXITSTATUS(status) != want_status) {
    std::printf("MISMATCH in exit status: expected %d, got %d\n", want_status, WEXITSTATUS(status));
    ok = false;
  }
  ok = same("standard error (" + name + ".err)", *want_err, err) && ok;
  ok = same("standard output (" + name + ".stdout)",
            read_file(dir / (name + ".stdout")).value_or(""), out) &&
       ok;
  for (const char* ext : {".sco", ".mid", ".log", ".x"}) {
    const std::string file = name + ext;
    auto want = read_file(dir / file);
    if (!want) continue;
    auto got = read_file(work / file);
    if (!got) {
      std::printf("MISMATCH: the run did not write %s\n", file.c_str());
      ok = false;
      continue;
    }
    ok = same(file, *want, *got) && ok;
  }
  // What else the run left, changed or removed.
  std::set<std::string> own_outputs;
  for (const char* ext : {".sco", ".mid", ".log", ".x"}) own_outputs.insert(name + ext);
  if (!args.empty()) own_outputs.insert(args.back());
  const std::map<std::string, std::string> after = snapshot(work);
  for (const auto& [file, text] : after) {
    if (fs::exists(dir / file) && results.count(file)) continue;  // compared above
    auto was = before.find(file);
    if (was == before.end()) {
      if (want_status == 0 && own_outputs.count(file)) continue;
      std::printf("MISMATCH: the run left %s\n", file.c_str());
      ok = false;
    } else if (was->second != text) {
      std::printf("MISMATCH: the run changed %s\n", file.c_str());
      ok = false;
    }
  }
  for (const auto& [file, text] : before) {
    if (!after.count(file)) {
      std::printf("MISMATCH: the run removed %s\n", file.c_str());
      ok = false;
    }
  }
  if (!ok) {
    std::printf("case %s failed (arguments:", label.c_str());
    for (const std::string& a : args) std::printf(" %s", a.c_str());
    std::printf(")\n");
  }
  return ok ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: run_case SORVEL DIR/NAME.sor\n");
    return 2;
  }
  const fs::path program = fs::absolute(argv[1]);
  const fs::path sor = fs::absolute(argv[2]);

  const char* tmp = std::getenv("TMPDIR");
  std::string templ = std::string(tmp && *tmp ? tmp : "/tmp") + "/case-XXXXXX";
  std::vector<char> name(templ.begin(), templ.end());
  name.push_back('\0');
  if (!mkdtemp(name.data())) {
    std::printf("run_case: cannot make a temporary directory: %s\n", std::strerror(errno));
    return 2;
  }
  const fs::path work = name.data();

  int result;
  try {
    result = run_case(program, sor, work);
  } catch (const std::exception& e) {
    std::printf("run_case: %s\n", e.what());
    result = 2;
  }
  std::error_code ec;
  fs::remove_all(work, ec);
  return result;
}
