// The fenced blocks of a text, as the end-to-end cases (tests/cases/*.case)
// and the guide's examples (docs/guide.md) are written: a line starting with
// three backticks opens a block, the words after them say what it is, and a
// line of three backticks alone (blanks after them aside) closes it.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "support/program.h"

namespace sorvel::testing {

struct Block {
  int line = 0;  // line of the opening fence, 1-based
  std::string kind;                // the first word after the backticks
  std::vector<std::string> words;  // the words after the kind
  std::vector<std::string> lines;  // the content, without newlines
};

inline std::string rstrip(std::string s) {
  while (!s.empty() && (s.back() == ' ' || s.back() == '\t' || s.back() == '\r')) s.pop_back();
  return s;
}

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
