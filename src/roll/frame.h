// The frame of the roll: which notes are drawn, where a time and a value
// fall in the picture, and the axes, grid and beat lines around the plot.
#pragma once

#include <string>
#include <vector>

#include "roll/roll.h"

namespace sorvel {

// The notes drawn, by index: all of them, or with options.from / options.to
// those that sound within that span (start before `to` and end after `from`;
// a note of no length when it starts within it).
std::vector<size_t> notes_in_range(const Roll& roll, const RollOptions& options);
bool in_range(const RollNote& n, const RollOptions& options);

struct Frame {
  Frame(const Roll& roll, const RollOptions& options, const std::vector<size_t>& drawn);

  double width = 0.0, height = 0.0;  // the whole picture
  double left = 64.0, top = 40.0;    // where the plot begins
  double plot_w = 0.0, plot_h = 0.0;
  double t0 = 0.0, t1 = 1.0;  // seconds at the left and the right edge
  bool rows = false;          // one row per semitone, labelled with note names
  bool midi = false;          // the rows are MIDI keys
  double lo = 0.0, hi = 1.0;  // values at the bottom and the top
  double note_h = 6.0;        // height of a note (of a row)
  std::string y_title;

  double x(double t) const { return left + (t - t0) / (t1 - t0) * plot_w; }
  // The top edge of a note of value v.
  double y_top(double v) const;
};

// Background grid, beat lines with their numbers, and both axes with their
// ticks, labels and titles.
void draw_frame(std::string& s, const Roll& roll, const Frame& f);

}  // namespace sorvel
