// Hints on data lists and blocks:
//   H13  "0,5" in a real p-field: two values, not a decimal comma;
//   H14  "1/2": two values, not a fraction;
//   H15  weights of a function that do not add up to 1: their sum and a
//        version that does;
//   H16  a block counted in beats whose data ran short, so that the last
//        value was repeated to fill it;
//   H17  a block whose "}" is missing before the next header (or before the
//        end of the input): the open block and the line of its header.
#pragma once

#include <string>

#include "hints/family.h"
#include "hints/line_map.h"

namespace sorvel {

class DataHints : public Family {
 public:
  using Family::Family;

  void file_lines(int run_line, const char* file, int file_line) override;
  void line_split(int line) override;
  void block_start(int line, int index, int I_NO, float SBEAT, double STIME,
                   bool in_beats) override;
  void block_end(int line) override;
  void value_read(int line, const char* text, int begin, int end, int IN_TYPE,
                  float value) override;
  void block_filled(int line, int P_NO, float value, long count, bool one_group,
                    bool in_beats) override;
  void weights_failed(int line, const char* text, const float* weights, const WeightSpan* at,
                      int count) override;
  void error(int number, int line, const char* text, int pos) override;

 private:
  // Where the run's lines come from, to name a line in a message.
  LineMap lines_;
  std::string place(int line, int from_line) const;

  // The block being read (header line 0: none).
  int open_line_ = 0;
  int open_I_NO_ = 0;

  // The last value read: where, and its text.
  int last_line_ = 0;
  int last_begin_ = 0;
  int last_end_ = 0;
  float last_value_ = 0.0f;
  std::string last_text_;
};

}  // namespace sorvel
