#include "base/rounding.h"

#include <cmath>
#include <cstdint>

#include "base/x86_int.h"

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

// The nearer of floor and ceiling; a tie takes the ceiling. From 2^23 up in
// magnitude every float is whole, and a NaN or an infinity is its own floor
// and ceiling: those pass through. Below, the floor and ceiling come from the
// value truncated toward zero, which a 32-bit integer holds exactly, without
// the library's calls. A zero result keeps the sign of the value, as the
// library's ceiling of -0.4 is -0.0.
float RoundF(float x) {
  if (!(std::fabs(x) < 8388608.0f)) return x;
  const float t = static_cast<float>(static_cast<int32_t>(x));
  const float f = t > x ? t - 1.0f : t;
  const float c = t < x ? t + 1.0f : t;
  const float r = x - f < c - x ? f : c;
  return r == 0.0f ? std::copysign(0.0f, x) : r;
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
