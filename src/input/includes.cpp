#include "input/includes.h"

#include "base/catalog.h"
#include "base/chars.h"
#include "base/diag.h"
#include "input/comments.h"

namespace sorvel {

namespace {

constexpr int kMaxIncludes = 12;  // the main input and at most 11 include files in a run
constexpr int kNameMax = 255;     // characters of an include file name

// The copy state of one file: the character read before the current one,
// and the comments and ">" lines, in which a "#" is copied as it stands.
struct CopyState {
  int prev = ' ';
  CommentState comment;
};

// Copies one ordinary character and updates the state.
void copy_char(int c, FILE* tmp, CopyState& st) {
  std::putc(c, tmp);
  st.comment.step(st.prev, c, CommentRules::kIncludePass);
}

// After "#include": skips white space and reads |name|. Returns 0 with the
// name, or the failure result (message printed).
int read_include_name(Run& run, FILE* source, char (&name)[kNameMax + 1]) {
  int c;
  do c = std::getc(source);
  while (c != EOF && is_space(c));
  if (c != '|') {
    Mprintf(run, "\n\nInclude filename must be preceeded by a |.\n");
    return 1;
  }
  int read = 0, len = 0;
  while ((c = std::getc(source)) != EOF && c != '|') {
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

// Splices the file named by the directive just read into tmp.
int include_file(Run& run, FILE* source, FILE* tmp, int& counter) {
  char name[kNameMax + 1];
  int r = read_include_name(run, source, name);
  if (r) return r;
  long mark = std::ftell(source);
  FILE* f = run.includes ? run.includes->open_include(name) : std::fopen(name, "r");
  if (!f) {
    Mprintf(run, "\nBad include file name: \"%s\"\n\n", name);
    return kErrAlreadyPrinted;
  }
  Mprintf(run, "\n\tOpening include file \"%s\"...", name);
  r = parse_includes(run, f, tmp, counter);
  std::fclose(f);
  if (r > 0) return r;
  if (mark >= 0) std::fseek(source, mark, SEEK_SET);
  return kOk;
}

}  // namespace

int parse_includes(Run& run, FILE* source, FILE* tmp, int& counter) {
  if (++counter > kMaxIncludes) {
    Mprintf(run, "\n\nToo many embedded include files! (Max = %d)\n", kMaxIncludes);
    return 1;
  }
  CopyState st;
  int c;
  while ((c = std::getc(source)) != EOF) {
    if (c != '#' || st.comment.in()) {
      copy_char(c, tmp, st);
      st.prev = c;
      continue;
    }
    // A "#" that may begin "#include". The characters looked at after it are
    // copied as they stand (or, after "#in", dropped) without changing the
    // comment or line state. The end of the file is copied like a character:
    // as the byte of value 255, which the line reader turns into a blank, so
    // a file whose last line ends in "#" gives that line a blank after it.
    int c1 = std::getc(source);
    if (c1 != 'i') {
      std::putc('#', tmp);
      std::putc(c1, tmp);
      if (c1 == EOF) return 0;
      st.prev = c1;
      continue;
    }
    int c2 = std::getc(source);
    if (c2 != 'n') {
      std::putc('#', tmp);
      std::putc('i', tmp);
      std::putc(c2, tmp);
      if (c2 == EOF) return 0;
      st.prev = c2;
      continue;
    }
    // "#in": anything but "clude" drops what was read since the "#".
    const char* rest = "clude";
    int k = 0;
    int d = 'n';
    for (; rest[k]; ++k) {
      d = std::getc(source);
      if (d != rest[k]) break;
    }
    if (d == EOF) return 0;
    st.prev = d;
    if (rest[k]) continue;
    int r = include_file(run, source, tmp, counter);
    if (r > 0) return r;
    st.comment = CommentState{};
    st.prev = '|';
  }
  return 0;
}

}  // namespace sorvel
