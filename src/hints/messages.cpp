#include "hints/messages.h"

#include <cstring>
#include <vector>

namespace sorvel {

namespace {

bool is_blank(char c) { return c == ' ' || c == '\t' || c == '\r'; }

// Removes `prefix` from the front of `text` when it is there.
bool drop(std::string& text, const char* prefix) {
  const size_t n = std::strlen(prefix);
  if (text.compare(0, n, prefix) != 0) return false;
  text.erase(0, n);
  return true;
}

}  // namespace

std::string one_line(const std::string& text) {
  std::string out;
  bool gap = false;
  for (char c : text) {
    if (c == '\n') {
      while (!out.empty() && is_blank(out.back())) out.pop_back();
      gap = true;
      continue;
    }
    if (gap) {
      if (is_blank(c)) continue;
      if (!out.empty()) out += ' ';
      gap = false;
    }
    out += c;
  }
  size_t from = 0;
  while (from < out.size() && is_blank(out[from])) ++from;
  size_t to = out.size();
  while (to > from && is_blank(out[to - 1])) --to;
  return out.substr(from, to - from);
}

std::string last_message(const std::string& screen) {
  std::vector<std::string> lines;
  size_t at = 0;
  while (at <= screen.size()) {
    size_t nl = screen.find('\n', at);
    if (nl == std::string::npos) nl = screen.size();
    lines.push_back(screen.substr(at, nl - at));
    at = nl + 1;
  }
  auto empty = [](const std::string& l) {
    for (char c : l)
      if (!is_blank(c)) return false;
    return true;
  };
  size_t end = lines.size();
  while (end > 0 && empty(lines[end - 1])) --end;
  size_t begin = end;
  while (begin > 0 && !empty(lines[begin - 1]) && lines[begin - 1][0] != '\t') --begin;
  std::string text;
  for (size_t i = begin; i < end; ++i) text += lines[i] + "\n";
  text = one_line(text);
  if (drop(text, "ERROR: ") || drop(text, "Error: ")) {
    // "Line 12: "
    if (text.compare(0, 5, "Line ") == 0) {
      size_t i = 5;
      while (i < text.size() && text[i] >= '0' && text[i] <= '9') ++i;
      if (i > 5 && text.compare(i, 2, ": ") == 0) text.erase(0, i + 2);
    }
  }
  return text;
}

}  // namespace sorvel
