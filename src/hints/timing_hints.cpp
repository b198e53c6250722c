#include "hints/timing_hints.h"

#include <cmath>

#include "global/tempo.h"
#include "hints/numbers.h"
#include "hints/tempo_reach.h"

namespace sorvel {

namespace {

constexpr double kMillisecond = 0.001;

std::string block_name(int index, int I_NO) {
  return "block " + std::to_string(index) + " (i" + std::to_string(I_NO) + ")";
}

std::string beats_text(double beats) {
  return short_number(beats) + (beats == 1.0 ? " beat" : " beats");
}

// The seconds a part reaches `beat` in that moves from beat 0 in whole beats,
// each converted as the run converts a rhythm (at the tempo of its first
// beat); the last step is the part of a beat that is left. Negative when the
// beat is too far to walk.
double seconds_in_whole_beats(const Run& run, float beat) {
  if (!(beat <= 100000.0f)) return -1.0;
  double seconds = 0.0;
  float at = 0.0f;
  while (at < beat) {
    const float step = beat - at < 1.0f ? beat - at : 1.0f;
    seconds += static_cast<double>(60.0f / find_tempo(run, at) * step);
    at = at + step;
  }
  return seconds;
}

}  // namespace

void TimingHints::block_start(int line, int index, int I_NO, float SBEAT, double STIME, bool) {
  block_ = index;
  I_NO_ = I_NO;
  rhythm_told_ = false;
  const double tempo = run.TEMPO;
  const double along = seconds_along_map(run.tempo_map, 0.0, SBEAT);
  const double at_start = 60.0 / tempo * static_cast<double>(SBEAT);
  if (std::isnan(along) || !(std::fabs(along - at_start) > kMillisecond)) return;
  Finding f;
  f.line = line;
  f.code = "H04";
  const std::string beat = short_number(SBEAT);
  f.message = block_name(index, I_NO) + " starts at beat " + beat +
              ", converted at the tempo there (" + short_number(tempo) +
              " beats a minute): " + fixed(STIME, 3) + " s; the tempo map reaches beat " + beat +
              " at " + fixed(along, 3) + " s";
  const double walked = seconds_in_whole_beats(run, SBEAT);
  if (walked >= 0.0)
    f.message += " (a part that moves in whole beats from beat 0, each at the tempo where it "
                 "starts, reaches it at " + fixed(walked, 3) + " s)";
  f.message += ". A block's start is converted at the single tempo of its start beat, not along "
               "the map, so it is not in time with a part that began earlier.";
  out.push_back(f);
}

void TimingHints::rhythm_timed(int line, int begin, int end, float beat, float beats,
                               double seconds) {
  if (rhythm_told_ || !(beats > 0.0f) || !std::isfinite(beats)) return;
  const double tempo = run.TEMPO;
  const double at_start = 60.0 / tempo * static_cast<double>(beats);
  const double along =
      seconds_along_map(run.tempo_map, beat, static_cast<double>(beat) + static_cast<double>(beats));
  if (std::isnan(along) || !(std::fabs(along - at_start) > kMillisecond)) return;
  rhythm_told_ = true;
  Finding f;
  f.line = line;
  f.column = begin;
  f.end_column = end;
  f.code = "H05";
  f.message = block_name(block_, I_NO_) + ": a rhythm of " + beats_text(beats) + " at beat " +
              short_number(beat) + " lasts " + fixed(seconds, 3) +
              " s, converted at the tempo where it starts (" + short_number(tempo) +
              " beats a minute); read along the tempo map, which moves under it, the same " +
              beats_text(beats) + (beats == 1.0f ? " lasts " : " last ") + fixed(along, 3) +
              " s. Each rhythm is converted at the single tempo of its first beat (the first "
              "such rhythm of the block; later ones are not listed).";
  out.push_back(f);
}

}  // namespace sorvel
