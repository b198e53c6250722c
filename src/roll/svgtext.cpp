#include "roll/svgtext.h"

#include <cmath>

#include "base/numtext.h"

namespace sorvel {

void append_coord(std::string& s, double v) {
  if (!std::isfinite(v)) v = 0.0;
  char text[kNumTextMax + 8];
  char* end = put_fixed(text, v, 2);
  while (end[-1] == '0') --end;
  if (end[-1] == '.') --end;
  if (end - text == 2 && text[0] == '-' && text[1] == '0') {
    s += '0';
    return;
  }
  s.append(text, end);
}

void append_text_number(std::string& s, double v, int decimals) {
  char text[kNumTextMax + 8];
  s.append(text, put_fixed(text, v, decimals < 0 ? 0 : (decimals > 20 ? 20 : decimals)));
}

void append_escaped(std::string& s, const std::string& text) {
  for (char c : text) {
    switch (c) {
      case '&': s += "&amp;"; break;
      case '<': s += "&lt;"; break;
      case '>': s += "&gt;"; break;
      case '"': s += "&quot;"; break;
      default:
        // Control characters have no place in XML text.
        if (static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n') s += '?';
        else s += c;
    }
  }
}

}  // namespace sorvel
