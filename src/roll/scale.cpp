#include "roll/scale.h"

#include <cmath>

namespace sorvel {

std::vector<double> nice_ticks(double lo, double hi, int about, int& decimals) {
  std::vector<double> ticks;
  decimals = 0;
  if (!(hi > lo) || about < 1) return ticks;
  const double rough = (hi - lo) / about;
  double step = std::pow(10.0, std::floor(std::log10(rough)));
  for (double m : {1.0, 2.0, 5.0, 10.0}) {
    if (step * m >= rough) {
      step *= m;
      break;
    }
  }
  decimals = step >= 1.0 ? 0 : static_cast<int>(std::ceil(-std::log10(step) - 1e-9));
  // Counted from the first tick, so that steps too small for the values'
  // precision still end (at most a few times `about` ticks).
  const double first = std::ceil(lo / step);
  for (int k = 0; k <= 4 * about + 4; ++k) {
    const double v = (first + k) * step;
    if (!(v <= hi + step * 1e-9)) break;
    ticks.push_back(v);
  }
  return ticks;
}

std::string note_name(double semitones, bool midi) {
  static const char* const kNames[12] = {"c", "cs", "d", "ds", "e", "f", "fs", "g", "gs", "a", "as", "b"};
  const long n = std::lround(semitones);
  long octave = n >= 0 ? n / 12 : -((-n + 11) / 12);
  const long pc = n - octave * 12;
  if (midi) octave -= 1;
  return kNames[pc] + std::to_string(octave);
}

}  // namespace sorvel
