// Rounding to whole numbers (halves go up, toward positive infinity) and the
// remainder that keeps the dividend's sign.
#pragma once

namespace sorvel {

// The nearest integer; a value halfway between goes up (2.5 -> 3, -2.5 -> -2).
int Round(float x);
// The same in floating point; the sign of zero is kept (-0.4 -> -0.0).
float RoundF(float x);
// Remainder of a / b with the sign of a; 0 when b is 0.
float mod(float a, float b);

}  // namespace sorvel
