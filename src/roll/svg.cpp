// The roll as SVG text: a frame of axes, beat lines and a legend around
// either one rectangle per note or, for very many notes, a density image.
#include <algorithm>
#include <cmath>
#include <map>
#include <string>
#include <vector>

#include "base/numtext.h"
#include "base/rounding.h"
#include "output/csound.h"
#include "output/units.h"
#include "roll/frame.h"
#include "roll/roll.h"
#include "roll/scale.h"
#include "roll/svgtext.h"

namespace sorvel {

namespace {

constexpr const char* kColours[] = {"#1f77b4", "#d62728", "#2ca02c", "#9467bd", "#ff7f0e",
                                    "#17becf", "#8c564b", "#e377c2", "#7f7f7f", "#bcbd22"};
constexpr size_t kColourCount = sizeof kColours / sizeof kColours[0];
constexpr const char* kDensityColour = "#1a2a6c";

const char* colour_of(size_t block) { return kColours[block % kColourCount]; }

// ` width="W" height="H"`: the size of the whole picture.
void append_size(std::string& s, const Frame& f) {
  s += " width=\"";
  append_coord(s, f.width);
  s += "\" height=\"";
  append_coord(s, f.height);
  s += '"';
}

// The note's p-fields as the score has them, for its title.
void append_score_title(std::string& s, const Roll& roll, const RollBlock& b, const RollNote& n,
                        size_t index) {
  s += "block ";
  append_long(s, b.number);
  s += ", i";
  append_long(s, b.I_NO);
  s += ": p2 ";
  append_text_number(s, n.start, b.RE_FW[0]);
  s += " p3 ";
  append_text_number(s, n.dur, b.RE_FW[1]);
  if (roll.values_dropped) return;
  // The block's notes and their values lie one after another.
  const size_t count = static_cast<size_t>(b.MAX_PFIELDS - 3);
  const float* v = roll.values.data() + b.values_at + (index - b.first_note) * count;
  char text[kNumTextMax + 80];
  for (int p = 4; p <= b.MAX_PFIELDS; ++p) {
    const size_t k = static_cast<size_t>(p - 2);
    char* end = put_pfield(text, v[p - 4], b.OUTS[k], b.RE_FW[k], b.FFT_SZ[k], roll.SRATE);
    if (end == text) continue;  // "xx": not in the score
    char* from = text;
    while (from < end && *from == ' ') ++from;
    while (end > from && end[-1] == ' ') --end;
    s += " p";
    append_long(s, p);
    s += ' ';
    s.append(from, end);
  }
}

void append_midi_title(std::string& s, const RollBlock& b, const RollNote& n) {
  s += "block ";
  append_long(s, b.number);
  s += ", i";
  append_long(s, b.I_NO);
  s += ": ";
  append_text_number(s, n.start, 3);
  s += " s, ";
  append_text_number(s, n.dur, 3);
  s += " s long, key ";
  append_long(s, std::lround(n.y));
  s += " (";
  s += note_name(n.y, true);
  s += "), velocity ";
  append_long(s, std::lround(n.amp));
}

// The opacity of each block's notes: from the lowest to the highest
// amplitude among the block's notes drawn (in dB for amplitudes read or
// written in dB); with MIDI from the velocity, 0 to 127.
struct Loudness {
  std::vector<double> lo, hi;

  static double level(const RollBlock& b, float amp) {
    if (b.amp_db) return static_cast<double>(amp_to_db(Round(amp)));
    return static_cast<double>(amp);
  }

  Loudness(const Roll& roll, const std::vector<size_t>& drawn) {
    lo.assign(roll.blocks.size(), HUGE_VAL);
    hi.assign(roll.blocks.size(), -HUGE_VAL);
    for (size_t i : drawn) {
      const RollNote& n = roll.notes[i];
      const double a = level(roll.blocks[n.block], n.amp);
      if (!std::isfinite(a)) continue;
      lo[n.block] = std::min(lo[n.block], a);
      hi[n.block] = std::max(hi[n.block], a);
    }
  }

  double opacity(const Roll& roll, const RollNote& n) const {
    if (roll.midi) return 0.15 + 0.85 * std::clamp(static_cast<double>(n.amp) / 127.0, 0.0, 1.0);
    const RollBlock& b = roll.blocks[n.block];
    const double a = level(b, n.amp);
    if (std::isnan(a)) return 0.2;
    if (!(hi[n.block] - lo[n.block] > 1e-9)) return 0.9;
    return 0.2 + 0.8 * std::clamp((a - lo[n.block]) / (hi[n.block] - lo[n.block]), 0.0, 1.0);
  }
};

void draw_notes(std::string& s, const Roll& roll, const Frame& f, const std::vector<size_t>& drawn) {
  const Loudness loudness(roll, drawn);
  s += "<g class=\"notes\">\n";
  size_t at = 0;
  while (at < drawn.size()) {
    const uint32_t block = roll.notes[drawn[at]].block;
    const RollBlock& b = roll.blocks[block];
    const bool with_amp = roll.midi || b.amp != 0;
    s += "<g class=\"block\" data-block=\"";
    append_long(s, b.number);
    s += "\" fill=\"";
    s += colour_of(block);
    // A thin white edge keeps notes that follow one another apart.
    s += "\" stroke=\"#ffffff\" stroke-width=\"0.5\"";
    s += with_amp ? ">\n" : " fill-opacity=\"0.85\">\n";
    // Chord members (same start) that would cover one another stand one
    // note's height above the one before.
    float group_start = 0.0f;
    std::map<long, int> taken;
    for (; at < drawn.size() && roll.notes[drawn[at]].block == block; ++at) {
      const size_t i = drawn[at];
      const RollNote& n = roll.notes[i];
      if (taken.empty() || !(n.start == group_start)) {
        taken.clear();
        group_start = n.start;
      }
      double y = f.y_top(n.y);
      const long place = std::lround(y * 100.0);
      y -= f.note_h * taken[place]++;
      const double x0 = f.x(std::max(static_cast<double>(n.start), f.t0));
      const double x1 = f.x(std::min(static_cast<double>(n.start) + static_cast<double>(n.dur), f.t1));
      s += "<rect class=\"note\" data-block=\"";
      append_long(s, b.number);
      s += "\" data-start=\"";
      append_text_number(s, n.start, 6);
      s += "\" data-dur=\"";
      append_text_number(s, n.dur, 6);
      s += "\" x=\"";
      append_coord(s, x0);
      s += "\" y=\"";
      append_coord(s, y);
      s += "\" width=\"";
      append_coord(s, std::max(x1 - x0, 1.0));
      s += "\" height=\"";
      append_coord(s, f.note_h);
      if (with_amp) {
        s += "\" opacity=\"";
        append_coord(s, loudness.opacity(roll, n));
      }
      s += "\"><title>";
      if (roll.midi)
        append_midi_title(s, b, n);
      else
        append_score_title(s, roll, b, n, i);
      s += "</title></rect>\n";
    }
    s += "</g>\n";
  }
  s += "</g>\n";
}

// Each cell of the plot a little square whose darkness grows with the number
// of notes sounding in it (on a logarithmic scale, eight steps); cells of one
// step next to each other in a row are one rectangle.
void draw_density(std::string& s, const Roll& roll, const Frame& f, const std::vector<size_t>& drawn) {
  // Cells of 2 pixels, larger in a very large picture (at most 2000 by 1000).
  const double cell_w = std::max(2.0, f.plot_w / 2000.0), cell_h = std::max(2.0, f.plot_h / 1000.0);
  const int cols = std::max(1, static_cast<int>(std::ceil(f.plot_w / cell_w)));
  const int rows = std::max(1, static_cast<int>(std::ceil(f.plot_h / cell_h)));
  // Counts kept as differences along each row: one step per note.
  std::vector<int32_t> diff(static_cast<size_t>(rows) * static_cast<size_t>(cols + 1), 0);
  auto col_of = [&](double t) {
    const double c = std::floor((f.x(t) - f.left) / cell_w);
    return static_cast<int>(std::clamp(std::isfinite(c) ? c : 0.0, 0.0, cols - 1.0));
  };
  for (size_t i : drawn) {
    const RollNote& n = roll.notes[i];
    const double mid = f.y_top(n.y) + f.note_h / 2.0;
    const double r = std::floor((mid - f.top) / cell_h);
    const int row = static_cast<int>(std::clamp(std::isfinite(r) ? r : 0.0, 0.0, rows - 1.0));
    const int c0 = col_of(std::max(static_cast<double>(n.start), f.t0));
    const int c1 = col_of(std::min(static_cast<double>(n.start) + static_cast<double>(n.dur), f.t1));
    int32_t* line = diff.data() + static_cast<size_t>(row) * static_cast<size_t>(cols + 1);
    line[c0] += 1;
    line[std::max(c0, c1) + 1] -= 1;
  }
  int32_t most = 0;
  for (int r = 0; r < rows; ++r) {
    int32_t* line = diff.data() + static_cast<size_t>(r) * static_cast<size_t>(cols + 1);
    int32_t sum = 0;
    for (int c = 0; c < cols; ++c) {
      sum += line[c];
      line[c] = sum;
      most = std::max(most, sum);
    }
  }
  const double scale = std::log1p(static_cast<double>(most));
  s += "<g class=\"density\" fill=\"";
  s += kDensityColour;
  s += "\">\n";
  for (int r = 0; r < rows; ++r) {
    const int32_t* line = diff.data() + static_cast<size_t>(r) * static_cast<size_t>(cols + 1);
    int c = 0;
    while (c < cols) {
      const int level = line[c] > 0
                            ? std::max(1, static_cast<int>(std::ceil(8.0 * std::log1p(line[c]) / scale)))
                            : 0;
      int end = c + 1;
      while (end < cols &&
             (line[end] > 0 ? std::max(1, static_cast<int>(std::ceil(8.0 * std::log1p(line[end]) / scale)))
                            : 0) == level)
        ++end;
      if (level > 0) {
        s += "<rect class=\"cell\" x=\"";
        append_coord(s, f.left + c * cell_w);
        s += "\" y=\"";
        append_coord(s, f.top + r * cell_h);
        s += "\" width=\"";
        append_coord(s, (end - c) * cell_w);
        s += "\" height=\"";
        append_coord(s, cell_h);
        s += "\" fill-opacity=\"";
        append_coord(s, 0.125 * level);
        s += "\"/>\n";
      }
      c = end;
    }
  }
  s += "</g>\n";
}

void draw_legend(std::string& s, const Roll& roll, const Frame& f, bool density, size_t notes,
                 size_t limit) {
  const double x = f.left + f.plot_w + 16.0;
  double y = f.top + 4.0;
  s += "<g class=\"legend\">\n";
  for (size_t k = 0; k < roll.blocks.size(); ++k) {
    const RollBlock& b = roll.blocks[k];
    s += "<g class=\"legend-entry\" data-block=\"";
    append_long(s, b.number);
    s += "\"><rect x=\"";
    append_coord(s, x);
    s += "\" y=\"";
    append_coord(s, y);
    s += "\" width=\"12\" height=\"12\" fill=\"";
    s += density ? kDensityColour : colour_of(k);
    s += "\"/><text x=\"";
    append_coord(s, x + 18.0);
    s += "\" y=\"";
    append_coord(s, y + 10.0);
    s += "\">block ";
    append_long(s, b.number);
    s += ": i";
    append_long(s, b.I_NO);
    s += ", ";
    append_long(s, static_cast<long>(b.notes));
    s += b.notes == 1 ? " note" : " notes";
    s += "</text></g>\n";
    y += 18.0;
  }
  y += 8.0;
  s += "<text class=\"legend-note\" x=\"";
  append_coord(s, x);
  s += "\" y=\"";
  append_coord(s, y + 10.0);
  s += "\">";
  if (roll.midi) {
    s += "opacity: velocity";
  } else {
    // The amplitude p-fields in use, each once ("p5 (dB)" when in dB).
    std::vector<std::pair<int, bool>> amps;
    for (const RollBlock& b : roll.blocks)
      if (b.amp && std::find(amps.begin(), amps.end(), std::make_pair(b.amp, b.amp_db)) == amps.end())
        amps.emplace_back(b.amp, b.amp_db);
    s += amps.empty() ? "opacity: none" : "opacity:";
    for (size_t k = 0; k < amps.size(); ++k) {
      s += k ? ", p" : " p";
      append_long(s, amps[k].first);
      if (amps[k].second) s += " (dB)";
    }
  }
  s += "</text>\n";
  if (density) {
    s += "<text class=\"density-note\" x=\"";
    append_coord(s, f.left);
    s += "\" y=\"";
    append_coord(s, f.top - 22.0);
    s += "\">density image: ";
    append_long(s, static_cast<long>(notes));
    s += " notes, more than ";
    append_long(s, static_cast<long>(limit));
    s += " to draw one by one; darker cells hold more notes</text>\n";
  }
  s += "</g>\n";
}

}  // namespace

std::string draw_roll(const Roll& roll, const RollOptions& options) {
  std::vector<size_t> drawn = notes_in_range(roll, options);
  const Frame f(roll, options, drawn);
  const bool density = drawn.size() > options.max_notes;

  std::string s;
  s.reserve(density ? 1 << 20 : drawn.size() * 200 + 8192);
  s += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
  s += "<svg xmlns=\"http://www.w3.org/2000/svg\"";
  append_size(s, f);
  s += " viewBox=\"0 0 ";
  append_coord(s, f.width);
  s += ' ';
  append_coord(s, f.height);
  s += "\" font-family=\"sans-serif\" font-size=\"11\">\n<title>";
  append_escaped(s, roll.caption);
  s += "</title>\n<rect class=\"background\" x=\"0\" y=\"0\"";
  append_size(s, f);
  s += " fill=\"#ffffff\"/>\n";
  draw_frame(s, roll, f);
  if (density)
    draw_density(s, roll, f, drawn);
  else
    draw_notes(s, roll, f, drawn);
  draw_legend(s, roll, f, density, drawn.size(), options.max_notes);
  s += "</svg>\n";
  return s;
}

}  // namespace sorvel
