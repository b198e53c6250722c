// One finding of the hints checker: a place in the run's text, how serious
// it is, a stable code, what to say, and the text that would fix it.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace sorvel {

struct Finding {
  int line = 0;        // the run's line (1-based; 0: the input as a whole)
  int column = 0;      // 0-based column in that line (-1: the line as a whole)
  int end_column = 0;  // end of the span the finding is about (exclusive); == column: a point
  const char* severity = "hint";  // "hint", "warning" or "error"
  std::string code;               // "H01"...; a run's error "E38", warning "W12"
  std::string message;
  bool has_fix = false;           // replace [column, end_column) of the line by fix_text
  std::string fix_text;
};

// Where the findings go: every family of hints adds to one list.
using Findings = std::vector<Finding>;

// A hint about the characters [begin, end) of a run line.
inline Finding hint(int line, int begin, int end, const char* code, std::string message) {
  Finding f;
  f.line = line;
  f.column = begin;
  f.end_column = end;
  f.code = code;
  f.message = std::move(message);
  return f;
}

// The same finding, offering `text` in place of its span.
inline Finding with_fix(Finding f, std::string text) {
  f.has_fix = true;
  f.fix_text = std::move(text);
  return f;
}

}  // namespace sorvel
