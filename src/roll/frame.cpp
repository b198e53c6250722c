#include "roll/frame.h"

#include <algorithm>
#include <cmath>

#include "base/numtext.h"
#include "roll/scale.h"
#include "roll/svgtext.h"

namespace sorvel {

namespace {

constexpr double kRight = 190.0;   // room for the legend
constexpr double kBottom = 48.0;   // room for the time axis
constexpr double kRowsHeight = 480.0;  // the plot's height when it has rows
constexpr double kLinearHeight = 400.0;
constexpr int kMostRows = 240;  // beyond that many semitones, a plain scale

void line(std::string& s, const char* cls, double x1, double y1, double x2, double y2) {
  s += "<line class=\"";
  s += cls;
  s += "\" x1=\"";
  append_coord(s, x1);
  s += "\" y1=\"";
  append_coord(s, y1);
  s += "\" x2=\"";
  append_coord(s, x2);
  s += "\" y2=\"";
  append_coord(s, y2);
  s += "\"/>\n";
}

void text(std::string& s, double x, double y, const std::string& what, const char* extra = "") {
  s += "<text x=\"";
  append_coord(s, x);
  s += "\" y=\"";
  append_coord(s, y);
  s += '"';
  s += extra;
  s += '>';
  append_escaped(s, what);
  s += "</text>\n";
}

std::string tick_label(double v, int decimals) {
  std::string s;
  append_text_number(s, v, decimals);
  if (s == "-0") s = "0";
  return s;
}

}  // namespace

bool in_range(const RollNote& n, const RollOptions& options) {
  const double start = n.start, end = start + static_cast<double>(n.dur);
  if (options.to >= 0.0 && !(start < options.to)) return false;
  if (options.from >= 0.0 && !(end > options.from || (n.dur <= 0.0f && start >= options.from)))
    return false;
  return true;
}

std::vector<size_t> notes_in_range(const Roll& roll, const RollOptions& options) {
  std::vector<size_t> drawn;
  drawn.reserve(roll.notes.size());
  for (size_t i = 0; i < roll.notes.size(); ++i)
    if (in_range(roll.notes[i], options)) drawn.push_back(i);
  return drawn;
}

Frame::Frame(const Roll& roll, const RollOptions& options, const std::vector<size_t>& drawn) {
  midi = roll.midi;
  if (drawn.size() > options.max_notes) top += 18.0;  // room to say it is a density image
  width = std::clamp(static_cast<double>(options.width), 400.0, 100000.0);
  plot_w = width - left - kRight;

  // Time: the span asked for, else from 0 (or an earlier start) to the last end.
  double first = 0.0, last = 0.0;
  for (size_t i : drawn) {
    const RollNote& n = roll.notes[i];
    const double start = n.start, end = start + std::max(0.0, static_cast<double>(n.dur));
    if (std::isfinite(start)) first = std::min(first, start);
    if (std::isfinite(end)) last = std::max(last, end);
  }
  t0 = options.from >= 0.0 ? options.from : first;
  t1 = options.to >= 0.0 ? options.to : last;
  if (!(t1 > t0)) t1 = t0 + 1.0;
  if (!(t1 > t0)) t1 = t0 + std::abs(t0) * 0.05;  // too late for a second to show

  // Values: every semitone a row when all blocks drawn hold pitches, else a
  // plain scale.
  bool all_semitones = !drawn.empty();
  double vmin = HUGE_VAL, vmax = -HUGE_VAL;
  std::vector<std::string> titles;
  std::vector<bool> seen(roll.blocks.size(), false);
  for (size_t i : drawn) {
    const RollNote& n = roll.notes[i];
    if (std::isfinite(n.y)) {
      vmin = std::min(vmin, static_cast<double>(n.y));
      vmax = std::max(vmax, static_cast<double>(n.y));
    }
    if (seen[n.block]) continue;
    seen[n.block] = true;
    const RollBlock& b = roll.blocks[n.block];
    all_semitones = all_semitones && b.semitones;
    std::string t = midi ? "key" : (b.pitch ? "p" : "(no p4)");
    if (!midi && b.pitch) append_long(t, b.pitch);
    if (std::find(titles.begin(), titles.end(), t) == titles.end()) titles.push_back(t);
  }
  if (!(vmin <= vmax)) vmin = vmax = 0.0;
  for (size_t k = 0; k < titles.size(); ++k) {
    if (k) y_title += ", ";
    y_title += titles[k];
  }
  if (y_title.empty()) y_title = "p4";
  if (all_semitones) y_title.insert(0, midi ? "MIDI " : "pitch, ");

  rows = all_semitones && vmax - vmin <= kMostRows;
  if (rows) {
    lo = std::floor(vmin) - 1.0;
    hi = std::ceil(vmax) + 1.0;
    note_h = std::clamp(kRowsHeight / (hi - lo + 1.0), 2.0, 14.0);
    plot_h = (hi - lo + 1.0) * note_h;
  } else {
    const double pad = vmax > vmin ? (vmax - vmin) * 0.05 : 1.0;
    lo = vmin - pad;
    hi = vmax + pad;
    if (!(hi > lo)) {  // values too large for a pad of 1 to show
      lo = vmin - std::abs(vmin) * 0.05;
      hi = vmax + std::abs(vmax) * 0.05;
    }
    note_h = 6.0;
    plot_h = kLinearHeight;
  }
  const double legend_h = 18.0 * static_cast<double>(roll.blocks.size()) + 40.0;
  height = top + std::max(plot_h, legend_h) + kBottom;
}

double Frame::y_top(double v) const {
  if (!std::isfinite(v)) v = lo;
  if (rows) return top + (hi - v) * note_h;
  return top + (hi - v) / (hi - lo) * plot_h - note_h / 2.0;
}

void draw_frame(std::string& s, const Roll& roll, const Frame& f) {
  const double bottom = f.top + f.plot_h, right = f.left + f.plot_w;

  // Beat lines, thinned to every 2nd, 4th ... beat when they would crowd,
  // and numbered where there is room.
  size_t first = 0, last = 0;
  while (first < roll.beats.size() && roll.beats[first] < f.t0) ++first;
  last = first;
  while (last < roll.beats.size() && roll.beats[last] <= f.t1) ++last;
  const double count = static_cast<double>(last - first);
  size_t step = 1, label_step = 1;
  while (count / static_cast<double>(step) > f.plot_w / 6.0) step *= 2;
  // A label needs room for its digits and a gap.
  const double label_w = 12.0 + 7.0 * static_cast<double>(std::to_string(last).size());
  label_step = step;
  while (count / static_cast<double>(label_step) > f.plot_w / label_w) label_step *= 2;
  s += "<g class=\"beats\" stroke=\"#d8d8d8\" stroke-width=\"1\">\n";
  for (size_t b = first; b < last; ++b)
    if (b % step == 0) line(s, "beat", f.x(roll.beats[b]), f.top, f.x(roll.beats[b]), bottom);
  s += "</g>\n<g class=\"beat-labels\" fill=\"#909090\" text-anchor=\"middle\">\n";
  for (size_t b = first; b < last; ++b)
    if (b % label_step == 0) text(s, f.x(roll.beats[b]), f.top - 4.0, std::to_string(b));
  text(s, f.left - 8.0, f.top - 4.0, "beat", " text-anchor=\"end\"");
  s += "</g>\n";

  // The value axis: a row per semitone with the c's (and, when there is
  // room, every natural note) named; else round values.
  s += "<g class=\"axis y-axis\" stroke=\"#000000\">\n";
  line(s, "axis-line", f.left, f.top, f.left, bottom);
  s += "</g>\n<g class=\"grid\" stroke=\"#ececec\" stroke-width=\"1\">\n";
  std::string labels;
  if (f.rows) {
    const bool every_natural = f.note_h >= 12.0;
    for (double v = f.lo; v <= f.hi; v += 1.0) {
      const long pc = (std::lround(v) % 12 + 12) % 12;
      const bool natural = pc == 0 || pc == 2 || pc == 4 || pc == 5 || pc == 7 || pc == 9 || pc == 11;
      if (pc != 0 && !(every_natural && natural)) continue;
      const double y = f.y_top(v) + f.note_h / 2.0;
      if (pc == 0) line(s, "grid-line", f.left, y, right, y);
      text(labels, f.left - 6.0, y + 3.5, note_name(v, f.midi));
    }
  } else {
    int decimals = 0;
    for (double v : nice_ticks(f.lo, f.hi, 8, decimals)) {
      const double y = f.y_top(v) + f.note_h / 2.0;
      line(s, "grid-line", f.left, y, right, y);
      text(labels, f.left - 6.0, y + 3.5, tick_label(v, decimals));
    }
  }
  s += "</g>\n<g class=\"y-labels\" text-anchor=\"end\">\n";
  s += labels;
  s += "</g>\n";

  // The time axis, in seconds.
  s += "<g class=\"axis x-axis\" stroke=\"#000000\">\n";
  line(s, "axis-line", f.left, bottom, right, bottom);
  int decimals = 0;
  const std::vector<double> ticks = nice_ticks(f.t0, f.t1, std::max(2, static_cast<int>(f.plot_w / 90.0)), decimals);
  for (double t : ticks) line(s, "tick", f.x(t), bottom, f.x(t), bottom + 5.0);
  s += "</g>\n<g class=\"x-labels\" text-anchor=\"middle\">\n";
  for (double t : ticks) text(s, f.x(t), bottom + 17.0, tick_label(t, decimals));
  s += "</g>\n";
  text(s, f.left + f.plot_w / 2.0, bottom + 36.0, "time (s)", " class=\"axis-title x-title\" text-anchor=\"middle\"");
  std::string rotate = " class=\"axis-title y-title\" text-anchor=\"middle\" transform=\"rotate(-90 ";
  append_coord(rotate, 14.0);
  rotate += ' ';
  append_coord(rotate, f.top + f.plot_h / 2.0);
  rotate += ")\"";
  text(s, 14.0, f.top + f.plot_h / 2.0, f.y_title, rotate.c_str());
}

}  // namespace sorvel
