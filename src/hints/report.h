// Printing the findings: one line each in the form compilers use
// ("file:line:col: severity: message"), or a JSON array for programs.
#pragma once

#include <string>
#include <vector>

namespace sorvel {

// A finding placed in its file: lines and columns from 1, 0 when there is
// none (a finding about the input as a whole has neither; one about a line
// without a known column has no column).
struct PlacedFinding {
  std::string file;
  int line = 0;
  int column = 0;
  int end_column = 0;  // exclusive; equal to column for a point
  std::string severity;
  std::string code;
  std::string message;
  bool has_fix = false;  // replace [column, end_column) of the line by fix_text
  std::string fix_text;
};

// "file:line:col: severity: message\n" for each finding ("file:line:" without
// a column, "file:" without a line).
std::string text_report(const std::vector<PlacedFinding>& findings);

// A JSON array of objects {"file", "line", "column", "end_column", "severity",
// "code", "message"} with "fix": {"line", "column", "end_column", "text"} when
// there is one; a missing line or column is null. Ends with a newline.
std::string json_report(const std::vector<PlacedFinding>& findings);

// `text` as a JSON string, quotes included. Characters below 32 and 127 are
// written \u00XX (as are '"' and '\' escaped); valid UTF-8 passes as it is;
// every byte that is not part of a valid UTF-8 sequence becomes \uFFFD.
std::string json_string(const std::string& text);

}  // namespace sorvel
