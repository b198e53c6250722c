#include "hints/tempo_reach.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace sorvel {

namespace {

constexpr double kHalfPi = 1.5707963267948966;

// The shape of record `r`'s curve at fraction b (0 to 1) of its span.
double curve(const TempoDef& r, double b) {
  const double from = r.Stempo, to = r.Etempo;
  switch (static_cast<int>(r.Type)) {
    case 0: return from + (to - from) * b;
    case 1: return from + (to - from) * b * b;
    case 2: return from + (to - from) * std::sqrt(b);
    case 3: return from + (to - from) * std::pow(b, static_cast<double>(r.Vcurve));
    case 4: return from + (to - from) * std::sin(b * kHalfPi);
    case 5: return from + (to - from) * (2.0 * b - std::sin(b * kHalfPi));
    default: return from;
  }
}

// The tempo of record `r` at a beat as the run reads it: its start tempo up
// to and at Stime, its end tempo from Etime on, the curve in between.
double record_tempo(const TempoDef& r, double beat) {
  const double t = beat - static_cast<double>(r.Stime);
  const double span = static_cast<double>(r.Etime) - static_cast<double>(r.Stime);
  if (t >= span) return r.Etempo;
  if (t <= 0.0) return r.Stempo;
  return curve(r, t / span);
}

// Seconds a beat lasts under record `r` at `beat`, for the integral: inside
// the span the curve, its ends included, so that a single beat where the run
// reads the start tempo (Stime itself) does not count; NaN where the tempo is
// not a positive number.
double beat_seconds(const TempoDef& r, double beat) {
  const double t = beat - static_cast<double>(r.Stime);
  const double span = static_cast<double>(r.Etime) - static_cast<double>(r.Stime);
  double tempo;
  if (!(span > 0.0))
    tempo = t >= span ? r.Etempo : r.Stempo;
  else
    tempo = curve(r, std::clamp(t / span, 0.0, 1.0));
  if (!(tempo > 0.0)) return NAN;
  return 60.0 / tempo;
}

double simpson(double a, double b, double fa, double fm, double fb) {
  return (b - a) / 6.0 * (fa + 4.0 * fm + fb);
}

// Adaptive Simpson over [a, b], on which the record does not change.
double integrate(const TempoDef& r, double a, double b, double fa, double fm, double fb,
                 double whole, double eps, int depth) {
  const double m = 0.5 * (a + b);
  const double lm = 0.5 * (a + m), rm = 0.5 * (m + b);
  const double flm = beat_seconds(r, lm), frm = beat_seconds(r, rm);
  const double left = simpson(a, m, fa, flm, fm), right = simpson(m, b, fm, frm, fb);
  const double sum = left + right;
  if (std::isnan(sum)) return NAN;
  if (depth <= 0 || std::fabs(sum - whole) <= 15.0 * eps) return sum + (sum - whole) / 15.0;
  return integrate(r, a, m, fa, flm, fm, left, eps / 2.0, depth - 1) +
         integrate(r, m, b, fm, frm, fb, right, eps / 2.0, depth - 1);
}

}  // namespace

double tempo_at(const TempoMap& map, double beat) {
  return record_tempo(map[map.record_at(static_cast<float>(beat))], beat);
}

double seconds_along_map(const TempoMap& map, double from, double to) {
  if (!(from <= to)) return NAN;
  // The tempo is smooth between the beats where a record starts or ends: the
  // record that governs a beat changes only at starts, a curve only bends
  // there and at ends.
  std::vector<double> marks{from, to};
  for (int i = 0; i < map.count(); ++i)
    for (float beat : {map[i].Stime, map[i].Etime}) {
      const double b = beat;
      if (b > from && b < to) marks.push_back(b);
    }
  std::sort(marks.begin(), marks.end());
  double total = 0.0;
  for (size_t i = 0; i + 1 < marks.size(); ++i) {
    const double a = marks[i], b = marks[i + 1];
    if (!(b > a)) continue;
    const double m = 0.5 * (a + b);
    const TempoDef& r = map[map.record_at(static_cast<float>(m))];
    const double fa = beat_seconds(r, a), fm = beat_seconds(r, m), fb = beat_seconds(r, b);
    total += integrate(r, a, b, fa, fm, fb, simpson(a, b, fa, fm, fb), 1e-10, 16);
  }
  return total;
}

}  // namespace sorvel
