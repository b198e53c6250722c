// Powers, the same double on every machine: the maths libraries of different
// systems round pow() differently in the last bit, and a curve's value or a
// converted pitch can carry that bit into the float it keeps.
#pragma once

namespace sorvel {

// x^y for x > 0 and finite y, correctly rounded but in cases too rare to
// meet; 0^y, 1^y and anything not finite as the library gives them (exact
// there). A result below 2^-400 comes back as 2^-600 and one above the
// largest double as infinity: every caller narrows the value to a float, in
// which both are the same.
double power(double x, double y);
// The same with every term in double-doubles from the start, several times
// slower: what power falls back on when its quick way cannot decide.
double power_exact(double x, double y);

}  // namespace sorvel
