#include "base/curves.h"

#include <cmath>

#include "base/power.h"
#include "base/sine.h"

namespace sorvel {

namespace {

// The shaped value at fraction f (0 to 1) of the way from start to end: the
// power f^e for curves 1 to 3 (e = 2, 0.5, or the curve value), the quarter
// sine for 4 and 5. The sum is formed in double and rounded once.
float shape(double f, float start, float end, unsigned curve, double value) {
  const double d = static_cast<double>(end) - static_cast<double>(start);
  const double from = static_cast<double>(start);
  switch (curve) {
    case 0:
      return static_cast<float>(from + f * d);
    // f * f is f^2 correctly rounded, the same on every machine, at a fraction
    // of the cost of a power. (A library's pow(f, 2.0) may be a unit off in
    // the last place of the double; rounded to a float, the two agree unless
    // that double lies within a unit of a point halfway between two floats.)
    case 1:
      return static_cast<float>(from + d * (f * f));
    // The square root is correctly rounded everywhere, as a library's
    // pow(f, 0.5) need not be.
    case 2:
      return static_cast<float>(from + d * std::sqrt(f));
    // Sorvel's own power, as the libraries' pow() differ in the last bit.
    case 3:
      return static_cast<float>(from + d * power(f, value));
    // The quarter sine is Sorvel's own: the libraries' sin() differ in the
    // last bit often enough to change a kept value now and then.
    case 4:
      return static_cast<float>(from + d * quarter_sine(f * 1.5707963267948966));
    case 5: {
      const double s = quarter_sine(f * 1.5707963267948966);
      return static_cast<float>(from + d * (f - (s - f)));
    }
    default:
      return start;
  }
}

}  // namespace

float pplot_val(unsigned index, unsigned count, float start, float end, unsigned curve,
                double value) {
  if (count == 1) return start;
  if (index > count - 1) return end;
  const double f = static_cast<double>(index) / static_cast<double>(count - 1);
  return shape(f, start, end, curve, value);
}

float tplot_val(float t, float total, float start, float end, unsigned curve, double value) {
  if (t >= total) return end;
  if (t <= 0.0f) return start;
  const float f = t / total;
  return shape(static_cast<double>(f), start, end, curve, value);
}

}  // namespace sorvel
