// run_case: runs sorvel on one end-to-end case and compares, byte for byte,
// what it printed and wrote with what the case expects.
//
//   run_case SORVEL DIR/NAME.case [HINTS]
//                                       run the case (HINTS: the sorvel-hints
//                                       program, for the cases that run it)
//   run_case --unpack CASES OUT         write every case under CASES to OUT
//                                       as plain files (see below)
//
// A case is one file holding its input and its expectations in fenced
// blocks; the text between blocks is a description and is not read. The
// first word after the three backticks says what a block is:
//
//   ```sorvel [ARGS...] [exit=N]
//       The input, written as NAME.sor. The run is "sorvel ARGS..." (without
//       ARGS: NAME.sor NAME.sco) and its exit status must be N (0 when not
//       given).
//   ```sorvel-hints [ARGS...] [exit=N]
//       Instead of a sorvel block: the input, NAME.sor, checked by the run
//       "sorvel-hints ARGS..." (without ARGS: NAME.sor). Its stdout block
//       holds the findings; the standard error stream must be empty unless a
//       stderr block says otherwise, and the run may leave no file at all.
//       --unpack leaves these cases out.
//   ```messages
//       The standard error stream after the banner and the file summary,
//       which the runner builds from the arguments (banner_and_summary).
//   ```stderr
//       The whole standard error stream, for a run that prints no summary.
//       Without either block, the stream is the banner and summary alone.
//   ```stdout
//       The standard output stream; without it, it must be empty.
//   ```file NAME
//       A file the run must leave, whole (NAME.sco, NAME.x, NAME.log).
//   ```previous NAME
//       A file that a previous run left: it is in the directory when the run
//       starts.
//
// The blocks are read as the guide's examples are (tests/support/fenced.h),
// with the same words for the input, its arguments and exit status; but where
// the guide shows excerpts, a case states every byte. A block's content is its
// lines, each with its newline; the word "noeol" after the kind says that the
// last line has none. An expected MIDI file is binary and stays beside the case as
// NAME.mid.
//
// Every other file of DIR (include files) and the input of every case of DIR
// are put in a fresh temporary directory, in which sorvel runs; the directory
// is removed after. The run must leave every file it found as it was, unless
// an expected file names it, and may leave no new file but its own outputs:
// none at all when it fails (a failed run leaves the previous output, or
// none).
//
// --unpack writes, for every case, NAME.sor, NAME.args (when the case gives
// arguments), NAME.err, NAME.status, NAME.stdout, NAME.sco/.x/.log and
// NAME.sco.old (each when expected), and copies the other files beside it:
// the layout that web/test/cases.mjs reads.
//
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

#include "support/fenced.h"
#include "support/program.h"

namespace fs = std::filesystem;
using sorvel::testing::Block;
using sorvel::testing::read_blocks;
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

// One case, read from its file.
struct Case {
  std::string name;  // NAME of NAME.case
  std::string input;
  bool hints = false;  // run by sorvel-hints
  bool has_args = false;
  std::vector<std::string> args;
  int status = 0;
  std::optional<std::string> messages, whole_err, out;
  std::map<std::string, std::string> files, previous;
};

// The banner and file summary that sorvel prints first on the standard error
// stream for these arguments; empty when they are no valid command line (the
// case then states the whole stream).
std::string banner_and_summary(const std::vector<std::string>& args) {
  bool midi = false;
  std::string log, exp;
  size_t i = 0;
  for (; i < args.size() && !args[i].empty() && args[i][0] == '-'; ++i) {
    const std::string& a = args[i];
    const char letter = a.size() > 1 ? a[1] : '\0';
    if (letter == 'm') {
      midi = true;
    } else if (letter == 'l' || letter == 'x') {
      std::string name = a.substr(2);
      if (name.empty()) {
        if (i + 1 >= args.size() || args[i + 1][0] == '-') return "";
        name = args[++i];
      }
      (letter == 'l' ? log : exp) = name;
    } else if (letter != 's' && letter != 't') {
      return "";
    }
  }
  if (args.size() - i != 2) return "";
  std::string text =
      "\nSorvel (1.0.0, Nov 21 2026, 12:00:00)\n"
      "A score generator for Csound and Standard MIDI Files\n"
      "Written by the Sorvel developers\n"
      "Free software: use it, study it, share it\n"
      "Report problems through the project's issue tracker\n"
      "\n\nInput\t= \"" + args[i] + "\"\nOutput\t= \"" + args[i + 1] + "\" ";
  text += midi ? "[MIDI file (type 1)]\n" : "[Csound score-file]\n";
  if (!log.empty()) text += "Log \t= \"" + log + "\"\n";
  if (!exp.empty()) text += "MExp\t= \"" + exp + "\"\n";
  return text;
}

// Reads a case file; an empty optional (with the reason printed) when it is
// not well formed.
std::optional<Case> read_case(const fs::path& file) {
  Case c;
  c.name = file.stem().string();
  auto text = read_file(file);
  if (!text) {
    std::printf("case %s: cannot read it\n", file.c_str());
    return std::nullopt;
  }
  auto fail = [&](size_t line, const std::string& why) {
    std::printf("%s:%zu: %s\n", file.c_str(), line, why.c_str());
    return std::nullopt;
  };
  bool have_input = false;
  for (const Block& block : read_blocks(*text)) {
    const size_t fence = block.line;
    if (block.kind == "unclosed") return fail(fence, "block is not closed");
    bool eol = true;
    std::vector<std::string> rest;
    for (const std::string& w : block.words) {
      if (w == "noeol")
        eol = false;
      else
        rest.push_back(w);
    }
    std::string content;
    for (const std::string& line : block.lines) content += line + "\n";
    if (!eol) {
      if (content.empty()) return fail(fence, "noeol on an empty block");
      content.pop_back();
    }
    const std::string& kind = block.kind;
    if (kind == "sorvel" || kind == "sorvel-hints") {
      if (have_input) return fail(fence, "a second input block");
      have_input = true;
      c.hints = kind == "sorvel-hints";
      c.input = content;
      for (const std::string& w : rest) {
        if (w.rfind("exit=", 0) == 0 && w.size() > 5 &&
            w.find_first_not_of("0123456789", 5) == std::string::npos)
          c.status = std::atoi(w.c_str() + 5);
        else
          c.args.push_back(w);
      }
      c.has_args = !c.args.empty();
      if (!c.has_args && c.hints) c.args = {c.name + ".sor"};
      if (!c.has_args && !c.hints) c.args = {c.name + ".sor", c.name + ".sco"};
    } else if (kind == "messages" && rest.empty()) {
      c.messages = content;
    } else if (kind == "stderr" && rest.empty()) {
      c.whole_err = content;
    } else if (kind == "stdout" && rest.empty()) {
      c.out = content;
    } else if ((kind == "file" || kind == "previous") && rest.size() == 1) {
      (kind == "file" ? c.files : c.previous)[rest[0]] = content;
    } else {
      return fail(fence, "unknown block \"" + kind + "\"");
    }
  }
  if (!have_input) return fail(1, "no sorvel block");
  if (c.messages && c.whole_err) return fail(1, "both a messages and a stderr block");
  if (c.hints && c.messages) return fail(1, "a messages block for sorvel-hints");
  return c;
}

// The standard error stream the case expects.
std::string expected_err(const Case& c) {
  if (c.whole_err) return *c.whole_err;
  if (c.hints) return "";
  return banner_and_summary(c.args) + c.messages.value_or("");
}

// The cases of a directory, by name; nullopt when one is not well formed.
std::optional<std::map<std::string, Case>> read_cases(const fs::path& dir) {
  std::map<std::string, Case> cases;
  for (const auto& entry : fs::directory_iterator(dir)) {
    if (entry.path().extension() != ".case") continue;
    auto c = read_case(entry.path());
    if (!c) return std::nullopt;
    cases[c->name] = *c;
  }
  return cases;
}

// Side files of a directory that are no inputs: the cases and their expected
// MIDI files.
bool is_case_file(const fs::path& file, const std::map<std::string, Case>& cases) {
  const std::string ext = file.extension().string();
  return ext == ".case" || (ext == ".mid" && cases.count(file.stem().string()));
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

bool write_file(const fs::path& path, const std::string& text) {
  std::ofstream out(path, std::ios::binary);
  out << text;
  return static_cast<bool>(out);
}

int run_case(const fs::path& sorvel, const fs::path& hints, const fs::path& file,
             const fs::path& work) {
  const fs::path dir = file.parent_path();
  const std::string name = file.stem().string();
  const std::string label = dir.filename().string() + "/" + name;
  auto cases = read_cases(dir);
  if (!cases || !cases->count(name)) {
    std::printf("case %s: not read\n", label.c_str());
    return 2;
  }
  const Case& c = cases->at(name);
  const int want_status = c.status;
  if (c.hints && hints.empty()) {
    std::printf("case %s: runs sorvel-hints, and no such program was given\n", label.c_str());
    return 2;
  }
  const fs::path& program = c.hints ? hints : sorvel;

  // The expected outputs of every case of the directory are not inputs.
  std::set<std::string> results;
  for (const auto& [other, oc] : *cases) {
    for (const char* ext : {".sco", ".mid", ".log", ".x"}) results.insert(other + ext);
    write_file(work / (other + ".sor"), oc.input);
  }
  for (const auto& entry : fs::directory_iterator(dir)) {
    if (is_case_file(entry.path(), *cases)) continue;
    fs::copy(entry.path(), work / entry.path().filename(), fs::copy_options::recursive);
  }
  for (const auto& [prev, text] : c.previous) write_file(work / prev, text);
  const std::map<std::string, std::string> before = snapshot(work);
  const std::vector<std::string>& args = c.args;

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
  ok = same("standard error", expected_err(c), err) && ok;
  ok = same("standard output", c.out.value_or(""), out) && ok;
  std::map<std::string, std::string> expected = c.files;
  if (auto mid = read_file(dir / (name + ".mid"))) expected[name + ".mid"] = *mid;
  for (const auto& [file_name, want] : expected) {
    auto got = read_file(work / file_name);
    if (!got) {
      std::printf("MISMATCH: the run did not write %s\n", file_name.c_str());
      ok = false;
      continue;
    }
    ok = same(file_name, want, *got) && ok;
  }
  // What else the run left, changed or removed.
  std::set<std::string> own_outputs;
  for (const char* ext : {".sco", ".mid", ".log", ".x"}) own_outputs.insert(name + ext);
  if (!args.empty() && !c.hints) own_outputs.insert(args.back());
  const std::map<std::string, std::string> after = snapshot(work);
  for (const auto& [file_name, text] : after) {
    if (expected.count(file_name)) continue;  // compared above
    auto was = before.find(file_name);
    if (was == before.end()) {
      if (want_status == 0 && own_outputs.count(file_name)) continue;
      std::printf("MISMATCH: the run left %s\n", file_name.c_str());
      ok = false;
    } else if (was->second != text) {
      std::printf("MISMATCH: the run changed %s\n", file_name.c_str());
      ok = false;
    }
  }
  for (const auto& [file_name, text] : before) {
    if (!after.count(file_name)) {
      std::printf("MISMATCH: the run removed %s\n", file_name.c_str());
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

// Writes every case under `from` as plain files under `to`.
int unpack(const fs::path& from, const fs::path& to) {
  for (const auto& entry : fs::recursive_directory_iterator(from)) {
    if (!entry.is_directory()) continue;
    auto cases = read_cases(entry.path());
    if (!cases) return 2;
    const fs::path out = to / fs::relative(entry.path(), from);
    fs::create_directories(out);
    for (const auto& file : fs::directory_iterator(entry.path())) {
      if (file.is_directory() || file.path().extension() == ".case") continue;
      fs::copy_file(file.path(), out / file.path().filename(),
                    fs::copy_options::overwrite_existing);
    }
    for (const auto& [name, c] : *cases) {
      if (c.hints) continue;
      bool ok = write_file(out / (name + ".sor"), c.input) &&
                write_file(out / (name + ".err"), expected_err(c)) &&
                write_file(out / (name + ".status"), std::to_string(c.status) + "\n");
      if (c.has_args) {
        std::string line;
        for (const std::string& a : c.args) line += (line.empty() ? "" : " ") + a;
        ok = write_file(out / (name + ".args"), line + "\n") && ok;
      }
      if (c.out) ok = write_file(out / (name + ".stdout"), *c.out) && ok;
      for (const auto& [f, text] : c.files) ok = write_file(out / f, text) && ok;
      for (const auto& [f, text] : c.previous) ok = write_file(out / (f + ".old"), text) && ok;
      if (!ok) {
        std::printf("run_case: cannot write the files of %s\n", name.c_str());
        return 2;
      }
    }
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 4 && std::string(argv[1]) == "--unpack") {
    try {
      return unpack(argv[2], argv[3]);
    } catch (const std::exception& e) {
      std::printf("run_case: %s\n", e.what());
      return 2;
    }
  }
  if (argc != 3 && argc != 4) {
    std::fprintf(stderr,
                 "usage: run_case SORVEL DIR/NAME.case [HINTS]\n       run_case --unpack CASES OUT\n");
    return 2;
  }
  const fs::path program = fs::absolute(argv[1]);
  const fs::path case_file = fs::absolute(argv[2]);
  const fs::path hints = argc == 4 ? fs::absolute(argv[3]) : fs::path();

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
    result = run_case(program, hints, case_file, work);
  } catch (const std::exception& e) {
    std::printf("run_case: %s\n", e.what());
    result = 2;
  }
  std::error_code ec;
  fs::remove_all(work, ec);
  return result;
}
