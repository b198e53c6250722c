#include "hints/line_map.h"

#include <algorithm>

namespace sorvel {

namespace {

constexpr int kLinePart = 2047;  // characters the run reads of a line at once

}  // namespace

void LineMap::start(int text_line, const std::string& file, int file_line) {
  while (!starts_.empty() && starts_.back().text_line >= text_line) starts_.pop_back();
  starts_.push_back({text_line, file, file_line});
}

void LineMap::split(int run_line) {
  if (splits_.empty() || splits_.back() < run_line) splits_.push_back(run_line);
}

LineMap::Place LineMap::place(int run_line) const {
  Place p;
  // Each split before the line made one run line more than there are lines;
  // the splits right before it are the parts of the same line.
  const auto before = std::lower_bound(splits_.begin(), splits_.end(), run_line);
  const int text_line = run_line - static_cast<int>(before - splits_.begin());
  int parts = 0;
  for (auto it = before; it != splits_.begin() && *(it - 1) == run_line - 1 - parts; --it) ++parts;
  p.column = parts * kLinePart;

  auto it = std::upper_bound(starts_.begin(), starts_.end(), text_line,
                             [](int l, const Start& s) { return l < s.text_line; });
  if (it == starts_.begin()) return p;
  --it;
  p.file = it->file;
  p.line = it->file_line + (text_line - it->text_line);
  return p;
}

}  // namespace sorvel
