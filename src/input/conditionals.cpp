// Conditional sections: "#if(value)" ... "#endif". A value of 0 skips the
// lines up to the matching "#endif"; sections nest.
#include "input/conditionals.h"

#include "base/catalog.h"
#include "input/comments.h"
#include "input/constants.h"
#include "input/macros.h"
#include "input/names.h"
#include "input/preproc.h"

namespace sorvel {

namespace {

bool text_at(const char* buffer, int pos, const char* word) {
  for (int k = 0; word[k]; ++k) {
    int i = pos + k;
    if (i < 0 || i >= kLineSize || buffer[i] != word[k]) return false;
  }
  return true;
}

}  // namespace

int in_if0(const Run& run) { return run.IN_IF0; }

int is_if(const char* buffer, int pos) { return text_at(buffer, pos, "if(") ? 1 : 0; }

int is_endif(const char* buffer, int pos) { return text_at(buffer, pos, "endif") ? 1 : 0; }

int get_if(Source& src, float& value) {
  if (!is_if(src.buffer, src.pos)) return kErrIfStatement;
  src.pos += 3;
  src.skip_blanks();
  // The condition may be a macro or a constant whose text is a number.
  if (src.cur() == '$') {
    ++src.pos;
    int r = expand_macro(src);
    if (r > 0) return r;
  }
  if (src.cur() == '~') {
    ++src.pos;
    int r = expand_variables(src);
    if (r > 0) return r;
  }
  if (!is_digit(src.cur()) || !src.get_f(value)) return kErrIfValue;
  src.skip_blanks();
  if (src.cur() != ')') return kErrIfParen;
  ++src.pos;
  return kOk;
}

int do_if(Source& src) {
  Run& run = src.run;
  // A malformed condition is not reported here: the value of the previous
  // "#if" decides.
  get_if(src, run.if_value);
  run.start_level = run.IF_MATCH;
  ++run.IF_MATCH;
  if (run.if_value != 0.0f) return kOk;

  run.IN_IF0 = 1;
  CommentState comment;  // "#if" and "#endif" in a comment do not count
  for (;;) {
    int c = src.cur();
    if (c == '\0') {
      if (src.at_eof()) return kErrIfEof;
      int r = src.get_buff();
      if (r > 0) return r;
      comment.line = false;
      continue;
    }
    const bool was_comment = comment.in();
    if (int mark = comment.step(c, char_at(src, src.pos + 1), CommentRules::kOutsideComments)) {
      src.pos += mark;
    } else if (was_comment || comment.in()) {  // comment text, or the ";" just met
      ++src.pos;
    } else if (c == '#' && is_if(src.buffer, src.pos + 1)) {
      ++run.IF_MATCH;
      src.pos += 4;
    } else if (c == '#' && is_endif(src.buffer, src.pos + 1)) {
      ++src.pos;
      int r = do_endif(src);
      if (r > 0) return r;
      if (run.IF_MATCH == run.start_level) {
        run.IN_IF0 = 0;
        return kOk;
      }
    } else {
      ++src.pos;
    }
  }
}

int do_if_interface(Source& src) { return do_if(src); }

int do_endif(Source& src) {
  if (!is_endif(src.buffer, src.pos)) return kErrEndifStatement;
  src.pos += 5;
  if (src.run.IF_MATCH < 1) return kErrEndifMismatched;
  --src.run.IF_MATCH;
  return kOk;
}

int ifdef_match(const Run& run) { return run.IF_MATCH == 0 ? 1 : 0; }

}  // namespace sorvel
