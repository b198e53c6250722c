// The two passes that run over every line as it is read: the macro pass
// (records where definitions stand, expands calls) and the constant pass
// (expands references). Both follow comments the same way, through the
// run-wide IN_COMMENT, so a block comment left open by one line, or by the
// macro pass, is still open for what comes next.
#include "input/comments.h"
#include "input/constants.h"
#include "input/macros.h"
#include "input/names.h"
#include "input/preproc.h"

namespace sorvel {

namespace {

constexpr CommentRules kRules = CommentRules::kMarksAnywhere;

// Moves the comment state over the character at `i`: 2 for a mark, else 0.
int track_comment(const Source& src, int i, CommentState& state) {
  return state.step(char_at(src, i), char_at(src, i + 1), kRules);
}

// A ">" at this index of the line does not stop definitions from being seen.
constexpr int kLiteralGtIndex = 85;

}  // namespace

int parse_macros(Source& src, unsigned char* marks) {
  Run& run = src.run;
  CommentState state;
  state.block = run.IN_COMMENT ? 1 : 0;
  int count = run.IN_MACRO_DEF;  // "#"s of an unfinished definition
  bool direct_out = false;       // a ">" was met: "#" is plain text from here on
  int& i = src.pos;
  while (char_at(src, i)) {
    int c = char_at(src, i);
    if (count > 0) {
      // Inside a definition: every character is marked; "#"s outside its
      // comments are counted up to the one that closes the body.
      bool was_comment = state.in();
      int mark = track_comment(src, i, state);
      int n = mark ? mark : 1;
      for (int k = 0; k < n && i + k < kLineSize; ++k) marks[i + k] = 1;
      if (!was_comment && !mark && c == '#' && ++count == 3) count = 0;
      i += n;
      continue;
    }
    if (int mark = track_comment(src, i, state)) {
      i += mark;
      continue;
    }
    if (state.in()) {  // comment text, or the ";" just met
      ++i;
      continue;
    }
    if (c == '>' && i != kLiteralGtIndex) direct_out = true;
    if (c == '#' && !direct_out) {
      int next = char_at(src, i + 1);
      if (next == 'u' || next == 'c' || next == 'i' || next == 'e') break;  // a statement
      count = 1;
      marks[i++] = 1;
      continue;
    }
    if (c == '$') {
      ++i;
      int r = expand_macro(src);
      if (r > 0) return r;
      // Scan the inserted text again (a call at the very start of the line
      // steps one character on first).
      if (i > 0) --i;
      ++i;
      continue;
    }
    ++i;
  }
  run.IN_MACRO_DEF = count;
  run.IN_COMMENT = state.block ? 1 : 0;
  src.pos = 0;
  return 0;
}

int parse_variables(Source& src, const unsigned char* marks) {
  Run& run = src.run;
  CommentState state;
  state.block = run.IN_COMMENT ? 1 : 0;
  int& i = src.pos;
  while (char_at(src, i)) {
    if (int mark = track_comment(src, i, state)) {
      i += mark;
      continue;
    }
    if (!state.in() && src.buffer[i] == '~' && !marks[i]) {
      ++i;
      int r = expand_variables(src);
      if (r > 0) return r;
      continue;
    }
    ++i;
  }
  run.IN_COMMENT = state.block ? 1 : 0;
  src.pos = 0;
  return 0;
}

}  // namespace sorvel
