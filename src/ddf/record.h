// The arguments of one dynamic data function as its reader leaves them: one
// record of numbers per alternative, whose first number is its weight (the
// held value for HO), and the tables beside the records.
//
// Record layouts:
//   RA  weight, distribution code, low, high
//   RW  weight, low, high, window width, walk position (0..1)
//   MO  weight, curve code, curve value, start code, start low, start high,
//       end code, end low, end high
//   SE  weight, the set's elements
//   MS  weight, curve code, curve value, set A's elements, set B's elements
//   HO  the held value
//   EX  weight, length, first operand kind, first operand value, then per
//       operation: operator, operand kind, operand value
//   S2  weight, every value of every group in turn
#pragma once

#include <vector>

#include "base/observer.h"
#include "base/random.h"

namespace sorvel {

constexpr int kMaxAlternatives = 128;  // alternatives, set elements, groups

struct DdfArgs {
  float dur = 0.0f;  // >= 0: a span of beats; -n: n events
  std::vector<std::vector<float>> alt;
  std::vector<int> size;   // SE: set size; MS: size of set A
  std::vector<int> size2;  // MS: size of set B
  std::vector<int> mode;   // SE, S2: 0 free, 1 without replacement, 2 no repeat; EX: 1 whole numbers
  // S2: for each alternative, each group's first position among the values and its length.
  std::vector<std::vector<int>> group_start, group_len;
  // Where each weight was written; kept only for a run with an observer.
  std::vector<WeightSpan> weight_at;

  int n() const { return static_cast<int>(alt.size()); }
};

// The choice state of SE and S2: per alternative, a used flag per element, how
// many are used, and the last choice.
struct SetChoice {
  std::vector<std::vector<char>> used;
  std::vector<int> used_count;  // elements marked in `used`
  std::vector<int> last;
  std::vector<Modulus> place;  // each set's size, to turn a draw into a place
};

}  // namespace sorvel
