#include "hints/report.h"

#include <cstdio>

namespace sorvel {

namespace {

// The length of the valid UTF-8 sequence at text[i], or 0 when the bytes
// there are none (overlong forms, surrogates and code points above U+10FFFF
// are not valid).
size_t utf8_length(const std::string& text, size_t i) {
  const auto byte = [&](size_t k) -> unsigned {
    return i + k < text.size() ? static_cast<unsigned char>(text[i + k]) : 0u;
  };
  const unsigned b0 = byte(0);
  auto cont = [&](size_t k) { return (byte(k) & 0xC0u) == 0x80u; };
  if (b0 < 0x80u) return 1;
  if (b0 >= 0xC2u && b0 <= 0xDFu) return cont(1) ? 2 : 0;
  if (b0 >= 0xE0u && b0 <= 0xEFu) {
    if (!cont(1) || !cont(2)) return 0;
    if (b0 == 0xE0u && byte(1) < 0xA0u) return 0;   // overlong
    if (b0 == 0xEDu && byte(1) >= 0xA0u) return 0;  // surrogate
    return 3;
  }
  if (b0 >= 0xF0u && b0 <= 0xF4u) {
    if (!cont(1) || !cont(2) || !cont(3)) return 0;
    if (b0 == 0xF0u && byte(1) < 0x90u) return 0;   // overlong
    if (b0 == 0xF4u && byte(1) >= 0x90u) return 0;  // above U+10FFFF
    return 4;
  }
  return 0;
}

std::string number_or_null(int n) { return n > 0 ? std::to_string(n) : "null"; }

}  // namespace

std::string json_string(const std::string& text) {
  std::string out = "\"";
  for (size_t i = 0; i < text.size();) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    if (c == '"' || c == '\\') {
      out += '\\';
      out += static_cast<char>(c);
      ++i;
    } else if (c < 0x20u || c == 0x7Fu) {
      char hex[8];
      std::snprintf(hex, sizeof hex, "\\u%04X", c);
      out += hex;
      ++i;
    } else if (const size_t n = utf8_length(text, i)) {
      out.append(text, i, n);
      i += n;
    } else {
      out += "\\uFFFD";
      ++i;
    }
  }
  return out + "\"";
}

std::string text_report(const std::vector<PlacedFinding>& findings) {
  std::string out;
  for (const PlacedFinding& f : findings) {
    out += f.file;
    if (f.line > 0) {
      out += ':' + std::to_string(f.line);
      if (f.column > 0) out += ':' + std::to_string(f.column);
    }
    out += ": " + f.severity + ": " + f.message + "\n";
  }
  return out;
}

std::string json_report(const std::vector<PlacedFinding>& findings) {
  if (findings.empty()) return "[]\n";
  std::string out = "[\n";
  for (size_t i = 0; i < findings.size(); ++i) {
    const PlacedFinding& f = findings[i];
    out += "  {\"file\": " + json_string(f.file);
    out += ", \"line\": " + number_or_null(f.line);
    out += ", \"column\": " + number_or_null(f.column);
    out += ", \"end_column\": " + number_or_null(f.column > 0 ? f.end_column : 0);
    out += ", \"severity\": " + json_string(f.severity);
    out += ", \"code\": " + json_string(f.code);
    out += ", \"message\": " + json_string(f.message);
    if (f.has_fix) {
      out += ", \"fix\": {\"line\": " + number_or_null(f.line);
      out += ", \"column\": " + number_or_null(f.column);
      out += ", \"end_column\": " + number_or_null(f.end_column);
      out += ", \"text\": " + json_string(f.fix_text) + "}";
    }
    out += i + 1 < findings.size() ? "},\n" : "}\n";
  }
  return out + "]\n";
}

}  // namespace sorvel
