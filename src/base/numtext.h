// Numbers as text, digit for digit as C printf writes them ("%ld", "%*d",
// "%*.*f"), but several times faster. Every writer and message uses these.
#pragma once

#include <string>

namespace sorvel {

// Room enough for any double written with up to 20 decimals and a width up to
// 64. Every writer below needs this much room at p (it may store a little past
// the text it leaves there).
constexpr int kNumTextMax = 400;

// "%.*f": writes at p and returns the end (no terminating zero).
char* put_fixed(char* p, double v, int prec);
// "%*.*f": right-aligned in a field of at least `width` characters.
char* put_fixed(char* p, double v, int width, int prec);
// "%.*f" for any value and a precision up to 20, digit by digit by exact
// arithmetic on whole numbers: slower than put_fixed, which uses it for what
// its fast path does not take (NaN, infinity, magnitudes of 2^30 and more,
// precisions above 9). The same text on every platform and C++ library.
char* put_fixed_exact(char* p, double v, int prec);
// "%ld" and "%*ld".
char* put_long(char* p, long v);
char* put_long(char* p, long v, int width);

// The same, appended to a string.
void append_fixed(std::string& s, double v, int width, int prec);
void append_long(std::string& s, long v, int width = 0);

}  // namespace sorvel
