// Where the run's lines come from. The run reads its input with every
// include file spliced in, and a line that fills the line buffer is read in
// parts; the map turns a run line back into a file, a line of that file and
// the column at which the run line begins in it.
#pragma once

#include <string>
#include <vector>

namespace sorvel {

class LineMap {
 public:
  // From the spliced text's line `text_line` on (lines counted by their
  // line ends), the lines are those of `file` from `file_line` on. A later
  // start at the same line replaces an earlier one.
  void start(int text_line, const std::string& file, int file_line);
  // Run line `run_line` was the first part of a longer line: run line
  // run_line + 1 goes on with it. Splits are reported in run order.
  void split(int run_line);

  struct Place {
    std::string file;  // empty when no start covers the line
    int line = 0;      // the file's line, from 1
    int column = 0;    // where the run line begins in the file's line (0-based)
  };
  Place place(int run_line) const;

 private:
  struct Start {
    int text_line;
    std::string file;
    int file_line;
  };
  std::vector<Start> starts_;
  std::vector<int> splits_;  // increasing
};

}  // namespace sorvel
