// The hints checker: listens to a run, hands every call to each family of
// hints, turns the run's own errors and warnings into findings, and at the
// end places every finding in the file and line where its text stands.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "base/observer.h"
#include "base/run_state.h"
#include "hints/family.h"
#include "hints/finding.h"
#include "hints/line_map.h"
#include "hints/report.h"

namespace sorvel {

class HintsChecker : public Observer {
 public:
  explicit HintsChecker(const Run& run);

  // The stream the run prints its messages on (its screen): read back for the
  // text of a failure that the catalogue does not hold ("Bad include file
  // name", a file that cannot be opened). It must be readable as well as
  // writable (a temporary file).
  void capture(FILE* screen) { screen_ = screen; }

  // After the run, with its exit status: the findings in run order, each in
  // its own file. A failed run without an error of its own gets one with the
  // last message it printed.
  std::vector<PlacedFinding> finish(int status);

  void file_lines(int run_line, const char* file, int file_line) override;
  void include_missing(const char* name, const char* from, int line, int column) override;
  void line_split(int line) override;
  void directive(int line, const char* keyword, const char* written, int begin,
                 int length) override;
  void name_missing(int line, char kind, const char* name, int begin, int end) override;
  void block_start(int line, int index, int I_NO, float SBEAT, double STIME,
                   bool in_beats) override;
  void block_end(int line) override;
  void pfield_start(int line, int P_NO, int IN_TYPE, int OUT_TYPE) override;
  void value_read(int line, const char* text, int begin, int end, int IN_TYPE,
                  float value) override;
  void rhythm_timed(int line, int begin, int end, float beat, float beats,
                    double seconds) override;
  void value_failed(int line, const char* text, int begin, int end, int IN_TYPE) override;
  void block_filled(int line, int P_NO, float value, long count, bool one_group,
                    bool in_beats) override;
  void weights_failed(int line, const char* text, const float* weights, const WeightSpan* at,
                      int count) override;
  void midi_note(int block, double seconds, unsigned long tick, int key, int velocity,
                 float key_value, float velocity_value) override;
  void midi_block_left_out(int line, int block, int I_NO) override;
  void warning(int number, int line, const char* text, int pos) override;
  void error(int number, int line, const char* text, int pos) override;

 private:
  // Runs `call` on every family, then gives the findings it made their
  // place in run order.
  template <class Call>
  void each(int line, Call call);
  void settle();
  // Adds a finding of the run itself, sorted at run line `at`.
  void add_own(Finding f, int at);
  std::string screen_text() const;
  // Ends the run of one warning repeated: its count goes into its message.
  void close_warning();

  const Run& run_;
  Findings found_;
  std::vector<int> order_;  // per finding: the run line it is sorted at
  std::vector<std::unique_ptr<Family>> families_;
  LineMap lines_;
  FILE* screen_ = nullptr;
  int last_line_ = 0;  // the latest run line a call named
  bool run_error_ = false;
  size_t last_warning_ = static_cast<size_t>(-1);  // the latest warning's finding
  int last_warning_number_ = 0;
  long last_warning_count_ = 0;  // how often it came in a row
  bool include_seen_ = false;  // an include that could not be opened, at:
  int include_line_ = 0, include_column_ = 0;
};

}  // namespace sorvel
