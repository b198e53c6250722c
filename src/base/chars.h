// Character classes of the C locale, safe for any char value (including
// bytes above 127, which are negative in a plain char).
#pragma once

namespace sorvel {

inline bool is_space(int c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}
inline bool is_digit(int c) { return c >= '0' && c <= '9'; }
inline bool is_alpha(int c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
inline bool is_alnum(int c) { return is_alpha(c) || is_digit(c); }
inline int to_lower(int c) { return (c >= 'A' && c <= 'Z') ? c - 'A' + 'a' : c; }

}  // namespace sorvel
