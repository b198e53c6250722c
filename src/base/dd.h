// Double-double arithmetic: a value carried as the unevaluated sum of two
// doubles, for the few maths functions Sorvel computes itself so that every
// machine gets the same bits.
#pragma once

namespace sorvel {

// A double-double: the unevaluated sum hi + lo, with |lo| at most half a unit
// in the last place of hi. Only additions and multiplications of doubles,
// each rounded once (no fused multiply-add), so every machine gets the same.
struct DD {
  double hi, lo;
};

constexpr inline DD quick_two_sum(double a, double b) {  // |a| >= |b|
  const double s = a + b;
  return {s, b - (s - a)};
}

constexpr inline DD two_sum(double a, double b) {
  const double s = a + b;
  const double bb = s - a;
  return {s, (a - (s - bb)) + (b - bb)};
}

// a * b exactly, by Dekker's splitting of each factor into two halves.
constexpr inline DD two_prod(double a, double b) {
  const double p = a * b;
  const double ta = 134217729.0 * a, tb = 134217729.0 * b;  // 2^27 + 1
  const double ah = ta - (ta - a), al = a - ah;
  const double bh = tb - (tb - b), bl = b - bh;
  return {p, ((ah * bh - p) + ah * bl + al * bh) + al * bl};
}

constexpr inline DD add(DD x, DD y) {
  DD s = two_sum(x.hi, y.hi);
  const DD t = two_sum(x.lo, y.lo);
  s = quick_two_sum(s.hi, s.lo + t.hi);
  return quick_two_sum(s.hi, s.lo + t.lo);
}

constexpr inline DD mul(DD x, DD y) {
  const DD p = two_prod(x.hi, y.hi);
  return quick_two_sum(p.hi, p.lo + (x.hi * y.lo + x.lo * y.hi));
}

// x / n for a small whole number n: a first quotient, then the remainder's.
constexpr inline DD div(DD x, double n) {
  const double q1 = x.hi / n;
  const DD r = add(x, DD{-two_prod(q1, n).hi, -two_prod(q1, n).lo});
  const double q2 = r.hi / n;
  return quick_two_sum(q1, q2);
}

constexpr inline DD neg(DD x) { return {-x.hi, -x.lo}; }

// x / y: a first quotient, corrected twice by the remainder.
constexpr inline DD div(DD x, DD y) {
  const double q1 = x.hi / y.hi;
  DD r = add(x, neg(mul(DD{q1, 0.0}, y)));
  const double q2 = r.hi / y.hi;
  r = add(r, neg(mul(DD{q2, 0.0}, y)));
  const double q3 = r.hi / y.hi;
  return add(quick_two_sum(q1, q2), DD{q3, 0.0});
}

}  // namespace sorvel
