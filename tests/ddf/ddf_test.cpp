// The pieces of the dynamic data functions that are easiest to pin down
// alone: the set-element choice, the duration head with T, and the limits of
// 128 items and 41 operations.
#include <gtest/gtest.h>

#include <cmath>
#include <set>
#include <string>

#include "../support/text_input.h"
#include "ddf/engine.h"
#include "ddf/readers.h"

namespace sorvel {
namespace {

using testing::TextInput;

// A reader context on the first line of `text`, placed just after a
// function's two-letter name, in p-field `pno` of a block of `npf` p-fields.
struct Reader {
  explicit Reader(const std::string& text, int pno = 4, int npf = 8)
      : in(text), block(1000), ctx{in.run, block, pfield, in.src} {
    in.read_line(2);
    pfield.P_NO = pno;
    block.MAX_PFIELDS = npf;
    for (int k = 2; k < pno; ++k) block.DID_P[k] = 1;
  }
  TextInput in;
  Block block;
  Pfield pfield;
  Ctx ctx;
};

// ---- get_set_element ----

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
}

TEST(SetElement, WithoutReplacementDrawsAgainWhileTheElementIsUsed) {
  // Seed 41, a set of 3: the draws 1439342445 and 1957817266 give elements 1
  // and 2; 820628556 gives the used 1 again, so 1281127757 is drawn: 3.  All
  // are used now and are freed: 571340794, 47947851, 1650499925 give 2, 1, 3.
  Rng rng;
  rng.srand(41);
  SetChoice choice;
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
    int next = get_set_element(rng, 0, 2, choice, 2);
    ASSERT_NE(next, last);
    last = next;
  }
}

// ---- get_dynfunc_dur ----

struct Head {
  int status;
  float dur;
  std::string messages;
  int pos;
};

// Reads the head of a function from "ra(...": the block is `etime` beats
// long, or, when `events` is not 0, that many events.
Head read_head(const std::string& text, float etime, unsigned events, bool quiet = false) {
  Reader r(text);
  r.block.ETIME = events ? -static_cast<float>(events) : etime;
  r.block.EVENTS = events;
  r.in.run.SUPRESS = quiet ? 1 : 0;
  float dur = 12345.0f;
  int status = get_dynfunc_dur(r.ctx, dur);
  return {status, dur, r.in.messages(), r.in.src.pos};
}

TEST(DurationHead, TIsTheBlockTimeInBeats) {
  Head h = read_head("ra(T 1 1)", 10.0f, 0);
  EXPECT_EQ(h.status, 0);
  EXPECT_EQ(h.dur, 10.0f);
  EXPECT_EQ(h.messages, "\n\tLine 1: T evaluated at =   10.00");
  EXPECT_EQ(h.pos, 5);  // on the weight, after the blank

  h = read_head("ra(T*0.5 1 1)", 10.0f, 0);
  EXPECT_EQ(h.dur, 5.0f);
  h = read_head("ra(T*.25 1 1)", 6.0f, 0);
  EXPECT_EQ(h.dur, 1.5f);
}

TEST(DurationHead, TInABlockOfEventsIsMinusTheRoundedCount) {
  EXPECT_EQ(read_head("ra(T 1 1)", 0, 7).dur, -7.0f);
  EXPECT_EQ(read_head("ra(T*0.5 1 1)", 0, 7).dur, -4.0f);   // 3.5 rounds up
  EXPECT_EQ(read_head("ra(T*0.5 1 1)", 0, 5).dur, -3.0f);   // 2.5 rounds up
  EXPECT_EQ(read_head("ra(T*0.3 1 1)", 0, 5).dur, -2.0f);   // 1.5 (in float) rounds up
  EXPECT_EQ(read_head("ra(T*1.5 1 1)", 0, 3).dur, -5.0f);   // 4.5 rounds up
  EXPECT_EQ(read_head("ra(T*0.29 1 1)", 0, 5).dur, -1.0f);  // 1.45 rounds down

  // A factor that rounds to nothing gives 0, not -0.
  Head h = read_head("ra(T*.05 1 1)", 0, 5);
  EXPECT_EQ(h.dur, 0.0f);
  EXPECT_FALSE(std::signbit(h.dur));
  EXPECT_EQ(h.messages, "\n\tLine 1: T evaluated at =    0.00");
}

TEST(DurationHead, QuietRunsPrintNothing) {
  Head h = read_head("ra(T 1 1)", 4.0f, 0, true);
  EXPECT_EQ(h.dur, 4.0f);
  EXPECT_EQ(h.messages, "");
}

TEST(DurationHead, Errors) {
  EXPECT_EQ(read_head("ra x(4 1 1)", 4, 0).status, 36);
  EXPECT_EQ(read_head("ra", 4, 0).status, 36);
  EXPECT_EQ(read_head("ra(t 1 1)", 4, 0).status, 40);
  EXPECT_EQ(read_head("ra()", 4, 0).status, 40);
  EXPECT_EQ(read_head("ra(T*x 1 1)", 4, 0).status, 53);
  EXPECT_EQ(read_head("ra(T* 2 1 1)", 4, 0).status, 53);
  EXPECT_EQ(read_head("ra(T*-2 1 1)", 4, 0).status, 53);
  Head h = read_head("ra(T*x 1 1)", 4, 0);
  EXPECT_EQ(h.pos, 5);  // on the x
  EXPECT_EQ(h.messages, "");
}

TEST(DurationHead, CommentsAndLineEndsBeforeAndAfterTheParenthesis) {
  Head h = read_head("ra ; a comment\n  ( /* one */ -3 1 1)", 4, 0);
  EXPECT_EQ(h.status, 0);
  EXPECT_EQ(h.dur, -3.0f);
  // Only one comment is skipped between two tokens.
  EXPECT_EQ(read_head("ra( /* one */ /* two */ -3 1 1)", 4, 0).status, 40);
}

// ---- the limits ----

std::string repeat(const std::string& s, int n) {
  std::string out;
  for (int i = 0; i < n; ++i) out += s;
  return out;
}

TEST(Limits, OneHundredAndTwentyEightAlternatives) {
  Reader ok("ra(-1" + repeat(" .0078125 5", 128) + ")");
  DdfArgs a;
  EXPECT_EQ(get_RA_data(ok.ctx, a), 0);
  EXPECT_EQ(a.n(), 128);

  const std::string text = "ra(-1" + repeat(" 0 1", 129) + " 0 1)";
  Reader over(text);
  DdfArgs b;
  EXPECT_EQ(get_RA_data(over.ctx, b), 35);
  EXPECT_EQ(over.in.src.pos, static_cast<int>(std::string("ra(-1").size() + 4 * 129));
}

TEST(Limits, OneHundredAndTwentyEightElementsInASet) {
  Reader ok("se(-1 1 [" + repeat("1 ", 128) + "])");
  DdfArgs a;
  EXPECT_EQ(get_SE_data(ok.ctx, a), 0);
  EXPECT_EQ(a.size.at(0), 128);

  Reader over("se(-1 1 [" + repeat("1 ", 129) + "])");
  DdfArgs b;
  EXPECT_EQ(get_SE_data(over.ctx, b), 35);
  EXPECT_EQ(over.in.src.pos, static_cast<int>(std::string("se(-1 1 [").size() + 2 * 129 - 1));

  // Both sets of MS share the limit.
  Reader ms("ms(-1 1 [1] [" + repeat("2 ", 129) + "])");
  DdfArgs c;
  EXPECT_EQ(get_MS_data(ms.ctx, c), 35);
}

TEST(Limits, OneHundredAndTwentyEightGroupsInAnS2Alternative) {
  Reader ok("s2(-1 1 [" + repeat("1:2 ", 128) + "])");
  DdfArgs a;
  EXPECT_EQ(get_S2_data(ok.ctx, a), 0);
  EXPECT_EQ(a.size.at(0), 128);
  EXPECT_EQ(a.alt.at(0).size(), 1u + 256u);

  Reader over("s2(-1 1 [" + repeat("1:2 ", 129) + "])");
  DdfArgs b;
  EXPECT_EQ(get_S2_data(over.ctx, b), 35);
}

TEST(Limits, FortyOneOperationsInAnEquation) {
  Reader ok("ex(-1 1 [p2" + repeat("+1", 41) + "])");
  DdfArgs a;
  EXPECT_EQ(get_EX_data(ok.ctx, a), 0);
  EXPECT_EQ(a.alt.at(0).at(1), 2.0f + 3.0f * 41.0f);  // the length

  const std::string text = "ex(-1 1 [p2" + repeat("+1", 42) + "+1])";
  Reader over(text);
  DdfArgs b;
  EXPECT_EQ(get_EX_data(over.ctx, b), 23);
  EXPECT_EQ(over.in.src.pos, static_cast<int>(std::string("ex(-1 1 [p2").size() + 2 * 42));
}

}  // namespace
}  // namespace sorvel
