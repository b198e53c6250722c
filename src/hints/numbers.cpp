#include "hints/numbers.h"

#include <cstdio>

namespace sorvel {

std::string fixed(double value, int decimals) {
  char text[64];
  std::snprintf(text, sizeof text, "%.*f", decimals, value);
  return text;
}

std::string short_number(double value) {
  std::string text = fixed(value, 3);
  const size_t point = text.find('.');
  if (point == std::string::npos) return text;
  while (text.back() == '0') text.pop_back();
  if (text.back() == '.') text.pop_back();
  if (text == "-0") text = "0";
  return text;
}

}  // namespace sorvel
