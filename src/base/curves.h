// Curve shapes of a move from a start value to an end value: 0 straight,
// 1 exponential (f^2), 2 logarithmic (f^0.5), 3 f^value, 4 quarter sine,
// 5 the mirror of the sine about the straight line.
#pragma once

namespace sorvel {

// The curve at event `index` of `count` events.
float pplot_val(unsigned index, unsigned count, float start, float end, unsigned curve,
                double value);
// The curve at time t of a span of `total`.
float tplot_val(float t, float total, float start, float end, unsigned curve, double value);

}  // namespace sorvel
