// run_guide: runs every example of a Markdown document through sorvel and
// checks what the document says the example produces.
//
//   run_guide SORVEL DOC.md
//
// The document marks its examples with fenced blocks. The first word after
// the three backticks says what a block is:
//
//   ```sorvel [ARGS...] [exit=N]
//       An example input. It is written to "example.sor" in a fresh temporary
//       directory and run there as
//           sorvel ARGS... example.sor example.sco
//       (example.mid instead of example.sco when ARGS holds -m). The exit
//       status must be N (0 when not given). The blocks below, up to the
//       next sorvel block, state what the run must produce.
//   ```sorvel-file NAME
//       A further input file (an include file): written as NAME into the
//       directory of the next sorvel block. NAME may name a subdirectory
//       (parts/tune.sor), which is made.
//   ```score
//       The score's event lines: the score file without its blank lines, its
//       ";" comment lines and its closing "e" line must equal the block's
//       lines (blank lines of the block are ignored too).
//   ```score full
//       The whole score file, line by line, blank and comment lines included.
//   ```messages
//       An excerpt of the standard error stream: the block's lines, from its
//       first to its last non-blank line, must occur in the messages as
//       consecutive lines. Tabs, on both sides, count as blanks up to the
//       next multiple of eight columns, as a terminal shows them.
//   ```midi
//       The note track of the MIDI file, one line per note message:
//           TICK on KEY VELOCITY   or   TICK off KEY
//       with TICK counted from the start (480 ticks a second); blanks between
//       the words may be any number. The file must be a format 1 file of two
//       tracks at 480 ticks a quarter note.
//   ```file NAME
//       The whole content of the file NAME that the run leaves behind (for
//       example the -x expansion file), line by line.
//
//   ```csound PATH
//       A Csound file shown in the document: when PATH is given, the block
//       must equal the file PATH of the source tree (the directory above the
//       document's own), so that a shipped file and its copy in the text
//       cannot drift apart.
//
// In every comparison of lines, blanks and tabs at the end of a line are
// ignored; everything else counts. A run that prints a warning fails unless
// one of its messages blocks shows a warning. Other fenced blocks (sh, text,
// csound without a path ...) are not examples and are left alone.
//
// Exit status: 0 when every example holds, 1 when one does not (or when the
// document has no example at all), 2 when the program cannot be run.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "support/fenced.h"
#include "support/program.h"

namespace fs = std::filesystem;
using sorvel::testing::Block;
using sorvel::testing::read_blocks;
using sorvel::testing::read_file;
using sorvel::testing::read_stream;
using sorvel::testing::rstrip;
using sorvel::testing::run_in;
using sorvel::testing::split_lines;
using sorvel::testing::split_words;

namespace {

struct Example {
  Block input;
  std::vector<Block> files;   // sorvel-file blocks before it
  std::vector<Block> checks;  // score, messages, midi, file blocks after it
};

bool is_check(const std::string& kind) {
  return kind == "score" || kind == "messages" || kind == "midi" || kind == "file";
}

// Prints expected and actual lines side by side from the first difference.
void show_difference(const std::vector<std::string>& want, const std::vector<std::string>& got) {
  size_t at = 0;
  while (at < want.size() && at < got.size() && want[at] == got[at]) ++at;
  std::printf("    first difference at line %zu of %zu expected, %zu produced\n", at + 1,
              want.size(), got.size());
  size_t from = at >= 2 ? at - 2 : 0;
  for (size_t i = from; i < want.size() && i < at + 6; ++i)
    std::printf("    %s %s\n", i < at ? " " : "-", want[i].c_str());
  for (size_t i = at; i < got.size() && i < at + 6; ++i) std::printf("    + %s\n", got[i].c_str());
}

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
  size_t p = 0;
  auto u32 = [&](size_t at) {
    return (static_cast<unsigned>(static_cast<unsigned char>(data[at])) << 24) |
           (static_cast<unsigned>(static_cast<unsigned char>(data[at + 1])) << 16) |
           (static_cast<unsigned>(static_cast<unsigned char>(data[at + 2])) << 8) |
           static_cast<unsigned>(static_cast<unsigned char>(data[at + 3]));
  };
  auto byte = [&](size_t at) { return static_cast<unsigned>(static_cast<unsigned char>(data[at])); };
  if (data.size() < 14 || data.compare(0, 4, "MThd") != 0 || u32(4) != 6) {
    why = "no MIDI header";
    return std::nullopt;
  }
  unsigned format = byte(8) << 8 | byte(9), tracks = byte(10) << 8 | byte(11),
           division = byte(12) << 8 | byte(13);
  if (format != 1 || tracks != 2 || division != 480) {
    why = "header is not format 1, 2 tracks, 480 ticks a quarter";
    return std::nullopt;
  }
  p = 14;
  std::vector<std::string> notes;
  for (unsigned t = 0; t < 2; ++t) {
    if (p + 8 > data.size() || data.compare(p, 4, "MTrk") != 0) {
      why = "track chunk missing";
      return std::nullopt;
    }
    size_t end = p + 8 + u32(p + 4);
    p += 8;
    if (end > data.size()) {
      why = "track runs past the end of the file";
      return std::nullopt;
    }
    unsigned long tick = 0;
    bool ended = false;
    while (p < end && !ended) {
      unsigned long delta = 0;
      for (int n = 0;; ++n) {
        if (p >= end || n == 4) {
          why = "bad delta time";
          return std::nullopt;
        }
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
        unsigned len = byte(p++);
        p += len;
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
        why = "unexpected status byte";
        return std::nullopt;
      }
    }
    if (!ended) {
      why = "track without its end";
      return std::nullopt;
    }
    p = end;
  }
  return notes;
}

std::string normalise_blanks(const std::string& line) {
  std::string out;
  for (const std::string& w : split_words(line)) out += (out.empty() ? "" : " ") + w;
  return out;
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
bool check_example(const fs::path& program, const Example& ex, const fs::path& dir) {
  std::vector<std::string> args;
  int want_status = 0;
  bool midi = false;
  for (const std::string& w : ex.input.words) {
    if (w.rfind("exit=", 0) == 0) {
      want_status = std::atoi(w.c_str() + 5);
    } else {
      args.push_back(w);
      if (w == "-m") midi = true;
    }
  }
  const std::string out_name = midi ? "example.mid" : "example.sco";
  args.push_back("example.sor");
  args.push_back(out_name);

  fs::create_directories(dir);
  auto write = [&](const std::string& name, const std::vector<std::string>& lines) {
    fs::create_directories((dir / name).parent_path());
    std::ofstream f(dir / name, std::ios::binary);
    for (const std::string& l : lines) f << l << '\n';
  };
  for (const Block& f : ex.files) write(f.words.empty() ? "unnamed" : f.words[0], f.lines);
  write("example.sor", ex.input.lines);

  std::string out, err;
  int status = run_in(program, args, dir, out, err);
  if (status < 0 || !WIFEXITED(status) || WEXITSTATUS(status) >= 126) {
    std::printf("line %d: sorvel could not be run or did not exit normally\n", ex.input.line);
    return false;
  }
  bool ok = true;
  auto fail = [&](int line, const std::string& what) {
    std::printf("line %d: %s\n", line, what.c_str());
    ok = false;
  };
  if (WEXITSTATUS(status) != want_status)
    fail(ex.input.line, "exit status " + std::to_string(WEXITSTATUS(status)) + ", expected " +
                            std::to_string(want_status));

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
    if (c.kind == "score") {
      std::optional<std::string> score = read_file(dir / out_name);
      if (!score) {
        fail(c.line, "no score was written");
        continue;
      }
      bool full = !c.words.empty() && c.words[0] == "full";
      std::vector<std::string> want = trimmed(c.lines, !full);
      std::vector<std::string> got = full ? trimmed(split_lines(*score), false) : score_events(*score);
      if (want != got) {
        fail(c.line, "the score differs");
        show_difference(want, got);
      }
    } else if (c.kind == "messages") {
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
    } else if (c.kind == "midi") {
      std::optional<std::string> data = read_file(dir / out_name);
      std::string why;
      std::optional<std::vector<std::string>> got;
      if (data) got = midi_listing(*data, why);
      if (!got) {
        fail(c.line, "no readable MIDI file: " + (data ? why : std::string("not written")));
        continue;
      }
      std::vector<std::string> want;
      for (const std::string& l : trimmed(c.lines, true)) want.push_back(normalise_blanks(l));
      if (want != *got) {
        fail(c.line, "the MIDI notes differ");
        show_difference(want, *got);
      }
    } else if (c.kind == "file") {
      std::string name = c.words.empty() ? "" : c.words[0];
      std::optional<std::string> text = read_file(dir / name);
      if (!text) {
        fail(c.line, "the run left no file \"" + name + "\"");
        continue;
      }
      std::vector<std::string> want = trimmed(c.lines, false), got = trimmed(split_lines(*text), false);
      if (want != got) {
        fail(c.line, "the file \"" + name + "\" differs");
        show_difference(want, got);
      }
    }
  }
  return ok;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: run_guide SORVEL DOC.md\n");
    return 2;
  }
  const fs::path program = fs::absolute(argv[1]);
  std::optional<std::string> text = read_file(argv[2]);
  if (!text) {
    std::fprintf(stderr, "run_guide: cannot read %s\n", argv[2]);
    return 2;
  }

  std::vector<Example> examples;
  std::vector<Block> pending_files;
  bool bad_layout = false;
  for (Block& b : read_blocks(*text)) {
    if (b.kind == "unclosed") {
      bad_layout = true;
    } else if (b.kind == "sorvel") {
      examples.push_back(Example{b, pending_files, {}});
      pending_files.clear();
    } else if (b.kind == "sorvel-file") {
      if (b.words.size() != 1) {
        std::printf("line %d: a sorvel-file block needs one file name\n", b.line);
        bad_layout = true;
      }
      pending_files.push_back(b);
    } else if (b.kind == "csound" && !b.words.empty()) {
      fs::path shipped = fs::absolute(argv[2]).parent_path().parent_path() / b.words[0];
      std::optional<std::string> file = read_file(shipped);
      if (!file) {
        std::printf("line %d: cannot read %s\n", b.line, shipped.c_str());
        bad_layout = true;
      } else if (trimmed(split_lines(*file), false) != trimmed(b.lines, false)) {
        std::printf("line %d: the block differs from %s\n", b.line, b.words[0].c_str());
        show_difference(trimmed(split_lines(*file), false), trimmed(b.lines, false));
        bad_layout = true;
      }
    } else if (is_check(b.kind)) {
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

  char pattern[] = "/tmp/sorvel-guide-XXXXXX";
  if (!mkdtemp(pattern)) {
    std::fprintf(stderr, "run_guide: cannot make a temporary directory\n");
    return 2;
  }
  const fs::path work = pattern;
  int failed = 0;
  for (size_t i = 0; i < examples.size(); ++i) {
    if (!check_example(program, examples[i], work / std::to_string(i + 1))) ++failed;
  }
  std::error_code ec;
  fs::remove_all(work, ec);

  if (bad_layout) std::printf("%s: the document has faults outside its examples (see above)\n", argv[2]);
  if (examples.empty())
    std::printf("%s: no example found\n", argv[2]);
  else if (failed)
    std::printf("%s: %d of %zu examples fail\n", argv[2], failed, examples.size());
  else
    std::printf("%s: all %zu examples hold\n", argv[2], examples.size());
  return (failed || bad_layout || examples.empty()) ? 1 : 0;
}
