// The source reader: the line buffer through which every parser reads, with
// its scan position, line number and input stream, and the scanning
// primitives that move the position.
#pragma once

#include <cstdio>

#include "base/run_state.h"

namespace sorvel {

constexpr int kLineSize = 2048;  // the line buffer; a line holds at most 2047 characters

class Source {
 public:
  Source(Run& run, FILE* fin) : run(run), fin(fin) { buffer[0] = '\0'; }

  Run& run;
  FILE* fin;
  char buffer[kLineSize];
  int pos = 0;   // scan position, 0-based
  int line = 0;  // lines read so far; the first line is 1
  long expansions = 0;  // macro expansions made while reading the current line

  // Reads and preprocesses the next line: -1 at end of input, 0 on success, or
  // a positive error number.
  int get_buff();

  // The character at the scan position.
  int cur() const { return buffer[pos]; }
  int at(int i) const { return buffer[i]; }
  bool at_line_end() const { return buffer[pos] == '\0'; }
  bool at_eof() const { return std::feof(fin) != 0 || std::ferror(fin) != 0; }
  // The character at the scan position, then a step forward (never past the
  // end of the line).
  int get_c() {
    int c = buffer[pos];
    if (c) ++pos;
    return c;
  }

  // 1 when a comment starts at the position: kind 0 for ";", 1 for "/*".
  int is_comment(int& kind) const;
  // Skips one comment, reading further lines for a block comment; 0, or the
  // non-zero result of get_buff.
  int skip_comment(int kind);
  // Skips white space, reading further lines while the input lasts.
  int skip_lines();
  // White space, at most one comment, white space; 0 or a positive error.
  int skip_wc();
  // As skip_wc, and one "," or "/" after the comment.
  int skip_stuff();
  // White space (across lines), then "(" must follow: kOk, or kErrCharsBeforeCommandParen.
  int good_cmd_format();

  // Number scanners: 1 on success (the position moves past the number), 0
  // when no number is there. None of them reads further lines.
  int get_i(int& value);         // -32768..32767
  int get_li(int& value);        // signed 32-bit
  int get_ui(unsigned& value);   // 0..65535
  int get_uli(unsigned& value);  // unsigned 32-bit
  int get_f(float& value);
  int get_df(double& value);

  // Steps over white space within the line.
  void skip_blanks();

 private:
  // Tells the observer that the line just read goes on in the next one.
  void report_split();

  unsigned char marks_[kLineSize];
};

// The digits at `pos` as the part after a decimal point, each taken on to
// `lead` (the digits before the point, or 0): lead * 10^k + digits over a
// 32-bit integer divisor 10^k, which wraps past nine decimals. The position
// moves past the digits. The real-number scanners form their fractions so.
float read_fraction(const char* buffer, int& pos, float lead);

// 1 for white space, "/", ",", "'" and ":".
int is_separator(int c);

}  // namespace sorvel
