#include "input/includes.h"

#include "base/catalog.h"
#include "base/chars.h"
#include "base/diag.h"
#include "base/observer.h"
#include "input/comments.h"

namespace sorvel {

namespace {

constexpr int kMaxIncludes = 12;  // the main input and at most 11 include files in a run
constexpr int kNameMax = 255;     // characters of an include file name

// The pass over all files: the temporary file, the include counter, and the
// lines written so far, which number the run's lines.
struct Pass {
  Run& run;
  FILE* tmp;
  int& counter;
  int lines = 0;             // newlines written to tmp
  bool at_line_start = true;  // the last byte written ended a line (or none was written)

  void put(int c) {
    std::putc(c, tmp);
    if (c == '\n') ++lines;
    at_line_start = c == '\n';
  }
};

// One file being copied: where it is read, and its own line and column
// (counted from the characters read, dropped ones included).
struct Reader {
  FILE* f;
  const char* name;
  int line = 1;
  int column = 0;  // of the next character, 0-based

  int get() {
    int c = std::getc(f);
    if (c == '\n') {
      ++line;
      column = 0;
    } else if (c != EOF) {
      ++column;
    }
    return c;
  }
};

// Tells the observer which line of `in` the run's next line holds: the line
// being written goes on (a character of it was written) or a new one begins.
void report_lines(const Pass& pass, const Reader& in) {
  if (!pass.run.observer) return;
  if (pass.at_line_start)
    pass.run.observer->file_lines(pass.lines + 1, in.name, in.line);
  else
    pass.run.observer->file_lines(pass.lines + 2, in.name, in.line + 1);
}

// The copy state of one file: the character read before the current one,
// and the comments and ">" lines, in which a "#" is copied as it stands.
struct CopyState {
  int prev = ' ';
  CommentState comment;
};

// Copies one ordinary character and updates the state.
void copy_char(int c, Pass& pass, CopyState& st) {
  pass.put(c);
  st.comment.step(st.prev, c, CommentRules::kIncludePass);
}

// After "#include": skips white space and reads |name|. Returns 0 with the
// name, or the failure result (message printed).
int read_include_name(Run& run, Reader& in, char (&name)[kNameMax + 1]) {
  int c;
  do c = in.get();
  while (c != EOF && is_space(c));
  if (c != '|') {
    Mprintf(run, "\n\nInclude filename must be preceeded by a |.\n");
    return 1;
  }
  int read = 0, len = 0;
  while ((c = in.get()) != EOF && c != '|') {
    if (++read > kNameMax) {
      Mprintf(run, "\nERROR: Include filename has exceeded maximum");
      Mprintf(run, "\nlength of %d characters.\n\n", kNameMax);
      return kErrAlreadyPrinted;
    }
    if (c != '\n') name[len++] = static_cast<char>(c);
  }
  name[len] = '\0';
  return kOk;
}

int copy_file(Pass& pass, Reader& in);

// Splices the file named by the directive just read into tmp; the
// directive's "#" stood at `hash_column` of the reader's line.
int include_file(Pass& pass, Reader& in, int hash_column) {
  Run& run = pass.run;
  const int hash_line = pass.lines + 1;
  char name[kNameMax + 1];
  int r = read_include_name(run, in, name);
  if (r) return r;
  long mark = std::ftell(in.f);
  FILE* f = run.includes ? run.includes->open_include(name) : std::fopen(name, "r");
  if (!f) {
    if (run.observer) run.observer->include_missing(name, in.name, hash_line, hash_column);
    Mprintf(run, "\nBad include file name: \"%s\"\n\n", name);
    return kErrAlreadyPrinted;
  }
  Mprintf(run, "\n\tOpening include file \"%s\"...", name);
  Reader included{f, name};
  if (run.observer) run.observer->file_lines(pass.lines + 1, name, 1);
  r = copy_file(pass, included);
  std::fclose(f);
  if (r > 0) return r;
  if (mark >= 0) std::fseek(in.f, mark, SEEK_SET);
  report_lines(pass, in);
  return kOk;
}

int copy_file(Pass& pass, Reader& in) {
  if (++pass.counter > kMaxIncludes) {
    Mprintf(pass.run, "\n\nToo many embedded include files! (Max = %d)\n", kMaxIncludes);
    return 1;
  }
  CopyState st;
  int c;
  while ((c = in.get()) != EOF) {
    if (c != '#' || st.comment.in()) {
      copy_char(c, pass, st);
      st.prev = c;
      continue;
    }
    // A "#" that may begin "#include". The characters looked at after it are
    // copied as they stand (or, after "#in", dropped) without changing the
    // comment or line state. The end of the file is copied like a character:
    // as the byte of value 255, which the line reader turns into a blank, so
    // a file whose last line ends in "#" gives that line a blank after it.
    const int hash_column = in.column - 1;
    int c1 = in.get();
    if (c1 != 'i') {
      pass.put('#');
      pass.put(c1);
      if (c1 == EOF) return 0;
      st.prev = c1;
      continue;
    }
    int c2 = in.get();
    if (c2 != 'n') {
      pass.put('#');
      pass.put('i');
      pass.put(c2);
      if (c2 == EOF) return 0;
      st.prev = c2;
      continue;
    }
    // "#in": anything but "clude" drops what was read since the "#".
    const char* rest = "clude";
    int k = 0;
    int d = 'n';
    for (; rest[k]; ++k) {
      d = in.get();
      if (d != rest[k]) break;
    }
    if (d == EOF) return 0;
    st.prev = d;
    if (rest[k]) {
      if (d == '\n') report_lines(pass, in);  // a line end dropped: the lines part
      continue;
    }
    int r = include_file(pass, in, hash_column);
    if (r > 0) return r;
    st.comment = CommentState{};
    st.prev = '|';
  }
  return 0;
}

}  // namespace

int parse_includes(Run& run, FILE* source, FILE* tmp, int& counter) {
  Pass pass{run, tmp, counter};
  Reader in{source, run.in_fname ? run.in_fname : ""};
  if (run.observer) run.observer->file_lines(1, in.name, 1);
  return copy_file(pass, in);
}

}  // namespace sorvel
