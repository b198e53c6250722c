// The event list and the repeat queue: onsets of groups and rests, chord
// members made by fused values, repeated groups, loop copies, the block
// summary and the per-block event limit.
#include "output/events.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>
#include <vector>

namespace sorvel {
namespace {

// The events of a list, first to last.
std::vector<Event*> events(const EventList& list) {
  std::vector<Event*> out;
  if (!list.handle) return out;
  Event* e = list.handle->next;
  do {
    out.push_back(e);
    e = e->next;
  } while (e != list.handle->next && out.size() < 100000);
  return out;
}

// Appends an event as p2 does; `fused` makes it a chord member.
Event* add(EventList& list, float rhythm, float start, float beat, int count = 5,
           int fused = 0) {
  int flag = fused;
  EXPECT_EQ(InsertBegTime(rhythm, list, start, beat, count, flag), 1);
  EXPECT_EQ(flag, 0);  // the fuse mark is used up
  return list.handle;
}

TEST(InsertBegTime, FirstEventTakesTheBlockStartAndRestsAdvanceTime) {
  EventList list;
  Event* a = add(list, -1.5f, 2.0f, 0.0f);
  EXPECT_EQ(a->start, 2.0f);
  EXPECT_EQ(a->dur, -1.5f);
  EXPECT_EQ(a->beat, 0.0f);
  EXPECT_EQ(a->code, 0);
  EXPECT_EQ(a->next, a);  // a ring of one

  // The start argument matters only for the first event.
  Event* b = add(list, 1.0f, 99.0f, 1.5f);
  EXPECT_EQ(b->start, 3.5f);  // 2 + |-1.5|
  EXPECT_EQ(b->beat, 1.5f);
  Event* c = add(list, 0.5f, 99.0f, 2.5f);
  EXPECT_EQ(c->start, 4.5f);
  EXPECT_EQ(list.handle, c);
  EXPECT_EQ(c->next, a);
  EXPECT_EQ(events(list), (std::vector<Event*>{a, b, c}));
}

TEST(InsertBegTime, ChordMembersShareStartAndBeat) {
  EventList list;
  Event* lead = add(list, 1.0f, 0.0f, 0.0f);
  Event* m1 = add(list, 2.0f, 50.0f, 7.0f, 5, 1);  // the given beat is ignored
  Event* m2 = add(list, 0.5f, 50.0f, 8.0f, 5, 1);
  Event* next = add(list, 1.0f, 50.0f, 1.0f);
  Event* after = add(list, 1.0f, 50.0f, 2.0f);

  for (Event* m : {m1, m2}) {
    EXPECT_EQ(m->start, 0.0f);
    EXPECT_EQ(m->beat, 0.0f);
    EXPECT_EQ(m->code, 1);
  }
  EXPECT_EQ(m1->dur, 2.0f);
  EXPECT_EQ(m2->dur, 0.5f);
  // The next onset follows the longest member of the chord.
  EXPECT_EQ(next->start, 2.0f);
  EXPECT_EQ(next->code, 0);
  EXPECT_EQ(next->beat, 1.0f);
  // ... and the one after that only its own group.
  EXPECT_EQ(after->start, 3.0f);
  EXPECT_EQ(events(list), (std::vector<Event*>{lead, m1, m2, next, after}));
}

TEST(InsertBegTime, ARestInAChordCountsByItsMagnitude) {
  EventList list;
  add(list, 1.0f, 0.0f, 0.0f);
  add(list, -3.0f, 0.0f, 0.0f, 5, 1);
  EXPECT_EQ(add(list, 1.0f, 0.0f, 1.0f)->start, 3.0f);
}

TEST(InsertBegTime, NewEventsHaveZeroedValues) {
  EventList list;
  Event* a = add(list, 1.0f, 0.0f, 0.0f, 128);
  for (int k = 0; k < 128; ++k) a->pf[k] = 9.0f;
  list.FreeListNodes();
  Event* b = add(list, 1.0f, 0.0f, 0.0f, 128);
  for (int k = 0; k < 128; ++k) ASSERT_EQ(b->pf[k], 0.0f) << k;
}

TEST(EventList, ManyEventsKeepSeparateValues) {
  EventList list;
  const int n = 20000;
  for (int i = 0; i < n; ++i) {
    Event* e = add(list, 1.0f, 0.0f, static_cast<float>(i), 128);
    e->pf[0] = static_cast<float>(i);
    e->pf[124] = static_cast<float>(-i);
  }
  std::vector<Event*> all = events(list);
  ASSERT_EQ(all.size(), static_cast<size_t>(n));
  EXPECT_EQ(list.size(), static_cast<size_t>(n));
  for (int i = 0; i < n; ++i) {
    ASSERT_EQ(all[i]->pf[0], static_cast<float>(i));
    ASSERT_EQ(all[i]->pf[124], static_cast<float>(-i));
    ASSERT_EQ(all[i]->start, static_cast<float>(i));
  }
}

// Four events a b c d, one second apart, beats 0 1 2 3, with room for
// p4 and p5 (count 5); p5 already holds 100, 101, 102, 103.
struct FourEvents {
  EventList list;
  std::vector<Event*> e;
  explicit FourEvents(int count = 5) {
    for (int i = 0; i < 4; ++i) {
      Event* ev = add(list, 1.0f, 0.0f, static_cast<float>(i), count);
      for (int k = 1; k <= count - 4; ++k) ev->pf[k] = static_cast<float>(100 * k + i);
      e.push_back(ev);
    }
  }
};

TEST(StorePfield, UnfusedValuesGoToTheEventsInTurn) {
  FourEvents f;
  f.e[1]->code = 1;  // left over from an earlier p-field
  Event* cursor = f.list.handle;
  Event* LUT = nullptr;
  int fused = 0;
  for (int i = 0; i < 4; ++i) {
    ASSERT_EQ(StorePfield(static_cast<float>(10 * (i + 1)), cursor, f.list, 4, 5, fused, LUT, 2.0f), 1);
    EXPECT_EQ(cursor, f.e[i]);
    EXPECT_EQ(LUT, f.e[i]);
  }
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(f.e[i]->pf[0], static_cast<float>(20 * (i + 1)));  // scaled by the factor
    EXPECT_EQ(f.e[i]->code, 0);
  }
  EXPECT_EQ(f.list.size(), 4u);
}

TEST(StorePfield, FusedValueOnTheLastEventBecomesTheNewLast) {
  FourEvents f;
  Event* cursor = f.list.handle;
  Event* LUT = nullptr;
  int fused = 0;
  for (int i = 0; i < 4; ++i) StorePfield(1.0f, cursor, f.list, 4, 5, fused, LUT, 1.0f);
  fused = 1;
  ASSERT_EQ(StorePfield(35.0f, cursor, f.list, 4, 5, fused, LUT, 1.0f), 1);
  Event* copy = f.list.handle;
  ASSERT_NE(copy, f.e[3]);
  EXPECT_EQ(cursor, copy);
  EXPECT_EQ(fused, 0);
  EXPECT_EQ(LUT, f.e[3]);  // a chord member does not lead a group
  EXPECT_EQ(copy->code, 1);
  EXPECT_EQ(copy->pf[0], 35.0f);
  EXPECT_EQ(copy->pf[1], f.e[3]->pf[1]);  // every other field copied
  EXPECT_EQ(copy->start, f.e[3]->start);
  EXPECT_EQ(copy->dur, f.e[3]->dur);
  EXPECT_EQ(copy->beat, f.e[3]->beat);
  EXPECT_EQ(copy->next, f.e[0]);
  EXPECT_EQ(events(f.list).size(), 5u);
}

TEST(StorePfield, FusedValueInsideTheList) {
  FourEvents f;
  Event* cursor = f.list.handle;
  Event* LUT = nullptr;
  int fused = 0;
  StorePfield(1.0f, cursor, f.list, 4, 5, fused, LUT, 1.0f);
  fused = 1;
  StorePfield(2.0f, cursor, f.list, 4, 5, fused, LUT, 1.0f);
  Event* member = cursor;
  StorePfield(3.0f, cursor, f.list, 4, 5, fused, LUT, 1.0f);
  EXPECT_EQ(cursor, f.e[1]);
  EXPECT_EQ(f.list.handle, f.e[3]);
  EXPECT_EQ(events(f.list), (std::vector<Event*>{f.e[0], member, f.e[1], f.e[2], f.e[3]}));
  EXPECT_EQ(member->start, 0.0f);
  EXPECT_EQ(member->pf[0], 2.0f);
  EXPECT_EQ(f.e[1]->pf[0], 3.0f);
}

TEST(DoListChord, RepeatsTheGroupOnTheNextEvent) {
  FourEvents f;
  Event* cursor = f.list.handle;
  Event* LUT = nullptr;
  int fused = 0;
  StorePfield(5.0f, cursor, f.list, 4, 5, fused, LUT, 1.0f);
  fused = 1;
  StorePfield(6.0f, cursor, f.list, 4, 5, fused, LUT, 1.0f);
  Event* a2 = cursor;
  ASSERT_EQ(LUT, f.e[0]);

  int added = -1;
  ASSERT_EQ(DoListChord(f.list, cursor, LUT, 4, 5, added), 1);
  EXPECT_EQ(added, 1);
  Event* b = f.e[1];
  Event* b2 = cursor;
  EXPECT_EQ(b->pf[0], 5.0f);
  EXPECT_EQ(b->code, 0);
  EXPECT_EQ(b2->pf[0], 6.0f);
  EXPECT_EQ(b2->code, 1);
  EXPECT_EQ(b2->start, b->start);
  EXPECT_EQ(b2->beat, b->beat);
  EXPECT_EQ(b2->dur, b->dur);
  EXPECT_EQ(b2->pf[1], 101.0f);  // the event's own other values
  EXPECT_EQ(f.list.handle, f.e[3]);
  EXPECT_EQ(events(f.list), (std::vector<Event*>{f.e[0], a2, b, b2, f.e[2], f.e[3]}));
}

TEST(DoListChord, OnTheLastEventKeepsWholeSecondsOnly) {
  FourEvents f;
  f.e[0]->dur = 0.75f;
  f.e[3]->start = 3.7f;
  f.e[0]->pf[0] = 5.0f;
  Event* cursor = f.e[3];
  int added = -1;
  ASSERT_EQ(DoListChord(f.list, cursor, f.e[0], 4, 5, added), 1);
  Event* n = f.list.handle;
  EXPECT_EQ(cursor, n);
  EXPECT_EQ(n->start, 3.0f);  // 3 + 0
  EXPECT_EQ(n->dur, 0.0f);
  EXPECT_EQ(n->beat, f.e[0]->beat);
  EXPECT_EQ(n->pf[0], 5.0f);
  EXPECT_EQ(n->pf[1], 103.0f);  // the other values from the cursor event
  EXPECT_EQ(n->code, 0);
  EXPECT_EQ(n->next, f.e[0]);
  EXPECT_EQ(added, 0);

  // A rest as the source: magnitudes of the truncated whole numbers.
  FourEvents r;
  r.e[1]->dur = -2.5f;
  r.e[3]->start = 5.9f;
  cursor = r.e[3];
  ASSERT_EQ(DoListChord(r.list, cursor, r.e[1], 4, 5, added), 1);
  EXPECT_EQ(cursor->start, 7.0f);
  EXPECT_EQ(cursor->dur, 2.0f);
  EXPECT_EQ(cursor->beat, 1.0f);
}

TEST(DoListChord, OnTheLastEventWithAChordInAMiddlePfield) {
  // p4, p5, p6; p5 is repeated. The source group is a (leader) and a member.
  FourEvents f(6);
  Event* cursor = f.list.handle;
  Event* LUT = nullptr;
  int fused = 0;
  StorePfield(7.0f, cursor, f.list, 5, 6, fused, LUT, 1.0f);
  fused = 1;
  StorePfield(8.0f, cursor, f.list, 5, 6, fused, LUT, 1.0f);
  f.e[3]->start = 3.0f;
  f.e[0]->dur = 2.0f;
  cursor = f.e[3];
  int added = 0;
  ASSERT_EQ(DoListChord(f.list, cursor, LUT, 5, 6, added), 1);
  EXPECT_EQ(added, 1);
  std::vector<Event*> all = events(f.list);
  ASSERT_EQ(all.size(), 7u);
  Event* lead = all[5];
  Event* member = all[6];
  EXPECT_EQ(f.list.handle, member);
  EXPECT_EQ(cursor, member);
  EXPECT_EQ(lead->start, 5.0f);
  EXPECT_EQ(lead->dur, 2.0f);
  EXPECT_EQ(lead->pf[1], 7.0f);
  EXPECT_EQ(lead->pf[0], f.e[3]->pf[0]);  // below the repeated p-field
  EXPECT_EQ(lead->pf[2], 203.0f);         // above it
  EXPECT_EQ(member->pf[1], 8.0f);
  EXPECT_EQ(member->pf[2], 203.0f);
  EXPECT_EQ(member->code, 1);
  EXPECT_EQ(member->start, 5.0f);
  EXPECT_EQ(member->dur, 2.0f);
  EXPECT_EQ(member->beat, lead->beat);
}

// The queue's values and fuse flags, first to last; also checks that the
// backward links walk the same ring.
std::vector<std::pair<float, int>> entries(const RepeatQueue& queue) {
  std::vector<std::pair<float, int>> out;
  if (!queue.q) return out;
  const QEntry* first = queue.q->next;
  const QEntry* e = first;
  do {
    out.emplace_back(e->value, e->fused);
    e = e->next;
  } while (e != first && out.size() < 1000);
  std::vector<std::pair<float, int>> back;
  e = queue.q;
  do {
    back.emplace(back.begin(), e->value, e->fused);
    e = e->prev;
  } while (e != queue.q && back.size() < 1000);
  EXPECT_EQ(out, back);
  EXPECT_EQ(first->prev, queue.q);
  return out;
}

using Q = std::vector<std::pair<float, int>>;

TEST(RepeatQueue, AFusedValueCannotOpenTheQueue) {
  RepeatQueue q;
  EXPECT_EQ(StoreInQ(1.0f, q, 1), 0);
  EXPECT_EQ(q.q, nullptr);
  EXPECT_EQ(StoreInQ(1.0f, q, 0), 1);
  EXPECT_EQ(StoreInQ(2.0f, q, 1), 1);
  EXPECT_EQ(entries(q), (Q{{1, 0}, {2, 1}}));
  q.FreeQNodes();
  EXPECT_EQ(q.q, nullptr);
}

TEST(RepeatQueue, DoQEventCopiesTheLastGroup) {
  RepeatQueue q;
  StoreInQ(1, q, 0);
  StoreInQ(2, q, 1);
  StoreInQ(3, q, 0);
  StoreInQ(4, q, 1);
  ASSERT_EQ(DoQEvent(q), 1);
  EXPECT_EQ(entries(q), (Q{{1, 0}, {2, 1}, {3, 0}, {4, 1}, {3, 0}, {4, 1}}));

  RepeatQueue single;
  StoreInQ(1, single, 0);
  StoreInQ(2, single, 0);
  ASSERT_EQ(DoQEvent(single), 1);
  EXPECT_EQ(entries(single), (Q{{1, 0}, {2, 0}, {2, 0}}));

  RepeatQueue one;
  StoreInQ(7, one, 0);
  ASSERT_EQ(DoQEvent(one), 1);
  ASSERT_EQ(DoQEvent(one), 1);
  EXPECT_EQ(entries(one), (Q{{7, 0}, {7, 0}, {7, 0}}));

  // The whole queue is one group: all of it is copied.
  RepeatQueue chord;
  StoreInQ(1, chord, 0);
  StoreInQ(2, chord, 1);
  StoreInQ(3, chord, 1);
  ASSERT_EQ(DoQEvent(chord), 1);
  EXPECT_EQ(entries(chord), (Q{{1, 0}, {2, 1}, {3, 1}, {1, 0}, {2, 1}, {3, 1}}));
}

// Events at beats 0, 1, 1 (a chord member), 2, 3.5, 4.
struct Beats {
  EventList list;
  std::vector<Event*> e;
  Beats() {
    e.push_back(add(list, 1, 0, 0));
    e.push_back(add(list, 1, 0, 1));
    e.push_back(add(list, 1, 0, 1, 5, 1));
    e.push_back(add(list, 1, 0, 2));
    e.push_back(add(list, 1, 0, 3.5f));
    e.push_back(add(list, 1, 0, 4));
  }
};

TEST(ListSize, CountsEventsWithinTheSpanInclusive) {
  Beats b;
  float first = -1, last = -1;
  EXPECT_EQ(ListSize(2.0f, first, last, b.list.handle, b.list), 4u);  // from the first event
  EXPECT_EQ(first, 0.0f);
  EXPECT_EQ(last, 2.0f);
  EXPECT_EQ(ListSize(1.999f, first, last, b.list.handle, b.list), 3u);
  EXPECT_EQ(last, 1.0f);
  EXPECT_EQ(ListSize(0.0f, first, last, b.list.handle, b.list), 1u);
  EXPECT_EQ(ListSize(100.0f, first, last, b.list.handle, b.list), 6u);
  EXPECT_EQ(last, 4.0f);

  // From the event after the given one.
  EXPECT_EQ(ListSize(1.0f, first, last, b.e[0], b.list), 3u);
  EXPECT_EQ(first, 1.0f);
  EXPECT_EQ(last, 2.0f);
  // The walk ends at the end of the list, not around the ring.
  EXPECT_EQ(ListSize(100.0f, first, last, b.e[4], b.list), 1u);
  EXPECT_EQ(first, 4.0f);
}

TEST(ListSize, BoundIsASinglePrecisionSum) {
  // 0.1f + 0.2f rounds to 0.3f in single precision (in double it is less),
  // so an event at beat 0.3f lies within the span.
  EventList list;
  add(list, 1, 0, 0.1f);
  add(list, 1, 0, 0.3f);
  float first, last;
  EXPECT_EQ(ListSize(0.2f, first, last, list.handle, list), 2u);
  EXPECT_EQ(last, 0.3f);
}

TEST(ListSize, TheFirstEventPastTheSpanEndsTheWalk) {
  EventList list;
  add(list, 1, 0, 0);
  add(list, 1, 0, 5);
  add(list, 1, 0, 1);
  float first, last;
  EXPECT_EQ(ListSize(2.0f, first, last, list.handle, list), 1u);

  EventList empty;
  first = last = 9;
  EXPECT_EQ(ListSize(2.0f, first, last, nullptr, empty), 0u);
  EXPECT_EQ(first, 9.0f);
}

TEST(GetListStats, EmptyListCountsZeroAndLeavesTheRest) {
  EventList list;
  double secs = -1, end = -2;
  float beats = -3;
  int count = 5;
  GetListStats(list, secs, beats, end, count);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(secs, -1.0);
  EXPECT_EQ(beats, -3.0f);
  EXPECT_EQ(end, -2.0);
}

TEST(GetListStats, LatestEndNotTheLastEvent) {
  EventList list;
  Event* a = add(list, 1, 1.0f, 0.5f);
  Event* b = add(list, 1, 0, 1.5f);
  Event* c = add(list, 1, 0, 3.0f);
  a->dur = 2.0f;   // ends at 3
  b->dur = 5.0f;   // starts at 2, ends at 7
  c->dur = 0.5f;   // starts at 3, ends at 3.5
  double secs, end;
  float beats;
  int count;
  GetListStats(list, secs, beats, end, count);
  EXPECT_EQ(count, 3);
  EXPECT_EQ(end, 7.0);
  EXPECT_EQ(secs, 6.0);
  EXPECT_EQ(beats, 2.5f);  // the last event's length is not counted
}

TEST(GetListStats, SumsInDoublePrecision) {
  EventList list;
  Event* a = add(list, 0.2f, 0.1f, 0.0f);
  double secs, end;
  float beats;
  int count;
  GetListStats(list, secs, beats, end, count);
  EXPECT_EQ(a->start, 0.1f);
  EXPECT_EQ(end, static_cast<double>(0.1f) + static_cast<double>(0.2f));
  EXPECT_NE(end, static_cast<double>(0.1f + 0.2f));
  EXPECT_EQ(secs, end - static_cast<double>(0.1f));
  EXPECT_EQ(beats, 0.0f);
}

TEST(GetListStats, ComparesWithGreaterThan) {
  // A NaN end on the first event is never beaten; a later one never wins.
  EventList first_nan;
  add(first_nan, NAN, 0, 0);
  add(first_nan, 1, 0, 1)->start = 4.0f;
  double secs, end;
  float beats;
  int count;
  GetListStats(first_nan, secs, beats, end, count);
  EXPECT_TRUE(std::isnan(end));
  EXPECT_EQ(count, 2);

  EventList later_nan;
  add(later_nan, 2, 0, 0);
  add(later_nan, NAN, 0, 1);
  GetListStats(later_nan, secs, beats, end, count);
  EXPECT_EQ(end, 2.0);

  // Rests end before they start.
  EventList rests;
  add(rests, -1, 0, 0);
  add(rests, -1, 0, 1);
  GetListStats(rests, secs, beats, end, count);
  EXPECT_EQ(end, 0.0);  // 1 + -1 beats 0 + -1
  EXPECT_EQ(secs, 0.0);
}

TEST(ClearLFusedCode, EveryEventLeadsItsGroup) {
  Beats b;
  ASSERT_EQ(b.e[2]->code, 1);
  ClearLFusedCode(b.list);
  for (Event* e : b.e) EXPECT_EQ(e->code, 0);
  EventList empty;
  ClearLFusedCode(empty);
}

TEST(VLSize, BytesOfAVariableLengthQuantity) {
  EXPECT_EQ(VLSize(0), 1);
  EXPECT_EQ(VLSize(127), 1);
  EXPECT_EQ(VLSize(128), 2);
  EXPECT_EQ(VLSize(16383), 2);
  EXPECT_EQ(VLSize(16384), 3);
  EXPECT_EQ(VLSize((1u << 21) - 1), 3);
  EXPECT_EQ(VLSize(1u << 21), 4);
  EXPECT_EQ(VLSize((1u << 28) - 1), 4);
  EXPECT_EQ(VLSize(1u << 28), 5);
  EXPECT_EQ(VLSize(0xFFFFFFFFu), 5);
}

TEST(EventLimit, OneEventTooManyIsRefused) {
  EventList list(3);
  for (int i = 0; i < 3; ++i) add(list, 1, 0, static_cast<float>(i));
  Event* last = list.handle;
  int fused = 0;
  EXPECT_EQ(InsertBegTime(1, list, 0, 3, 5, fused), 0);
  EXPECT_EQ(list.handle, last);
  EXPECT_EQ(events(list).size(), 3u);
  EXPECT_EQ(list.GetListNode(5), nullptr);
  EXPECT_EQ(CopyEvent(list, last, 5), nullptr);

  // A fused store and a repeated group fail the same way and link nothing.
  Event* cursor = list.handle;
  Event* LUT = nullptr;
  StorePfield(1, cursor, list, 4, 5, fused, LUT, 1.0f);
  fused = 1;
  EXPECT_EQ(StorePfield(2, cursor, list, 4, 5, fused, LUT, 1.0f), 0);
  cursor = list.handle;
  int added = 0;
  EXPECT_EQ(DoListChord(list, cursor, LUT, 4, 5, added), 0);
  EXPECT_EQ(events(list).size(), 3u);

  // Freeing the list makes room again.
  list.FreeListNodes();
  EXPECT_EQ(list.handle, nullptr);
  for (int i = 0; i < 3; ++i) EXPECT_NE(list.GetListNode(5), nullptr);
  EXPECT_EQ(list.GetListNode(5), nullptr);
}

}  // namespace
}  // namespace sorvel
