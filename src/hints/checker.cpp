#include "hints/checker.h"

#include <algorithm>
#include <cstring>
#include <numeric>

#include "base/catalog.h"
#include "hints/families.h"
#include "hints/messages.h"

namespace sorvel {

namespace {

// A run's own code: "W12", "E42".
std::string numbered(char letter, int number) {
  char text[16];
  std::snprintf(text, sizeof text, "%c%d", letter, number);
  return text;
}

// The caret's column as the run prints it, kept within the line (a caret
// past the line's end shows at its end).
int caret_column(const char* text, int pos) {
  const int length = text ? static_cast<int>(std::strlen(text)) : 0;
  return std::clamp(pos, 0, length);
}

// Errors the run prints without a line: the whole-file faults.
bool has_line(int number) {
  if (number == kErrCommentsMismatched || number == kErrPfieldsMismatchHeader ||
      number == kErrEofBeforeBrace || number == kErrEofInMacroBody || number == kErrTempFile)
    return false;
  return is_catalogued_error(number) || number > 9;
}

}  // namespace

HintsChecker::HintsChecker(const Run& run) : run_(run) { add_families(run, found_, families_); }

template <class Call>
void HintsChecker::each(int line, Call call) {
  if (line > 0) last_line_ = line;
  for (auto& family : families_) call(*family);
  settle();
}

void HintsChecker::settle() {
  for (size_t i = order_.size(); i < found_.size(); ++i)
    order_.push_back(found_[i].line > 0 ? found_[i].line : last_line_);
}

void HintsChecker::add_own(Finding f, int at) {
  settle();
  found_.push_back(std::move(f));
  order_.push_back(at);
}

std::string HintsChecker::screen_text() const {
  if (!screen_) return {};
  std::fflush(screen_);
  const long end = std::ftell(screen_);
  if (end <= 0 || std::fseek(screen_, 0, SEEK_SET) != 0) return {};
  std::string text(static_cast<size_t>(end), '\0');
  text.resize(std::fread(text.data(), 1, text.size(), screen_));
  std::fseek(screen_, 0, SEEK_END);
  return text;
}

void HintsChecker::file_lines(int run_line, const char* file, int file_line) {
  lines_.start(run_line, file ? file : "", file_line);
  each(0, [&](Family& f) { f.file_lines(run_line, file, file_line); });
}

void HintsChecker::include_missing(const char* name, const char* from, int line, int column) {
  include_seen_ = true;
  include_line_ = line;
  include_column_ = column;
  each(line, [&](Family& f) { f.include_missing(name, from, line, column); });
}

void HintsChecker::line_split(int line) {
  lines_.split(line);
  each(line, [&](Family& f) { f.line_split(line); });
}

void HintsChecker::directive(int line, const char* keyword, const char* written, int begin,
                             int length) {
  each(line, [&](Family& f) { f.directive(line, keyword, written, begin, length); });
}

void HintsChecker::name_missing(int line, char kind, const char* name, int begin, int end) {
  each(line, [&](Family& f) { f.name_missing(line, kind, name, begin, end); });
}

void HintsChecker::block_start(int line, int index, int I_NO, float SBEAT, double STIME,
                               bool in_beats) {
  each(line, [&](Family& f) { f.block_start(line, index, I_NO, SBEAT, STIME, in_beats); });
}

void HintsChecker::block_end(int line) {
  each(line, [&](Family& f) { f.block_end(line); });
}

void HintsChecker::pfield_start(int line, int P_NO, int IN_TYPE, int OUT_TYPE) {
  each(line, [&](Family& f) { f.pfield_start(line, P_NO, IN_TYPE, OUT_TYPE); });
}

void HintsChecker::value_read(int line, const char* text, int begin, int end, int IN_TYPE,
                              float value) {
  each(line, [&](Family& f) { f.value_read(line, text, begin, end, IN_TYPE, value); });
}

void HintsChecker::rhythm_timed(int line, int begin, int end, float beat, float beats,
                                double seconds) {
  each(line, [&](Family& f) { f.rhythm_timed(line, begin, end, beat, beats, seconds); });
}

void HintsChecker::value_failed(int line, const char* text, int begin, int end, int IN_TYPE) {
  each(line, [&](Family& f) { f.value_failed(line, text, begin, end, IN_TYPE); });
}

void HintsChecker::block_filled(int line, int P_NO, float value, long count, bool one_group,
                                bool in_beats) {
  each(line, [&](Family& f) { f.block_filled(line, P_NO, value, count, one_group, in_beats); });
}

void HintsChecker::weights_failed(int line, const char* text, const float* weights,
                                  const WeightSpan* at, int count) {
  each(line, [&](Family& f) { f.weights_failed(line, text, weights, at, count); });
}

void HintsChecker::midi_note(int block, double seconds, unsigned long tick, int key, int velocity,
                             float key_value, float velocity_value) {
  each(0, [&](Family& f) {
    f.midi_note(block, seconds, tick, key, velocity, key_value, velocity_value);
  });
}

void HintsChecker::midi_block_left_out(int line, int block, int I_NO) {
  each(line, [&](Family& f) { f.midi_block_left_out(line, block, I_NO); });
}

void HintsChecker::warning(int number, int line, const char* text, int pos) {
  if (line > 0) last_line_ = line;
  // -s: the run's warnings stay silent here too. One warning repeated on its
  // line (a function that finds the block full at every step) is one finding
  // that says how often.
  const bool again = last_warning_ < found_.size() && last_warning_number_ == number &&
                     found_[last_warning_].line == line;
  if (again) {
    ++last_warning_count_;
  } else if (!run_.SUPRESS) {
    close_warning();
    last_warning_ = found_.size();
    last_warning_number_ = number;
    last_warning_count_ = 1;
    Finding w;
    w.line = line;
    w.column = w.end_column = line > 0 ? caret_column(text, pos) : -1;
    w.severity = "warning";
    w.code = numbered('W', number);
    w.message = one_line(warning_text(number));
    add_own(std::move(w), last_line_);
  }
  each(line, [&](Family& f) { f.warning(number, line, text, pos); });
}

void HintsChecker::error(int number, int line, const char* text, int pos) {
  if (line > 0) last_line_ = line;
  run_error_ = true;
  Finding e;
  e.severity = "error";
  e.code = numbered('E', number);
  if (number == kErrAlreadyPrinted || number == kErrCaretOnly) {
    // The text was printed where the failure arose; the run shows a caret
    // only for 1000.
    e.message = last_message(screen_text());
    e.line = line;
    e.column = number == kErrCaretOnly ? caret_column(text, pos) : -1;
  } else {
    e.message = one_line(error_text(number));
    e.line = has_line(number) ? line : 0;
    e.column = caret_column(text, pos);
  }
  if (e.message.empty()) e.message = "The run failed.";
  e.end_column = e.column;
  add_own(std::move(e), last_line_);
  each(line, [&](Family& f) { f.error(number, line, text, pos); });
}

void HintsChecker::close_warning() {
  if (last_warning_ < found_.size() && last_warning_count_ > 1)
    found_[last_warning_].message += " (" + std::to_string(last_warning_count_) + " times)";
  last_warning_ = static_cast<size_t>(-1);
}

std::vector<PlacedFinding> HintsChecker::finish(int status) {
  close_warning();
  for (auto& family : families_) family->finish();
  settle();
  if (status != 0 && !run_error_) {
    // A failure before the blocks were read (a file, the include pass): the
    // run printed its message and no error number.
    Finding e;
    e.severity = "error";
    e.code = "E0";
    e.message = last_message(screen_text());
    if (e.message.empty()) e.message = "The run failed.";
    if (include_seen_) {
      e.line = include_line_;
      e.column = e.end_column = include_column_;
    }
    add_own(std::move(e), include_seen_ ? include_line_ : 0);
  }

  // Run order; on one line the run's error first, then by column.
  std::vector<size_t> index(found_.size());
  std::iota(index.begin(), index.end(), size_t{0});
  auto is_error = [&](size_t i) { return found_[i].severity == std::string("error"); };
  std::stable_sort(index.begin(), index.end(), [&](size_t a, size_t b) {
    if (order_[a] != order_[b]) return order_[a] < order_[b];
    if (is_error(a) != is_error(b)) return is_error(a);
    return found_[a].column < found_[b].column;
  });

  const std::string input = run_.in_fname ? run_.in_fname : "";
  std::vector<PlacedFinding> placed;
  for (size_t i : index) {
    const Finding& f = found_[i];
    PlacedFinding p;
    p.file = input;
    if (f.line > 0) {
      const LineMap::Place at = lines_.place(f.line);
      if (!at.file.empty()) {
        p.file = at.file;
        p.line = at.line;
      } else {
        p.line = f.line;
      }
      if (f.column >= 0) {
        p.column = f.column + 1 + at.column;
        p.end_column = std::max(f.end_column, f.column) + 1 + at.column;
      }
    }
    p.severity = f.severity;
    p.code = f.code;
    p.message = f.message;
    p.has_fix = f.has_fix && p.column > 0;
    p.fix_text = f.fix_text;
    placed.push_back(std::move(p));
  }
  return placed;
}

}  // namespace sorvel
