// The fenced blocks of a text, as the end-to-end cases (tests/cases/*.case)
// and the guide's examples (docs/guide.md) are written: a line starting with
// three backticks opens a block, the words after them say what it is, and a
// line of three backticks alone (blanks after them aside) closes it.
#pragma once

#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

namespace sorvel::testing {

// The lines of a text without their newlines (a last line need not end in one).
inline std::vector<std::string> split_lines(const std::string& text) {
  std::vector<std::string> lines;
  size_t start = 0;
  while (start < text.size()) {
    size_t nl = text.find('\n', start);
    if (nl == std::string::npos) nl = text.size();
    lines.push_back(text.substr(start, nl - start));
    start = nl + 1;
  }
  return lines;
}

inline std::vector<std::string> split_words(const std::string& text) {
  std::istringstream in(text);
  std::vector<std::string> words;
  std::string w;
  while (in >> w) words.push_back(w);
  return words;
}

inline std::string rstrip(std::string s) {
  while (!s.empty() && (s.back() == ' ' || s.back() == '\t' || s.back() == '\r')) s.pop_back();
  return s;
}

inline std::string joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

struct Block {
  int line = 0;                    // line of the opening fence, 1-based
  std::string kind;                // the first word after the backticks
  std::vector<std::string> words;  // the words after the kind
  std::vector<std::string> lines;  // the content, without newlines
};

// Fenced blocks of the text, in order; a block left open is printed and
// given the kind "unclosed".
inline std::vector<Block> read_blocks(const std::string& text) {
  std::vector<Block> blocks;
  std::vector<std::string> lines = split_lines(text);
  for (size_t i = 0; i < lines.size(); ++i) {
    if (lines[i].rfind("```", 0) != 0) continue;
    Block b;
    b.line = static_cast<int>(i + 1);
    std::vector<std::string> info = split_words(lines[i].substr(3));
    if (!info.empty()) {
      b.kind = info[0];
      b.words.assign(info.begin() + 1, info.end());
    }
    size_t j = i + 1;
    while (j < lines.size() && rstrip(lines[j]) != "```") b.lines.push_back(lines[j++]);
    if (j == lines.size()) {
      std::printf("line %d: fenced block is not closed\n", b.line);
      b.kind = "unclosed";
    }
    blocks.push_back(b);
    i = j;
  }
  return blocks;
}

}  // namespace sorvel::testing
