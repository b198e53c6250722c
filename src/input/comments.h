// Comments as text is walked character by character: a block comment runs
// from "/*" to "*/", a line comment from ";" to the end of the line. The
// walkers of the input differ in which marks count where, each for a reason
// its rules name; one state and one step serve them all.
#pragma once

namespace sorvel {

enum class CommentRules {
  // Every mark counts wherever it stands (the macro and constant passes over
  // each line): "/*" opens a block comment, "*/" closes it and ends a ";"
  // comment too, ";" begins a line comment, which a newline that an expanded
  // body put in the line ends. So "*/" after a ";" ends the comment, and "/*"
  // after a ";" opens a block comment that later lines carry. One "*/" closes
  // whatever "/*"s came before.
  kMarksAnywhere,
  // A mark counts only where it begins or ends something (macro bodies,
  // skipped conditional sections): ";" and "/*" outside comments, "*/" inside
  // a block comment. One "*/" closes the block comment; the walker ends a
  // line comment where it reads the next line.
  kOutsideComments,
  // Block comments nest and only their marks count (the reader skipping a
  // comment): "/*" opens one more, "*/" closes one.
  kNested,
  // The include pass, which reads a stream a character at a time and so sees
  // each mark from its second character, the two characters given as (the
  // one before, this one): "/*" opens one more block comment, "*/" closes one
  // when one is open (so "/*/" opens and closes); ";" and ">" not after "/"
  // begin the rest of a line that holds no directive, which a newline ends.
  kIncludePass,
};

struct CommentState {
  int block = 0;      // block comments open (at most 1 unless they nest)
  bool line = false;  // inside a ";" comment (or a ">" line, for the include pass)

  bool in() const { return block > 0 || line; }

  // Moves the state over the character c, followed by `next`. Returns 2 when
  // the two are a mark that counts ("/*" or "*/"), else 0.
  int step(int c, int next, CommentRules rules) {
    const bool opens = c == '/' && next == '*';
    const bool closes = c == '*' && next == '/';
    switch (rules) {
      case CommentRules::kMarksAnywhere:
        if (opens) {
          block = 1;
          return 2;
        }
        if (closes) {
          block = 0;
          line = false;
          return 2;
        }
        if (c == ';') line = true;
        if (c == '\n') line = false;
        return 0;
      case CommentRules::kOutsideComments:
        if (!in()) {
          if (c == ';') line = true;
          if (!opens) return 0;
          block = 1;
          return 2;
        }
        if (block == 0 || !closes) return 0;
        block = 0;
        return 2;
      case CommentRules::kNested:
        if (opens) {
          ++block;
          return 2;
        }
        if (!closes || block == 0) return 0;
        --block;
        return 2;
      case CommentRules::kIncludePass:
        if ((next == ';' || next == '>') && c != '/') line = true;
        if (next == '\n') line = false;
        return step(c, next, CommentRules::kNested);
    }
    return 0;
  }
};

}  // namespace sorvel
