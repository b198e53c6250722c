// The set-element choice over many rounds, and the item limits of the
// function readers at the exact point where they refuse.
#include <gtest/gtest.h>

#include <set>
#include <string>

#include "base/catalog.h"
#include "ddf/engine.h"
#include "ddf/readers.h"
#include "support/text_input.h"

namespace sorvel {
namespace {

TEST(SetElement, FreeChoiceIsTheDrawModuloTheSizePlusOne) {
  Rng rng, twin;
  SetChoice choice;
  init_did(choice, {5});
  for (int i = 0; i < 50; ++i) EXPECT_EQ(get_set_element(rng, 0, 5, choice, 0), twin.rand() % 5 + 1);
}

TEST(SetElement, WithoutReplacementUsesEachElementOncePerRound) {
  Rng rng;
  rng.srand(7);
  SetChoice choice;
  init_did(choice, {4, 3});
  for (int round = 0; round < 6; ++round) {
    std::set<int> seen;
    for (int i = 0; i < 4; ++i) seen.insert(get_set_element(rng, 0, 4, choice, 1));
    EXPECT_EQ(seen, (std::set<int>{1, 2, 3, 4})) << "round " << round;
  }
  // The second alternative keeps a state of its own.
  std::set<int> seen;
  for (int i = 0; i < 3; ++i) seen.insert(get_set_element(rng, 1, 3, choice, 1));
  EXPECT_EQ(seen, (std::set<int>{1, 2, 3}));

  // Seed 41, a set of 3: the draws 1439342445 and 1957817266 give elements 1
  // and 2; 820628556 gives the used 1 again, so 1281127757 is drawn: 3. All
  // are used now and are freed: 571340794, 47947851, 1650499925 give 2, 1, 3.
  rng.srand(41);
  init_did(choice, {3});
  for (int expected : {1, 2, 3, 2, 1, 3}) EXPECT_EQ(get_set_element(rng, 0, 3, choice, 1), expected);
  EXPECT_EQ(rng.rand(), 1205275318);  // the eighth draw
}

TEST(SetElement, NoImmediateRepetition) {
  Rng rng;
  rng.srand(3);
  SetChoice choice;
  init_did(choice, {2});
  int last = get_set_element(rng, 0, 2, choice, 2);
  for (int i = 0; i < 200; ++i) {
    const int next = get_set_element(rng, 0, 2, choice, 2);
    ASSERT_NE(next, last);
    last = next;
  }
}

std::string repeat(const std::string& s, int n) {
  std::string out;
  for (int i = 0; i < n; ++i) out += s;
  return out;
}

// A function reader on the first line of `text`, placed after the two-letter
// name, in p4 of a block of 8 p-fields whose p2 and p3 are defined.
struct Reader {
  explicit Reader(const std::string& text) : in(text), block(1000), ctx{in.run, block, pfield, in.src} {
    in.read_line(2);
    pfield.P_NO = 4;
    block.MAX_PFIELDS = 8;
    block.DID_P[2] = block.DID_P[3] = 1;
  }
  testing::TextInput in;
  Block block;
  Pfield pfield;
  Ctx ctx;
  DdfArgs args;
};

// 128 alternatives, elements of a set (in either set of MS), groups of an S2
// alternative, and 41 operations in an equation pass; the item past the
// limit is refused right after it is read.
TEST(Limits, ItemsPastTheLimitAreRefusedAsSoonAsRead) {
  const struct {
    std::string head, item, tail;
    int (*reader)(Ctx&, DdfArgs&);
    int limit, error;
  } cases[] = {
      {"ra(-1", " .0078125 5", ")", get_RA_data, 128, kErrBadParameterCount},
      {"se(-1 1 [", "1 ", "])", get_SE_data, 128, kErrBadParameterCount},
      {"ms(-1 1 [1] [", "2 ", "])", get_MS_data, 128, kErrBadParameterCount},
      {"s2(-1 1 [", "1:2 ", "])", get_S2_data, 128, kErrBadParameterCount},
      {"ex(-1 1 [p2", "+1", "])", get_EX_data, 41, kErrValueOrSyntax},
  };
  for (const auto& c : cases) {
    Reader ok(c.head + repeat(c.item, c.limit) + c.tail);
    EXPECT_EQ(c.reader(ok.ctx, ok.args), kOk) << c.head;
    Reader over(c.head + repeat(c.item, c.limit + 1) + c.tail);
    EXPECT_EQ(c.reader(over.ctx, over.args), c.error) << c.head;
    const size_t end = c.head.size() + c.item.size() * static_cast<size_t>(c.limit + 1);
    EXPECT_EQ(over.in.src.pos, static_cast<int>(c.item.back() == ' ' ? end - 1 : end)) << c.head;
  }
}

}  // namespace
}  // namespace sorvel
