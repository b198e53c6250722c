#include "base/rounding.h"

#include <cmath>
#include <cstdint>

#include "base/convert.h"

namespace sorvel {

// The ceiling and floor become integers as the processor converts them, so a
// NaN or a value beyond 32 bits gives the integer indefinite value and the
// comparison below, false for it, returns that value.
int Round(float x) {
  int32_t c = trunc_i32(std::ceil(static_cast<double>(x)));
  int32_t f = trunc_i32(std::floor(static_cast<double>(x)));
  if (static_cast<float>(c) - x > x - static_cast<float>(f)) return f;
  return c;
}

// The ceiling of -0.4 is -0.0, and a tie or a NaN (every comparison false)
// takes the ceiling, so the sign of zero survives and a NaN passes through.
float RoundF(float x) {
  float c = std::ceil(x);
  float f = std::floor(x);
  if (x - f < c - x) return f;
  return c;
}

// Each correcting loop ends as soon as a step leaves the remainder as it was,
// which only happens beyond float precision (where the quotient did not fit an
// integer); a NaN fails both tests at once.
float mod(float a, float b) {
  if (b == 0.0f) return 0.0f;
  float m = std::fabs(b);
  float q = static_cast<float>(trunc_i32(static_cast<double>(a / m)));
  float r = a - q * m;
  while (r > m) {
    float next = r - m;
    if (next == r) break;
    r = next;
  }
  while (-r > m) {
    float next = r + m;
    if (next == r) break;
    r = next;
  }
  return r;
}

}  // namespace sorvel
