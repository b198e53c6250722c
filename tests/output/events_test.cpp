// The event list and the repeat queue: onsets of groups and rests, chord
// members made by fused values, repeated groups on both paths, loop copies,
// the spans and the block summary, and the per-block event limit.
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
Event* add(EventList& list, float rhythm, float start, float beat, int count = 5, int fused = 0) {
  int flag = fused;
  EXPECT_EQ(InsertBegTime(rhythm, list, start, beat, count, flag), 1);
  EXPECT_EQ(flag, 0);  // the fuse mark is used up
  return list.handle;
}

TEST(InsertBegTime, OnsetsFollowTheLongestMemberOfTheLastGroup) {
  EventList list;
  Event* a = add(list, -1.5f, 2.0f, 0.0f);  // the first event takes the block start
  EXPECT_EQ(a->start, 2.0f);
  EXPECT_EQ(a->next, a);
  Event* b = add(list, 1.0f, 99.0f, 1.5f);  // a rest advances by its magnitude
  EXPECT_EQ(b->start, 3.5f);
  EXPECT_EQ(b->beat, 1.5f);
  Event* m1 = add(list, 2.0f, 50.0f, 7.0f, 5, 1);  // members: start and beat of the leader
  Event* m2 = add(list, -3.0f, 50.0f, 8.0f, 5, 1);
  for (Event* m : {m1, m2}) {
    EXPECT_EQ(m->start, 3.5f);
    EXPECT_EQ(m->beat, 1.5f);
    EXPECT_EQ(m->code, 1);
  }
  Event* c = add(list, 0.5f, 50.0f, 2.5f);  // after the rest of 3 in the chord
  EXPECT_EQ(c->start, 6.5f);
  EXPECT_EQ(c->code, 0);
  Event* d = add(list, 1.0f, 50.0f, 3.0f);  // and the next only after its own group
  EXPECT_EQ(d->start, 7.0f);
  EXPECT_EQ(events(list), (std::vector<Event*>{a, b, m1, m2, c, d}));
}

TEST(EventList, NewEventsHaveZeroedValuesAndManyKeepThemApart) {
  EventList list;
  Event* a = add(list, 1.0f, 0.0f, 0.0f, 128);
  for (int k = 0; k < 125; ++k) a->pf()[k] = 9.0f;
  list.FreeListNodes();
  Event* b = add(list, 1.0f, 0.0f, 0.0f, 128);
  for (int k = 0; k < 125; ++k) ASSERT_EQ(b->pf()[k], 0.0f) << k;
  list.FreeListNodes();

  const int n = 20000;
  for (int i = 0; i < n; ++i) {
    Event* e = add(list, 1.0f, 0.0f, static_cast<float>(i), 128);
    e->pf()[0] = static_cast<float>(i);
    e->pf()[124] = static_cast<float>(-i);
  }
  const std::vector<Event*> all = events(list);
  ASSERT_EQ(all.size(), static_cast<size_t>(n));
  EXPECT_EQ(list.size(), static_cast<size_t>(n));
  for (int i = 0; i < n; ++i) {
    ASSERT_EQ(all[i]->pf()[0], static_cast<float>(i));
    ASSERT_EQ(all[i]->pf()[124], static_cast<float>(-i));
    ASSERT_EQ(all[i]->start, static_cast<float>(i));
  }
}

// Four events a b c d, one second apart, beats 0 1 2 3, with values from p4
// to p(count); p5 and on hold 100k + i. The cursor starts before the first.
struct FourEvents {
  EventList list;
  std::vector<Event*> e;
  Event* cursor = nullptr;
  Event* LUT = nullptr;
  explicit FourEvents(int count = 5) {
    for (int i = 0; i < 4; ++i) {
      Event* ev = add(list, 1.0f, 0.0f, static_cast<float>(i), count);
      for (int k = 1; k <= count - 4; ++k) ev->pf()[k] = static_cast<float>(100 * k + i);
      e.push_back(ev);
    }
    cursor = list.handle;
  }
  int store(float value, int fused, int pno = 4, int count = 5, float factor = 1.0f) {
    return StorePfield(value, cursor, list, pno, count, fused, LUT, factor);
  }
};

TEST(StorePfield, ValuesGoToTheEventsInTurnAndFusedOnesMakeMembers) {
  FourEvents f;
  f.e[1]->code = 1;  // left over from an earlier p-field
  for (int i = 0; i < 2; ++i) ASSERT_EQ(f.store(static_cast<float>(10 * (i + 1)), 0, 4, 5, 2.0f), 1);
  EXPECT_EQ(f.e[0]->pf()[0], 20.0f);  // scaled by the factor
  EXPECT_EQ(f.e[1]->pf()[0], 40.0f);
  EXPECT_EQ(f.e[1]->code, 0);
  EXPECT_EQ(f.LUT, f.e[1]);

  // A fused value inside the list: a copy of the cursor event after it.
  ASSERT_EQ(f.store(45.0f, 1), 1);
  Event* inside = f.cursor;
  EXPECT_EQ(inside->code, 1);
  EXPECT_EQ(inside->pf()[0], 45.0f);
  EXPECT_EQ(inside->pf()[1], 101.0f);  // every other field copied
  EXPECT_EQ(inside->start, f.e[1]->start);
  EXPECT_EQ(f.LUT, f.e[1]);  // a chord member does not lead a group
  ASSERT_EQ(f.store(3.0f, 0), 1);
  EXPECT_EQ(f.cursor, f.e[2]);

  // A fused value on the last event becomes the new last.
  ASSERT_EQ(f.store(4.0f, 0), 1);
  ASSERT_EQ(f.store(35.0f, 1), 1);
  Event* last = f.list.handle;
  EXPECT_EQ(f.cursor, last);
  EXPECT_EQ(last->beat, f.e[3]->beat);
  EXPECT_EQ(last->dur, f.e[3]->dur);
  EXPECT_EQ(last->next, f.e[0]);
  EXPECT_EQ(events(f.list), (std::vector<Event*>{f.e[0], f.e[1], inside, f.e[2], f.e[3], last}));
}

TEST(DoListChord, InsideTheListTheNextEventTakesTheGroup) {
  FourEvents f;
  f.store(5.0f, 0);
  f.store(6.0f, 1);
  Event* a2 = f.cursor;
  ASSERT_EQ(f.LUT, f.e[0]);
  int added = -1;
  ASSERT_EQ(DoListChord(f.list, f.cursor, f.LUT, 4, 5, added), 1);
  EXPECT_EQ(added, 1);
  Event* b2 = f.cursor;
  EXPECT_EQ(f.e[1]->pf()[0], 5.0f);
  EXPECT_EQ(b2->pf()[0], 6.0f);
  EXPECT_EQ(b2->code, 1);
  EXPECT_EQ(b2->start, f.e[1]->start);
  EXPECT_EQ(b2->pf()[1], 101.0f);  // the event's own other values
  EXPECT_EQ(f.list.handle, f.e[3]);
  EXPECT_EQ(events(f.list), (std::vector<Event*>{f.e[0], a2, f.e[1], b2, f.e[2], f.e[3]}));
}

TEST(DoListChord, OnTheLastEventANewEventKeepsWholeSecondsOnly) {
  FourEvents f;
  f.e[1]->dur = -2.5f;  // a rest as the source: magnitudes of the truncated numbers
  f.e[1]->pf()[0] = 5.0f;
  f.e[3]->start = 5.9f;
  Event* cursor = f.e[3];
  int added = -1;
  ASSERT_EQ(DoListChord(f.list, cursor, f.e[1], 4, 5, added), 1);
  EXPECT_EQ(added, 0);
  EXPECT_EQ(cursor, f.list.handle);
  EXPECT_EQ(cursor->start, 7.0f);
  EXPECT_EQ(cursor->dur, 2.0f);
  EXPECT_EQ(cursor->beat, 1.0f);
  EXPECT_EQ(cursor->pf()[0], 5.0f);
  EXPECT_EQ(cursor->pf()[1], 103.0f);  // the other values from the cursor event
  EXPECT_EQ(cursor->next, f.e[0]);

  // A group of leader and member in p5 of p4..p6: the members follow the new event.
  FourEvents g(6);
  g.store(7.0f, 0, 5, 6);
  g.store(8.0f, 1, 5, 6);
  g.e[3]->start = 3.0f;
  g.e[0]->dur = 2.0f;
  cursor = g.e[3];
  ASSERT_EQ(DoListChord(g.list, cursor, g.LUT, 5, 6, added), 1);
  EXPECT_EQ(added, 1);
  const std::vector<Event*> all = events(g.list);
  ASSERT_EQ(all.size(), 7u);
  Event* lead = all[5];
  Event* member = all[6];
  EXPECT_EQ(g.list.handle, member);
  EXPECT_EQ(lead->start, 5.0f);
  EXPECT_EQ(lead->pf()[1], 7.0f);
  EXPECT_EQ(lead->pf()[2], 203.0f);
  EXPECT_EQ(member->pf()[1], 8.0f);
  EXPECT_EQ(member->pf()[2], 203.0f);
  EXPECT_EQ(member->code, 1);
  EXPECT_EQ(member->start, 5.0f);
  EXPECT_EQ(member->dur, 2.0f);
}

// The queue's values and fuse flags, first to last; checks that the backward
// links walk the same ring.
std::vector<std::pair<float, int>> entries(const RepeatQueue& queue) {
  std::vector<std::pair<float, int>> out, back;
  if (!queue.q) return out;
  const QEntry* e = queue.q->next;
  do {
    out.emplace_back(e->value, e->fused);
    e = e->next;
  } while (e != queue.q->next && out.size() < 1000);
  e = queue.q;
  do {
    back.emplace(back.begin(), e->value, e->fused);
    e = e->prev;
  } while (e != queue.q && back.size() < 1000);
  EXPECT_EQ(out, back);
  return out;
}

using Q = std::vector<std::pair<float, int>>;

TEST(RepeatQueue, AFusedValueCannotOpenTheQueueAndDoQEventCopiesTheLastGroup) {
  RepeatQueue q;
  EXPECT_EQ(StoreInQ(1, q, 1), 0);
  EXPECT_EQ(q.q, nullptr);
  const struct {
    Q stored, after;
  } cases[] = {
      {{{1, 0}, {2, 1}, {3, 0}, {4, 1}}, {{1, 0}, {2, 1}, {3, 0}, {4, 1}, {3, 0}, {4, 1}}},
      {{{1, 0}, {2, 0}}, {{1, 0}, {2, 0}, {2, 0}}},
      {{{7, 0}}, {{7, 0}, {7, 0}}},
      {{{1, 0}, {2, 1}, {3, 1}}, {{1, 0}, {2, 1}, {3, 1}, {1, 0}, {2, 1}, {3, 1}}},  // one group
  };
  for (const auto& c : cases) {
    RepeatQueue queue;
    for (const auto& [value, fused] : c.stored) ASSERT_EQ(StoreInQ(value, queue, fused), 1);
    ASSERT_EQ(DoQEvent(queue), 1);
    EXPECT_EQ(entries(queue), c.after);
  }
}

// Events at beats 0, 1, 1 (a chord member), 2, 3.5, 4.
struct Beats {
  EventList list;
  std::vector<Event*> e;
  Beats() {
    for (float beat : {0.0f, 1.0f}) e.push_back(add(list, 1, 0, beat));
    e.push_back(add(list, 1, 0, 1, 5, 1));
    for (float beat : {2.0f, 3.5f, 4.0f}) e.push_back(add(list, 1, 0, beat));
  }
};

TEST(ListSize, CountsEventsWithinTheSpanInclusive) {
  Beats b;
  const struct {
    float span;
    int from;  // the walk starts after this event; -1 for the list's last
    unsigned count;
    float first, last;
  } cases[] = {
      {2.0f, -1, 4, 0.0f, 2.0f}, {1.999f, -1, 3, 0.0f, 1.0f}, {0.0f, -1, 1, 0.0f, 0.0f},
      {100.0f, -1, 6, 0.0f, 4.0f}, {1.0f, 0, 3, 1.0f, 2.0f},
      {100.0f, 4, 1, 4.0f, 4.0f},  // the walk ends at the end of the list, not around it
  };
  for (const auto& c : cases) {
    float first = -1, last = -1;
    const Event* from = c.from < 0 ? b.list.handle : b.e[static_cast<size_t>(c.from)];
    EXPECT_EQ(ListSize(c.span, first, last, from, b.list), c.count) << c.span << " " << c.from;
    EXPECT_EQ(first, c.first) << c.span << " " << c.from;
    EXPECT_EQ(last, c.last) << c.span << " " << c.from;
  }

  // The bound is a float sum: 0.1f + 0.2f rounds to 0.3f (in double it is less).
  EventList sum;
  add(sum, 1, 0, 0.1f);
  add(sum, 1, 0, 0.3f);
  float first, last;
  EXPECT_EQ(ListSize(0.2f, first, last, sum.handle, sum), 2u);
  // The first event past the span ends the walk.
  EventList back;
  add(back, 1, 0, 0);
  add(back, 1, 0, 5);
  add(back, 1, 0, 1);
  EXPECT_EQ(ListSize(2.0f, first, last, back.handle, back), 1u);
  EventList empty;
  EXPECT_EQ(ListSize(2.0f, first, last, nullptr, empty), 0u);
}

struct Stats {
  double secs = -1, end = -2;
  float beats = -3;
  int count = 5;
  explicit Stats(const EventList& list) { GetListStats(list, secs, beats, end, count); }
};

TEST(GetListStats, LatestEndComparedWithGreaterThanInDoublePrecision) {
  EventList empty;
  Stats none(empty);  // count 0, the rest left alone
  EXPECT_EQ(none.count, 0);
  EXPECT_EQ(none.secs, -1.0);
  EXPECT_EQ(none.beats, -3.0f);
  EXPECT_EQ(none.end, -2.0);

  EventList list;  // starts 1, 2, 3 ending at 3, 7, 3.5
  add(list, 1, 1.0f, 0.5f)->dur = 2.0f;
  add(list, 1, 0, 1.5f)->dur = 5.0f;
  add(list, 1, 0, 3.0f)->dur = 0.5f;
  Stats s(list);
  EXPECT_EQ(s.count, 3);
  EXPECT_EQ(s.end, 7.0);
  EXPECT_EQ(s.secs, 6.0);
  EXPECT_EQ(s.beats, 2.5f);  // the last event's length is not counted

  EventList one;
  add(one, 0.2f, 0.1f, 0.0f);
  Stats d(one);
  EXPECT_EQ(d.end, static_cast<double>(0.1f) + static_cast<double>(0.2f));
  EXPECT_NE(d.end, static_cast<double>(0.1f + 0.2f));
  EXPECT_EQ(d.secs, d.end - static_cast<double>(0.1f));

  // A NaN end on the first event is never beaten; a later one never wins.
  EventList first_nan;
  add(first_nan, NAN, 0, 0);
  add(first_nan, 1, 0, 1)->start = 4.0f;
  EXPECT_TRUE(std::isnan(Stats(first_nan).end));
  EventList later_nan;
  add(later_nan, 2, 0, 0);
  add(later_nan, NAN, 0, 1);
  EXPECT_EQ(Stats(later_nan).end, 2.0);
  // Rests end before they start: 1 + -1 beats 0 + -1.
  EventList rests;
  add(rests, -1, 0, 0);
  add(rests, -1, 0, 1);
  EXPECT_EQ(Stats(rests).end, 0.0);
}

TEST(EventLimit, OneEventTooManyIsRefusedEverywhere) {
  EventList list(3);
  for (int i = 0; i < 3; ++i) add(list, 1, 0, static_cast<float>(i));
  Event* last = list.handle;
  int fused = 0;
  EXPECT_EQ(InsertBegTime(1, list, 0, 3, 5, fused), 0);
  EXPECT_EQ(list.handle, last);
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
