#include "base/sine.h"

#include <cmath>

#include "base/dd.h"

namespace sorvel {

namespace {

// Taylor coefficients: sin[k] = (-1)^k / (2k + 1)!, cos[k] = (-1)^k / (2k)!.
// Fourteen terms reach 2^-100 of the result over [0, pi/4]; the table below
// takes all of them, for arguments up to pi/2.
constexpr int kTerms = 14;
constexpr int kTableTerms = 24;
struct Coefficients {
  DD sin[kTableTerms], cos[kTableTerms];
};
constexpr Coefficients make_coefficients() {
  Coefficients c{};
  DD inv_fact{1.0, 0.0};  // 1 / n!
  for (int n = 0; n < 2 * kTableTerms; ++n) {
    if (n > 0) inv_fact = div(inv_fact, static_cast<double>(n));
    const int k = n / 2;
    const DD term = (k % 2) ? DD{-inv_fact.hi, -inv_fact.lo} : inv_fact;
    if (n % 2)
      c.sin[k] = term;
    else
      c.cos[k] = term;
  }
  return c;
}
constexpr Coefficients kCoefficients = make_coefficients();

// sum over k < terms of c[k] * x2^k, by Horner's rule.
constexpr DD series(const DD* c, int terms, DD x2) {
  DD s = c[terms - 1];
  for (int k = terms - 2; k >= 0; --k) s = add(mul(s, x2), c[k]);
  return s;
}

// pi/2 as a double-double (the double 1.5707963267948966 and the rest).
constexpr DD kHalfPi{1.5707963267948966, 6.123233995736766e-17};

// sin and cos of k/64 for k = 0 to 101 (just past pi/2), to about 100 bits.
constexpr int kSteps = 102;
struct Table {
  DD sin[kSteps], cos[kSteps];
};
constexpr Table make_table() {
  Table t{};
  for (int k = 0; k < kSteps; ++k) {
    const DD a{k / 64.0, 0.0};
    const DD a2 = mul(a, a);
    t.sin[k] = mul(a, series(kCoefficients.sin, kTableTerms, a2));
    t.cos[k] = series(kCoefficients.cos, kTableTerms, a2);
  }
  return t;
}
constexpr Table kTable = make_table();

}  // namespace

// The usual way: x = a + b with a = k/64 the nearest step and |b| <= 1/128
// (exact), sin x = sin a + (sin a (cos b - 1) + cos a sin b), the small
// bracket in plain doubles. Its error is below 2^-51 of its size; when the
// sum rounds to the same double at both ends of that error, that double is
// the correctly rounded sine. Otherwise (a few per cent of arguments) the
// series in double-doubles decides.
double quarter_sine(double x) {
  if (!(x >= 0.0 && x <= 1.5707963267948966)) return quarter_sine_series(x);
  const int k = static_cast<int>(x * 64.0 + 0.5);
  const double b = x - k / 64.0;
  const double b2 = b * b;
  const double sin_b = b + b * b2 * (-1.0 / 6.0 + b2 * (1.0 / 120.0 + b2 * (-1.0 / 5040.0)));
  const double cos_b_1 = b2 * (-0.5 + b2 * (1.0 / 24.0 + b2 * (-1.0 / 720.0)));
  const DD& s = kTable.sin[k];
  const DD& c = kTable.cos[k];
  const double bracket = s.lo + (s.hi * cos_b_1 + (c.hi * sin_b + c.lo * sin_b));
  const double error = std::fabs(bracket) * 0x1p-51 + 0x1p-1000;
  const double low = s.hi + (bracket - error), high = s.hi + (bracket + error);
  if (low == high) return low;
  return quarter_sine_series(x);
}

double quarter_sine_series(double x) {
  if (x <= 0.7853981633974483) {  // up to pi/4: x times the sine series in x^2
    const DD xx{x, 0.0};
    return mul(xx, series(kCoefficients.sin, kTerms, mul(xx, xx))).hi;
  }
  // Above pi/4: the cosine of pi/2 - x, that difference taken exactly.
  const DD r = add(kHalfPi, DD{-x, 0.0});
  return series(kCoefficients.cos, kTerms, mul(r, r)).hi;
}

}  // namespace sorvel
