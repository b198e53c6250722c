// The text that a constant reference leaves in the line: the value with
// three decimals, written the way the reference expansion always has.
#include <cfloat>
#include <cmath>

#include "base/numtext.h"
#include "input/constants.h"

namespace sorvel {

namespace {

// A non-negative whole number in decimal digits.
std::string whole_digits(double v) {
  std::string s;
  append_fixed(s, v, 0, 0);
  return s;
}

}  // namespace

std::string FtoA(double value) {
  if (std::isnan(value)) return "nan";
  if (std::isinf(value)) return value < 0 ? "-inf" : "inf";
  std::string s = value < 0 ? "-" : "";
  double a = std::fabs(value);
  double whole = std::trunc(a);
  s += whole_digits(whole);
  s += '.';
  // The fraction is taken against the whole part rounded to single
  // precision, in thousandths, to the nearer whole number (a tie goes up).
  double frac = 0.0;
  if (whole <= FLT_MAX) frac = (a - static_cast<double>(static_cast<float>(whole))) * 1000.0;
  double lo = std::floor(frac), hi = std::ceil(frac);
  double f = frac - lo < hi - frac ? lo : hi;
  // Three digits with leading zeros; 1000 is written as it is ("1.9996" gives
  // "1.1000"). Past 2^24 the fraction can come out negative.
  std::string digits = whole_digits(std::fabs(f));
  if (f < 0) {
    s += '-';
    if (digits.size() < 2) digits.insert(0, 2 - digits.size(), '0');
  } else if (digits.size() < 3) {
    digits.insert(0, 3 - digits.size(), '0');
  }
  return s + digits;
}

}  // namespace sorvel
