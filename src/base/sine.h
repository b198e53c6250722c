// The sine of an angle from 0 to pi/2, the same double on every machine: the
// maths libraries of different systems round sin() differently in the last
// bit, and a curve's value can carry that bit into the float it keeps.
#pragma once

namespace sorvel {

// sin(x) for 0 <= x <= pi/2 (the quarter sine of the curves), computed in
// double-double arithmetic to about 100 bits and rounded once, so that it is
// the correctly rounded sine but in cases too rare to meet.
double quarter_sine(double x);
// The same by the series alone, about ten times slower: the reference that
// quarter_sine falls back on when its quick way cannot decide the last bit.
double quarter_sine_series(double x);

}  // namespace sorvel
