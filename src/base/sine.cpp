#include "base/sine.h"

namespace sorvel {

namespace {

// A double-double: the unevaluated sum hi + lo, with |lo| at most half a unit
// in the last place of hi. Only additions and multiplications of doubles,
// each rounded once (no fused multiply-add), so every machine gets the same.
struct DD {
  double hi, lo;
};

constexpr DD quick_two_sum(double a, double b) {  // |a| >= |b|
  const double s = a + b;
  return {s, b - (s - a)};
}

constexpr DD two_sum(double a, double b) {
  const double s = a + b;
  const double bb = s - a;
  return {s, (a - (s - bb)) + (b - bb)};
}

// a * b exactly, by Dekker's splitting of each factor into two halves.
constexpr DD two_prod(double a, double b) {
  const double p = a * b;
  const double ta = 134217729.0 * a, tb = 134217729.0 * b;  // 2^27 + 1
  const double ah = ta - (ta - a), al = a - ah;
  const double bh = tb - (tb - b), bl = b - bh;
  return {p, ((ah * bh - p) + ah * bl + al * bh) + al * bl};
}

constexpr DD add(DD x, DD y) {
  DD s = two_sum(x.hi, y.hi);
  const DD t = two_sum(x.lo, y.lo);
  s = quick_two_sum(s.hi, s.lo + t.hi);
  return quick_two_sum(s.hi, s.lo + t.lo);
}

constexpr DD mul(DD x, DD y) {
  const DD p = two_prod(x.hi, y.hi);
  return quick_two_sum(p.hi, p.lo + (x.hi * y.lo + x.lo * y.hi));
}

// x / n for a small whole number n: a first quotient, then the remainder's.
constexpr DD div(DD x, double n) {
  const double q1 = x.hi / n;
  const DD r = add(x, DD{-two_prod(q1, n).hi, -two_prod(q1, n).lo});
  const double q2 = r.hi / n;
  return quick_two_sum(q1, q2);
}

// Taylor coefficients: kSin[k] = (-1)^k / (2k + 1)!, kCos[k] = (-1)^k / (2k)!.
// Fourteen terms reach 2^-100 of the result over [0, pi/4].
constexpr int kTerms = 14;
struct Coefficients {
  DD sin[kTerms], cos[kTerms];
};
constexpr Coefficients make_coefficients() {
  Coefficients c{};
  DD inv_fact{1.0, 0.0};  // 1 / n!
  for (int n = 0; n < 2 * kTerms; ++n) {
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

// sum over k of c[k] * x2^k, by Horner's rule.
DD series(const DD* c, DD x2) {
  DD s = c[kTerms - 1];
  for (int k = kTerms - 2; k >= 0; --k) s = add(mul(s, x2), c[k]);
  return s;
}

// pi/2 as a double-double (the double 1.5707963267948966 and the rest).
constexpr DD kHalfPi{1.5707963267948966, 6.123233995736766e-17};

}  // namespace

double quarter_sine(double x) {
  if (x <= 0.7853981633974483) {  // up to pi/4: x times the sine series in x^2
    const DD xx{x, 0.0};
    return mul(xx, series(kCoefficients.sin, mul(xx, xx))).hi;
  }
  // Above pi/4: the cosine of pi/2 - x, that difference taken exactly.
  const DD r = add(kHalfPi, DD{-x, 0.0});
  return series(kCoefficients.cos, mul(r, r)).hi;
}

}  // namespace sorvel
