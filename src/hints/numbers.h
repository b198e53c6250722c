// Numbers in the hints' messages: seconds with three decimals, and beats,
// tempos and values as short as they go ("8", "2.5", "63095.734").
#pragma once

#include <string>

namespace sorvel {

// `value` with `decimals` decimals ("4.800").
std::string fixed(double value, int decimals);
// `value` with at most three decimals, trailing zeros dropped ("8", "0.75").
std::string short_number(double value);

}  // namespace sorvel
