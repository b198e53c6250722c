// Conversions from real numbers to integers as the x86-64 processor makes
// them: truncation toward zero, and the "integer indefinite" value INT_MIN
// (or 0x8000000000000000) for a NaN or a value that does not fit. Sorvel uses
// these wherever a real becomes an integer, so that no input can reach an
// undefined conversion and every platform gives the same digits.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace sorvel {

inline int32_t trunc_i32(double x) {
  if (!(x > -2147483649.0 && x < 2147483648.0)) return std::numeric_limits<int32_t>::min();
  return static_cast<int32_t>(x);
}

inline int64_t trunc_i64(double x) {
  if (!(x >= -9223372036854775808.0 && x < 9223372036854775808.0))
    return std::numeric_limits<int64_t>::min();
  return static_cast<int64_t>(x);
}

// Absolute value of a 32-bit integer; INT_MIN stays INT_MIN, as the
// processor's two's complement negation leaves it.
inline int32_t abs_i32(int32_t v) {
  return v < 0 ? static_cast<int32_t>(0u - static_cast<uint32_t>(v)) : v;
}

// Sum of two 32-bit integers, wrapping around.
inline int32_t add_i32(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

}  // namespace sorvel
