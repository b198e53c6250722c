// Numbers and text as the roll's SVG writes them: the same digits on every
// machine, since the pictures are compared byte for byte.
#pragma once

#include <string>

namespace sorvel {

// A coordinate: two decimals, trailing zeros and point dropped; anything
// that is not a finite number is written as 0.
void append_coord(std::string& s, double v);
// "%.*f", as printf writes it.
void append_text_number(std::string& s, double v, int decimals);
// Text with &, <, > and " written as entities.
void append_escaped(std::string& s, const std::string& text);

}  // namespace sorvel
