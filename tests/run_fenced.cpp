// run_fenced: runs the examples of a text written in fenced blocks (an
// end-to-end case, or a Markdown document such as the guide) through the
// programs they name, and checks what the text says each run produces.
//
//   run_fenced --program sorvel=PATH [--program NAME=PATH]... FILE
//   run_fenced --unpack CASES OUT
//
// A line starting with three backticks opens a block, the words after them
// say what it is, and a line of three backticks alone (blanks after it
// aside) closes it. A block whose first word is the NAME of a --program is an
// input, run by that program:
//
//   ```NAME [ARGS...] [exit=N]
//       The run is "NAME ARGS..." plus, as each kind of text says below, the
//       input and output names; its exit status must be N (0 when not given).
//
// FILE.case: an end-to-end case, one input block and the expectations of its
// run, every byte stated. The text between blocks is a description.
//
//   ```sorvel [ARGS...] [exit=N]
//       The input, written as NAME.sor. Without ARGS the run is
//       "sorvel NAME.sor NAME.sco".
//   ```sorvel-hints [ARGS...] [exit=N]
//       Instead of a sorvel block: the input, NAME.sor, checked by
//       "sorvel-hints ARGS..." (without ARGS: "sorvel-hints NAME.sor"). The
//       stdout block holds its findings; the standard error stream must be
//       empty unless a stderr block says otherwise, and the run leaves no
//       file. --unpack leaves these cases out.
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
// A block's content is its lines, each with its newline; the word "noeol"
// after the kind says that the last line has none. An expected MIDI file is
// binary and stays beside the case as NAME.mid. Every other file of the
// case's directory (include files) and the input of every case there are put
// in a fresh temporary directory, in which the program runs. The run must
// leave every file it found as it was, unless an expected file names it, and
// may leave no new file but its own outputs: none at all when it fails (a
// failed run leaves the previous output, or none).
//
// Any other FILE: a document whose examples show excerpts. Other fenced
// blocks (sh, text, csound without a path ...) are not examples.
//
//   ```sorvel [ARGS...] [exit=N]
//       An example input, written to "example.sor" in a fresh directory and
//       run as "sorvel ARGS... example.sor example.sco" (example.mid when
//       ARGS holds -m). The blocks after it, up to the next input, are checks.
//   ```sorvel-file NAME
//       A further input file (an include file) for the next example; NAME may
//       name a subdirectory (parts/tune.sor), which is made.
//   ```score
//       The score's event lines: the score without its blank lines, its ";"
//       comment lines and its closing "e" line (blank lines of the block are
//       ignored too).
//   ```score full
//       The whole score file, line by line.
//   ```messages
//       An excerpt of the standard error stream: the block's lines, from its
//       first to its last non-blank line, must occur there as consecutive
//       lines. Tabs, on both sides, count as blanks up to the next multiple of
//       eight columns, as a terminal shows them.
//   ```midi
//       The note track, one line per note message, "TICK on KEY VELOCITY" or
//       "TICK off KEY", TICK counted from the start (480 ticks a second),
//       blanks between words any number. The file must be a format 1 file of
//       two tracks at 480 ticks a quarter note.
//   ```file NAME
//       The whole file NAME that the run leaves, line by line.
//   ```csound PATH
//       A Csound file the document shows: it must equal the file PATH of the
//       source tree (the directory above the document's own).
//
// In a document, blanks and tabs at the end of a line are ignored in every
// comparison; and a run that prints a warning fails unless a messages block
// of its example shows one.
//
// --unpack writes, for every case under CASES, NAME.sor, NAME.args (when the
// case gives arguments), NAME.err, NAME.status, NAME.stdout, NAME.sco/.x/.log
// and NAME.sco.old (each when expected), and copies the other files beside
// it: the layout that web/test/cases.mjs reads.
//
// Exit status: 0 when everything holds, 1 when something differs, 2 when the
// text itself is incomplete or a program could not be run.
#include <fcntl.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "support/fenced.h"
#include "support/scratch.h"

namespace fs = std::filesystem;
using sorvel::testing::Block;
using sorvel::testing::joined;
using sorvel::testing::read_blocks;
using sorvel::testing::read_stream;
using sorvel::testing::rstrip;
using sorvel::testing::split_lines;
using sorvel::testing::split_words;

namespace {

using Programs = std::map<std::string, fs::path>;  // an input block's kind -> the program

// --- Files, streams, lines and words -------------------------------------

std::optional<std::string> read_file(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return std::nullopt;
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

bool write_file(const fs::path& path, const std::string& text) {
  std::ofstream out(path, std::ios::binary);
  out << text;
  return static_cast<bool>(out);
}

// What an input block's words ask for: the arguments and "exit=N".
struct Invocation {
  std::vector<std::string> args;
  int status = 0;
};

Invocation invocation(const std::vector<std::string>& words) {
  Invocation run;
  for (const std::string& w : words) {
    if (w.rfind("exit=", 0) == 0 && w.size() > 5 &&
        w.find_first_not_of("0123456789", 5) == std::string::npos)
      run.status = std::atoi(w.c_str() + 5);
    else
      run.args.push_back(w);
  }
  return run;
}

// --- Running a program ---------------------------------------------------

// Runs `program` (as `name` with `args`) in `dir`, standard input empty and
// the two output streams captured. Returns the wait status, or -1 when it
// could not be started.
int run_in(const fs::path& program, const std::string& name, const std::vector<std::string>& args,
           const fs::path& dir, std::string& out, std::string& err) {
  FILE* fout = std::tmpfile();
  FILE* ferr = std::tmpfile();
  if (!fout || !ferr) return -1;
  std::fflush(stdout);
  pid_t pid = fork();
  if (pid < 0) return -1;
  if (pid == 0) {
    int null_in = open("/dev/null", O_RDONLY);
    if (chdir(dir.c_str()) != 0 || null_in < 0) _exit(126);
    dup2(null_in, 0);
    dup2(fileno(fout), 1);
    dup2(fileno(ferr), 2);
    std::vector<std::string> copy = args;
    std::string argv0 = name;
    std::vector<char*> argv{argv0.data()};
    for (std::string& a : copy) argv.push_back(a.data());
    argv.push_back(nullptr);
    execv(program.c_str(), argv.data());
    _exit(127);
  }
  int status = 0;
  while (waitpid(pid, &status, 0) < 0) {
    if (errno != EINTR) return -1;
  }
  out = read_stream(fout);
  err = read_stream(ferr);
  std::fclose(fout);
  std::fclose(ferr);
  return status;
}

// Runs the program of an input block; prints why (after `where`) and returns
// false when the run could not be made, was killed, or ended with another
// exit status.
bool run_checked(const Programs& programs, const std::string& kind, const Invocation& run,
                 const fs::path& dir, const std::string& where, std::string& out,
                 std::string& err, bool& could_run) {
  const fs::path& program = programs.at(kind);
  const int status = run_in(program, kind, run.args, dir, out, err);
  could_run = status != -1 && !(WIFEXITED(status) && WEXITSTATUS(status) >= 126);
  if (!could_run) {
    std::printf("%scould not run %s\n", where.c_str(), program.c_str());
    return false;
  }
  if (WIFSIGNALED(status)) {
    std::printf("%sMISMATCH: %s was killed by signal %d\n", where.c_str(), kind.c_str(),
                WTERMSIG(status));
    return false;
  }
  if (WEXITSTATUS(status) != run.status) {
    std::printf("%sMISMATCH in exit status: expected %d, got %d\n", where.c_str(), run.status,
                WEXITSTATUS(status));
    return false;
  }
  return true;
}

// --- Showing what differs ------------------------------------------------

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

// Compares one result; when it differs, prints where, with the lines from
// the first differing one made visible (a few before it for context). True
// when equal.
bool same(const std::string& what, const std::string& want, const std::string& got) {
  if (want == got) return true;
  size_t at = 0;
  while (at < want.size() && at < got.size() && want[at] == got[at]) ++at;
  std::printf("MISMATCH in %s: expected %zu bytes, got %zu; first difference at byte %zu\n",
              what.c_str(), want.size(), got.size(), at);
  const std::vector<std::string> a = split_lines(want), b = split_lines(got);
  const size_t line = static_cast<size_t>(std::count(want.begin(), want.begin() + at, '\n'));
  auto show = [&](const std::vector<std::string>& lines, size_t from, size_t to, const char* mark) {
    for (size_t i = from; i < lines.size() && i < to; ++i)
      std::printf("  %s%s\n", mark, visible(lines[i].substr(0, 200)).c_str());
  };
  std::printf("  @@ line %zu @@\n", line + 1);
  show(a, line >= 2 ? line - 2 : 0, line, " ");
  show(a, line, line + 8, "-");
  show(b, line, line + 8, "+");
  if (!want.empty() && want.back() != '\n') std::printf("  (expected: no newline at end)\n");
  if (!got.empty() && got.back() != '\n') std::printf("  (actual: no newline at end)\n");
  return false;
}

// A fresh directory under TMPDIR (or /tmp); empty when none can be made.
fs::path make_work_dir(const char* what) {
  const char* tmp = std::getenv("TMPDIR");
  std::string templ = std::string(tmp && *tmp ? tmp : "/tmp") + "/" + what + "-XXXXXX";
  std::vector<char> name(templ.begin(), templ.end());
  name.push_back('\0');
  if (!mkdtemp(name.data())) {
    std::printf("run_fenced: cannot make a temporary directory: %s\n", std::strerror(errno));
    return {};
  }
  return name.data();
}

// --- End-to-end cases ----------------------------------------------------

struct Case {
  std::string name;     // NAME of NAME.case
  std::string program;  // the kind of its input block
  std::string input;
  bool has_args = false;
  Invocation run;
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
std::optional<Case> read_case(const fs::path& file, const Programs& programs) {
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
    std::string content = joined(block.lines);
    if (!eol) {
      if (content.empty()) return fail(fence, "noeol on an empty block");
      content.pop_back();
    }
    const std::string& kind = block.kind;
    if (programs.count(kind)) {
      if (!c.program.empty()) return fail(fence, "a second input block");
      c.program = kind;
      c.input = content;
      c.run = invocation(rest);
      c.has_args = !c.run.args.empty();
      if (!c.has_args && kind == "sorvel") c.run.args = {c.name + ".sor", c.name + ".sco"};
      if (!c.has_args && kind != "sorvel") c.run.args = {c.name + ".sor"};
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
  if (c.program.empty()) return fail(1, "no input block");
  if (c.messages && c.whole_err) return fail(1, "both a messages and a stderr block");
  if (c.messages && c.program != "sorvel") return fail(1, "a messages block for " + c.program);
  return c;
}

// The standard error stream the case expects.
std::string expected_err(const Case& c) {
  if (c.whole_err) return *c.whole_err;
  if (c.program != "sorvel") return "";  // only sorvel prints the banner
  return banner_and_summary(c.run.args) + c.messages.value_or("");
}

// The cases of a directory, by name; nullopt when one is not well formed.
std::optional<std::map<std::string, Case>> read_cases(const fs::path& dir, const Programs& programs) {
  std::map<std::string, Case> cases;
  for (const auto& entry : fs::directory_iterator(dir)) {
    if (entry.path().extension() != ".case") continue;
    auto c = read_case(entry.path(), programs);
    if (!c) return std::nullopt;
    cases[c->name] = *c;
  }
  return cases;
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

int run_case(const Programs& programs, const fs::path& file, const fs::path& work) {
  const fs::path dir = file.parent_path();
  const std::string name = file.stem().string();
  const std::string label = dir.filename().string() + "/" + name;
  auto cases = read_cases(dir, programs);
  if (!cases || !cases->count(name)) {
    std::printf("case %s: not read\n", label.c_str());
    return 2;
  }
  const Case& c = cases->at(name);

  // The inputs of every case of the directory and its other files, but not
  // the cases and their expected MIDI files.
  for (const auto& [other, oc] : *cases) write_file(work / (other + ".sor"), oc.input);
  for (const auto& entry : fs::directory_iterator(dir)) {
    const std::string ext = entry.path().extension().string();
    if (ext == ".case" || (ext == ".mid" && cases->count(entry.path().stem().string()))) continue;
    fs::copy(entry.path(), work / entry.path().filename(), fs::copy_options::recursive);
  }
  for (const auto& [prev, text] : c.previous) write_file(work / prev, text);
  const std::map<std::string, std::string> before = snapshot(work);

  std::string out, err;
  bool could_run = true;
  bool ok = run_checked(programs, c.program, c.run, work, "", out, err, could_run);
  if (!could_run) return 2;
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
  if (!c.run.args.empty() && c.program == "sorvel") own_outputs.insert(c.run.args.back());
  const std::map<std::string, std::string> after = snapshot(work);
  for (const auto& [file_name, text] : after) {
    if (expected.count(file_name)) continue;  // compared above
    auto was = before.find(file_name);
    if (was == before.end()) {
      if (c.run.status == 0 && own_outputs.count(file_name)) continue;
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
    for (const std::string& a : c.run.args) std::printf(" %s", a.c_str());
    std::printf(")\n");
  }
  return ok ? 0 : 1;
}

// Writes every case under `from` as plain files under `to`.
int unpack(const fs::path& from, const fs::path& to) {
  const Programs programs = {{"sorvel", "sorvel"}, {"sorvel-hints", "sorvel-hints"}};
  for (const auto& entry : fs::recursive_directory_iterator(from)) {
    if (!entry.is_directory()) continue;
    auto cases = read_cases(entry.path(), programs);
    if (!cases) return 2;
    const fs::path out = to / fs::relative(entry.path(), from);
    fs::create_directories(out);
    for (const auto& file : fs::directory_iterator(entry.path())) {
      if (file.is_directory() || file.path().extension() == ".case") continue;
      fs::copy_file(file.path(), out / file.path().filename(),
                    fs::copy_options::overwrite_existing);
    }
    for (const auto& [name, c] : *cases) {
      if (c.program != "sorvel") continue;  // the plain files are sorvel's runs
      bool ok = write_file(out / (name + ".sor"), c.input) &&
                write_file(out / (name + ".err"), expected_err(c)) &&
                write_file(out / (name + ".status"), std::to_string(c.run.status) + "\n");
      if (c.has_args) {
        std::string line;
        for (const std::string& a : c.run.args) line += (line.empty() ? "" : " ") + a;
        ok = write_file(out / (name + ".args"), line + "\n") && ok;
      }
      if (c.out) ok = write_file(out / (name + ".stdout"), *c.out) && ok;
      for (const auto& [f, text] : c.files) ok = write_file(out / f, text) && ok;
      for (const auto& [f, text] : c.previous) ok = write_file(out / (f + ".old"), text) && ok;
      if (!ok) {
        std::printf("run_fenced: cannot write the files of %s\n", name.c_str());
        return 2;
      }
    }
  }
  return 0;
}

// --- Documents -----------------------------------------------------------

struct Example {
  Block input;
  std::vector<Block> files;   // sorvel-file blocks before it
  std::vector<Block> checks;  // score, messages, midi, file blocks after it
};

std::string expand_tabs(const std::string& line) {
  std::string out;
  for (char c : line) {
    if (c == '\t')
      out.append(8 - out.size() % 8, ' ');
    else
      out += c;
  }
  return out;
}

// The lines without their trailing blanks; blank lines dropped when asked.
std::vector<std::string> trimmed(const std::vector<std::string>& lines, bool drop_blank) {
  std::vector<std::string> out;
  for (const std::string& l : lines) {
    std::string s = rstrip(l);
    if (drop_blank && s.empty()) continue;
    out.push_back(s);
  }
  return out;
}

std::vector<std::string> score_events(const std::string& score) {
  std::vector<std::string> out;
  for (const std::string& l : trimmed(split_lines(score), true))
    if (l[0] != ';') out.push_back(l);
  if (!out.empty() && out.back() == "e") out.pop_back();
  return out;
}

// The note track of a MIDI file as "TICK on KEY VELOCITY" / "TICK off KEY"
// lines; an empty optional (and a reason) when the file is not as expected.
std::optional<std::vector<std::string>> midi_listing(const std::string& data, std::string& why) {
  auto byte = [&](size_t at) { return static_cast<unsigned>(static_cast<unsigned char>(data[at])); };
  auto u32 = [&](size_t at) {
    return byte(at) << 24 | byte(at + 1) << 16 | byte(at + 2) << 8 | byte(at + 3);
  };
  auto refuse = [&](const char* reason) {
    why = reason;
    return std::nullopt;
  };
  if (data.size() < 14 || data.compare(0, 4, "MThd") != 0 || u32(4) != 6)
    return refuse("no MIDI header");
  if ((byte(8) << 8 | byte(9)) != 1 || (byte(10) << 8 | byte(11)) != 2 ||
      (byte(12) << 8 | byte(13)) != 480)
    return refuse("header is not format 1, 2 tracks, 480 ticks a quarter");
  size_t p = 14;
  std::vector<std::string> notes;
  for (unsigned t = 0; t < 2; ++t) {
    if (p + 8 > data.size() || data.compare(p, 4, "MTrk") != 0) return refuse("track chunk missing");
    size_t end = p + 8 + u32(p + 4);
    p += 8;
    if (end > data.size()) return refuse("track runs past the end of the file");
    unsigned long tick = 0;
    bool ended = false;
    while (p < end && !ended) {
      unsigned long delta = 0;
      for (int n = 0;; ++n) {
        if (p >= end || n == 4) return refuse("bad delta time");
        unsigned b = byte(p++);
        delta = delta << 7 | (b & 0x7F);
        if (!(b & 0x80)) break;
      }
      tick += delta;
      if (p >= end) break;
      unsigned status = byte(p++);
      if (status == 0xFF) {
        if (p + 1 >= end) break;
        unsigned type = byte(p++);
        p += byte(p) + 1;
        if (type == 0x2F) ended = true;
      } else if ((status & 0xF0) == 0x90 || (status & 0xF0) == 0x80) {
        if (p + 2 > end) break;
        unsigned key = byte(p), vel = byte(p + 1);
        p += 2;
        if (t == 1) {
          char line[64];
          if ((status & 0xF0) == 0x90)
            std::snprintf(line, sizeof line, "%lu on %u %u", tick, key, vel);
          else
            std::snprintf(line, sizeof line, "%lu off %u", tick, key);
          notes.push_back(line);
        }
      } else {
        return refuse("unexpected status byte");
      }
    }
    if (!ended) return refuse("track without its end");
    p = end;
  }
  return notes;
}

bool contains_run(const std::vector<std::string>& hay, const std::vector<std::string>& needle) {
  if (needle.empty()) return true;
  for (size_t i = 0; i + needle.size() <= hay.size(); ++i) {
    size_t k = 0;
    while (k < needle.size() && hay[i + k] == needle[k]) ++k;
    if (k == needle.size()) return true;
  }
  return false;
}

// Runs one example in `dir`; prints what fails. True when it holds.
bool check_example(const Programs& programs, const Example& ex, const fs::path& dir) {
  Invocation run = invocation(ex.input.words);
  const bool midi = std::find(run.args.begin(), run.args.end(), "-m") != run.args.end();
  const std::string out_name = midi ? "example.mid" : "example.sco";
  run.args.push_back("example.sor");
  run.args.push_back(out_name);

  fs::create_directories(dir);
  auto write = [&](const std::string& name, const std::vector<std::string>& lines) {
    fs::create_directories((dir / name).parent_path());
    write_file(dir / name, joined(lines));
  };
  for (const Block& f : ex.files) write(f.words.empty() ? "unnamed" : f.words[0], f.lines);
  write("example.sor", ex.input.lines);

  std::string out, err;
  bool could_run = true;
  const std::string where = "line " + std::to_string(ex.input.line) + ": ";
  bool ok = run_checked(programs, ex.input.kind, run, dir, where, out, err, could_run);
  if (!could_run) return false;
  auto fail = [&](int line, const std::string& what) {
    std::printf("line %d: %s\n", line, what.c_str());
    ok = false;
  };

  std::vector<std::string> err_lines;
  for (const std::string& l : trimmed(split_lines(err), false)) err_lines.push_back(expand_tabs(l));
  bool warning_shown = false;
  for (const Block& c : ex.checks)
    if (c.kind == "messages")
      for (const std::string& l : c.lines)
        if (l.find("WARNING") != std::string::npos) warning_shown = true;
  if (!warning_shown && err.find("WARNING") != std::string::npos)
    fail(ex.input.line, "the run printed a warning that the document does not show");

  for (const Block& c : ex.checks) {
    const std::string name = c.words.empty() ? "" : c.words[0];
    if (c.kind == "messages") {
      std::vector<std::string> want;
      for (const std::string& l : trimmed(c.lines, false)) want.push_back(expand_tabs(l));
      while (!want.empty() && want.front().empty()) want.erase(want.begin());
      while (!want.empty() && want.back().empty()) want.pop_back();
      if (!contains_run(err_lines, want)) {
        fail(c.line, "the messages do not contain these lines:");
        for (const std::string& l : want) std::printf("    | %s\n", l.c_str());
        std::printf("    the messages were:\n");
        for (const std::string& l : err_lines) std::printf("    > %s\n", l.c_str());
      }
      continue;
    }
    std::optional<std::string> data = read_file(dir / (c.kind == "file" ? name : out_name));
    if (!data) {
      fail(c.line, "the run left no file \"" + (c.kind == "file" ? name : out_name) + "\"");
      continue;
    }
    std::vector<std::string> want, got;
    if (c.kind == "score") {
      const bool full = name == "full";
      want = trimmed(c.lines, !full);
      got = full ? trimmed(split_lines(*data), false) : score_events(*data);
    } else if (c.kind == "midi") {
      std::string why;
      std::optional<std::vector<std::string>> notes = midi_listing(*data, why);
      if (!notes) {
        fail(c.line, "no readable MIDI file: " + why);
        continue;
      }
      got = *notes;
      for (const std::string& l : trimmed(c.lines, true)) {
        std::string line;
        for (const std::string& w : split_words(l)) line += (line.empty() ? "" : " ") + w;
        want.push_back(line);
      }
    } else {
      want = trimmed(c.lines, false);
      got = trimmed(split_lines(*data), false);
    }
    if (!same("the " + c.kind + " block of line " + std::to_string(c.line), joined(want),
              joined(got)))
      ok = false;
  }
  return ok;
}

// Checks every example of a document; prints a line saying how many hold.
int run_document(const Programs& programs, const fs::path& doc) {
  std::optional<std::string> text = read_file(doc);
  if (!text) {
    std::printf("run_fenced: cannot read %s\n", doc.c_str());
    return 2;
  }
  std::vector<Example> examples;
  std::vector<Block> pending_files;
  bool bad_layout = false;
  for (Block& b : read_blocks(*text)) {
    if (b.kind == "unclosed") {
      bad_layout = true;
    } else if (programs.count(b.kind)) {
      examples.push_back(Example{b, pending_files, {}});
      pending_files.clear();
    } else if (b.kind == "sorvel-file") {
      if (b.words.size() != 1) {
        std::printf("line %d: a sorvel-file block needs one file name\n", b.line);
        bad_layout = true;
      }
      pending_files.push_back(b);
    } else if (b.kind == "csound" && !b.words.empty()) {
      const fs::path shipped = doc.parent_path().parent_path() / b.words[0];
      std::optional<std::string> file = read_file(shipped);
      if (!file) {
        std::printf("line %d: cannot read %s\n", b.line, shipped.c_str());
        bad_layout = true;
      } else if (!same("the csound block of line " + std::to_string(b.line),
                       joined(trimmed(split_lines(*file), false)), joined(trimmed(b.lines, false)))) {
        bad_layout = true;
      }
    } else if (b.kind == "score" || b.kind == "messages" || b.kind == "midi" || b.kind == "file") {
      if (examples.empty() || !pending_files.empty()) {
        std::printf("line %d: a %s block must follow a sorvel block\n", b.line, b.kind.c_str());
        bad_layout = true;
      } else {
        examples.back().checks.push_back(b);
      }
    }
  }
  if (!pending_files.empty()) {
    std::printf("line %d: a sorvel-file block is not followed by a sorvel block\n",
                pending_files.front().line);
    bad_layout = true;
  }

  const fs::path work = make_work_dir("sorvel-doc");
  if (work.empty()) return 2;
  int failed = 0;
  for (size_t i = 0; i < examples.size(); ++i)
    if (!check_example(programs, examples[i], work / std::to_string(i + 1))) ++failed;
  std::error_code ec;
  fs::remove_all(work, ec);

  const char* name = doc.c_str();
  if (bad_layout) std::printf("%s: the document has faults outside its examples (see above)\n", name);
  if (examples.empty())
    std::printf("%s: no example found\n", name);
  else if (failed)
    std::printf("%s: %d of %zu examples fail\n", name, failed, examples.size());
  else
    std::printf("%s: all %zu examples hold\n", name, examples.size());
  return (failed || bad_layout || examples.empty()) ? 1 : 0;
}

int usage() {
  std::fprintf(stderr,
               "usage: run_fenced --program sorvel=PATH [--program NAME=PATH]... FILE\n"
               "       run_fenced --unpack CASES OUT\n");
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  try {
    if (args.size() == 3 && args[0] == "--unpack") return unpack(args[1], args[2]);
    Programs programs;
    size_t i = 0;
    for (; i + 1 < args.size() && args[i] == "--program"; i += 2) {
      const size_t eq = args[i + 1].find('=');
      if (eq == std::string::npos || eq == 0) return usage();
      programs[args[i + 1].substr(0, eq)] = fs::absolute(args[i + 1].substr(eq + 1));
    }
    if (i + 1 != args.size() || !programs.count("sorvel")) return usage();
    const fs::path file = fs::absolute(args[i]);
    if (file.extension() != ".case") return run_document(programs, file);

    const fs::path work = make_work_dir("case");
    if (work.empty()) return 2;
    int result = run_case(programs, file, work);
    std::error_code ec;
    fs::remove_all(work, ec);
    return result;
  } catch (const std::exception& e) {
    std::printf("run_fenced: %s\n", e.what());
    return 2;
  }
}
