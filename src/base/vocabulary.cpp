#include "base/vocabulary.h"

#include "base/chars.h"

namespace sorvel {

namespace {

constexpr int kRows = static_cast<int>(sizeof kCommands / sizeof kCommands[0]);

// The row of every pair of lower-case characters, -1 for none: the scanner
// meets a name at every item of a data list, so finding it is one look-up.
struct Index {
  signed char row[128][128];
  bool letter[128];
  unsigned use[kCommandCodes];
};

constexpr Index make_index() {
  Index x{};
  for (auto& r : x.row)
    for (auto& v : r) v = -1;
  for (int i = 0; i < kRows; ++i) {  // one-character names first, so two-character ones win
    const CommandRow& c = kCommands[i];
    x.use[c.code] |= c.use;
    if (c.name[1] == '\0')
      for (auto& v : x.row[static_cast<int>(c.name[0])]) v = static_cast<signed char>(i);
  }
  for (int i = 0; i < kRows; ++i) {
    const CommandRow& c = kCommands[i];
    if (c.name[1] == '\0') continue;
    x.row[static_cast<int>(c.name[0])][static_cast<int>(c.name[1])] = static_cast<signed char>(i);
    if (!(c.use & kOneChar)) x.letter[static_cast<int>(c.name[0])] = true;
  }
  return x;
}

constexpr Index kIndex = make_index();

bool in_range(int c) { return c >= 0 && c < 128; }

}  // namespace

const CommandRow* find_command(int a, int b) {
  a = to_lower(a);
  b = to_lower(b);
  if (!in_range(a)) return nullptr;
  if (!in_range(b)) b = 0;  // no name has such a second character
  const int i = kIndex.row[a][b];
  return i < 0 ? nullptr : &kCommands[i];
}

bool is_command_letter(int a) {
  a = to_lower(a);
  return in_range(a) && kIndex.letter[a];
}

unsigned command_use(int code) {
  return code >= 0 && code < kCommandCodes ? kIndex.use[code] : 0;
}

}  // namespace sorvel
