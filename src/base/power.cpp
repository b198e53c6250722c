#include "base/power.h"

#include <cmath>
#include <initializer_list>

#include "base/dd.h"

namespace sorvel {

namespace {

constexpr DD kLn2{0.6931471805599453, 2.3190468138462996e-17};
constexpr DD kLn2By64{0.6931471805599453 / 64, 2.3190468138462996e-17 / 64};

// log(x) for x near 1, as 2 atanh((x - 1) / (x + 1)), to about 100 bits.
constexpr DD log_series(DD x) {
  const DD u = div(add(x, DD{-1.0, 0.0}), add(x, DD{1.0, 0.0}));
  const DD u2 = mul(u, u);
  DD sum{0.0, 0.0}, term = u;
  for (int k = 0; k < 40; ++k) {
    sum = add(sum, div(term, static_cast<double>(2 * k + 1)));
    term = mul(term, u2);
  }
  return add(sum, sum);
}

// exp(x) for |x| < 1, by its Taylor series, to about 100 bits.
constexpr DD exp_series(DD x) {
  DD sum{1.0, 0.0}, term{1.0, 0.0};
  for (int n = 1; n < 32; ++n) {
    term = div(mul(term, x), static_cast<double>(n));
    sum = add(sum, term);
  }
  return sum;
}

// For m in [0.70, 1.42): the step c = j / 128 nearest to m, 1 / c as a
// double, and -log of that double, which log(m) = log(m / c') - log(1 / c')
// needs (c' = 1 / (1 / c), so that m * (1 / c) - 1 is formed exactly).
constexpr int kFirstStep = 89, kLastStep = 183;
struct LogTable {
  double inv[kLastStep + 1];
  DD minus_log_inv[kLastStep + 1];
};
constexpr LogTable make_log_table() {
  LogTable t{};
  for (int j = kFirstStep; j <= kLastStep; ++j) {
    t.inv[j] = 128.0 / j;
    t.minus_log_inv[j] = neg(log_series(DD{t.inv[j], 0.0}));
  }
  return t;
}
constexpr LogTable kLogTable = make_log_table();

// 2^(j/64) for j = 0 to 63.
struct ExpTable {
  DD two_to[64];
};
constexpr ExpTable make_exp_table() {
  ExpTable t{};
  for (int j = 0; j < 64; ++j) t.two_to[j] = exp_series(mul(DD{static_cast<double>(j), 0.0}, kLn2By64));
  return t;
}
constexpr ExpTable kExpTable = make_exp_table();

// log(x) for a finite x > 0: x = m 2^e, m = c (1 + r) with c from the table
// and |r| < 2^-7. The leading terms of log(1 + r) in double-doubles, the rest
// in doubles (or, when `exact`, every term in double-doubles). Absolute error
// below 2^-72 (2^-100 when exact).
DD log_dd(double x, bool exact) {
  int e = 0;
  double m = std::frexp(x, &e);  // x = m 2^e, m in [0.5, 1)
  if (m < 0.7071067811865476) {
    m *= 2.0;
    --e;
  }
  const int j = static_cast<int>(m * 128.0 + 0.5);
  const DD r = add(two_prod(m, kLogTable.inv[j]), DD{-1.0, 0.0});
  DD log1p;
  if (exact) {
    DD sum{0.0, 0.0}, term = r;
    for (int k = 1; k <= 16; ++k) {
      const DD t = div(term, static_cast<double>(k));
      sum = add(sum, (k % 2) ? t : neg(t));
      term = mul(term, r);
    }
    log1p = sum;
  } else {
    const double h = r.hi;
    const double tail =
        h * h * h * (1.0 / 3 + h * (-1.0 / 4 + h * (1.0 / 5 + h * (-1.0 / 6 + h * (1.0 / 7 + h * (-1.0 / 8 + h * (1.0 / 9)))))));
    const DD half_square = two_prod(-0.5 * h, h);
    log1p = add(add(r, half_square), DD{tail - h * r.lo, 0.0});
  }
  const DD e_ln2 = add(two_prod(static_cast<double>(e), kLn2.hi), DD{e * kLn2.lo, 0.0});
  return add(add(e_ln2, kLogTable.minus_log_inv[j]), log1p);
}

// exp(z) for -277 <= z <= 710 as a double-double and a power of two:
// z = (64 q + j) ln2 / 64 + s with |s| <= ln2 / 128. Relative error below
// 2^-75 (2^-100 when exact), beyond what z itself carries.
DD exp_dd(DD z, int& q, bool exact) {
  const int k = static_cast<int>(std::floor(z.hi / kLn2By64.hi + 0.5));
  const int j = ((k % 64) + 64) % 64;
  q = (k - j) / 64;
  const DD s = add(z, neg(add(two_prod(static_cast<double>(k), kLn2By64.hi), DD{k * kLn2By64.lo, 0.0})));
  DD e;
  if (exact) {
    e = exp_series(s);
  } else {
    const double h = s.hi;
    const double tail =
        h * h * h * (1.0 / 6 + h * (1.0 / 24 + h * (1.0 / 120 + h * (1.0 / 720 + h * (1.0 / 5040 + h * (1.0 / 40320))))));
    const DD half_square = two_prod(0.5 * h, h);
    e = add(add(DD{1.0, 0.0}, s), add(half_square, DD{tail + h * s.lo, 0.0}));
  }
  return mul(kExpTable.two_to[j], e);
}

// The quick way first (unless `exact_only`), with an error bound; when the
// sum rounds to one double at both ends of the bound, that double is the
// correctly rounded power. Otherwise the same steps with every term in
// double-doubles decide.
double power_steps(double x, double y, bool exact_only) {
  if (!(x > 0.0) || x == 1.0 || !std::isfinite(x) || !std::isfinite(y)) return std::pow(x, y);
  for (bool exact : {exact_only, true}) {
    const DD l = log_dd(x, exact);
    const DD z = add(two_prod(y, l.hi), DD{y * l.lo, 0.0});
    if (z.hi < -277.0) return 0x1p-600;
    if (z.hi > 709.8) return HUGE_VAL;
    int q = 0;
    const DD p = exp_dd(z, q, exact);
    // log's absolute error times |y|, plus the relative errors of the steps.
    const double bound = std::fabs(p.hi) * (exact ? std::fabs(y) * 0x1p-96 + 0x1p-95
                                                  : std::fabs(y) * 0x1p-68 + 0x1p-70);
    const double low = p.hi + (p.lo - bound), high = p.hi + (p.lo + bound);
    if (low == high || exact) return std::ldexp(p.hi + p.lo, q);
  }
  return 0.0;  // not reached
}

}  // namespace

double power(double x, double y) { return power_steps(x, y, false); }
double power_exact(double x, double y) { return power_steps(x, y, true); }

}  // namespace sorvel
