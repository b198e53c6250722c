// The MIDI writer where the end-to-end files do not reach: values outside
// the MIDI ranges, deltas that lose ticks or go backwards, the variable-length
// quantities at every boundary, clamped deltas, and the one-pass placement of
// the note-offs against a plain walk.
#include "output/midi.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "base/diag.h"
#include "base/rounding.h"
#include "output/block_support.h"
#include "output/events.h"

namespace sorvel {
namespace {

using Bytes = std::vector<unsigned char>;
using testing::TestBlock;

Bytes bytes(FILE* f) {
  const std::string s = testing::contents(f);
  return Bytes(s.begin(), s.end());
}

Bytes concat(std::initializer_list<Bytes> parts) {
  Bytes out;
  for (const Bytes& p : parts) out.insert(out.end(), p.begin(), p.end());
  return out;
}

const Bytes kHeader = {'M', 'T', 'h', 'd', 0, 0, 0, 6, 0, 1, 0, 2, 0x01, 0xE0};

// The conductor track (4/4, 1,000,000 us a beat) ending with the delta `end`.
Bytes track1(const Bytes& end) {
  return concat({{'M', 'T', 'r', 'k', 0, 0, 0, static_cast<unsigned char>(18 + end.size())},
                 {0x00, 0xFF, 0x58, 0x04, 0x04, 0x02, 0x18, 0x08, 0x00, 0xFF, 0x51, 0x03, 0x0F, 0x42, 0x40},
                 end,
                 {0xFF, 0x2F, 0x00}});
}

// The note track holding `events` and the end of track.
Bytes track2(const Bytes& events) {
  const size_t n = events.size() + 4;
  return concat({{'M', 'T', 'r', 'k', static_cast<unsigned char>(n >> 24),
                  static_cast<unsigned char>(n >> 16), static_cast<unsigned char>(n >> 8),
                  static_cast<unsigned char>(n)},
                 events,
                 {0x00, 0xFF, 0x2F, 0x00}});
}

// Runs List2MIDI on the block and writes the file as the run does: the
// conductor track ends one second after the last event's end.
Bytes midi(TestBlock& t) {
  uint32_t size = 12345;
  EXPECT_EQ(List2MIDI(t.run, t.block, size), 1);
  FILE* f = std::tmpfile();
  const Event* last = t.block.note_list.handle;
  PutMidiHeader(f, 2);
  PutTrack1(f, last->start + last->dur + 1.0f);
  WriteTrack(f, t.block.note_list, size);
  Bytes out = bytes(f);
  std::fclose(f);
  return out;
}

TEST(MidiFile, KeyAndVelocityAreFoldedOrScaledButNotClamped) {
  // A NaN duration is no note; the first note's delta counts from time 0.
  TestBlock t(5);
  t.add(0.0f, std::numeric_limits<float>::quiet_NaN(), {32767.0f, 60.0f});
  // 16384 scales to 63.5, written 63; 188 folds to 60.
  t.add(1.0f, 0.5f, {16384.0f, 188.0f});
  // 65534 scales to 254 and is written as its low eight bits; a key of -1
  // stays -1 (the remainder keeps its sign) and is written 0xFF.
  t.add(2.0f, 1.0f, {65534.0f, -1.0f});
  // The last list event is the last note-off, at 3 s with the note's 1 s.
  EXPECT_EQ(midi(t), concat({kHeader, track1({0x92, 0x60}),  // (3 + 1 + 1) * 480 = 2400
                             track2({0x83, 0x60, 0x90, 0x3C, 0x3F,  // 480 ticks: on
                                     0x81, 0x70, 0x80, 0x3C, 0x40,  // 1.5 s: off
                                     0x81, 0x70, 0x90, 0xFF, 0xFE,  // 2 s: on
                                     0x83, 0x60, 0x80, 0xFF, 0x40})}));
  EXPECT_EQ(t.block.EVENTS, 2u);
}

TEST(MidiFile, DeltasAreTakenEventToEventSoTruncationLossesAddUp) {
  // Ten notes 1 ms apart: each delta is 0.48 ticks, truncated to 0, so all
  // ten note-ons land on tick 0 although the last starts at 4.32 ticks.
  TestBlock t(5);
  Bytes notes;
  for (int i = 0; i < 10; ++i) {
    t.add(static_cast<float>(i) * 0.001f, 1.0f, {32767.0f, static_cast<float>(60 + i)});
    notes.insert(notes.end(), {0x00, 0x90, static_cast<unsigned char>(60 + i), 0x7F});
  }
  // The first note-off: (1.0 - 0.009) * 480 = 475.68 -> 475, written 83 5B;
  // the others follow 0 ticks apart.
  notes.insert(notes.end(), {0x83, 0x5B, 0x80, 60, 0x40});
  for (int i = 1; i < 10; ++i) notes.insert(notes.end(), {0x00, 0x80, static_cast<unsigned char>(60 + i), 0x40});
  // The conductor track ends at (1.009 + 1 + 1) * 480 = 1444.32 -> 1444 = 8B 24.
  EXPECT_EQ(midi(t), concat({kHeader, track1({0x8B, 0x24}), track2(notes)}));
}

TEST(MidiFile, StartsThatGoBackUseThePlainWalk) {
  // A repeated chord can start earlier than the event before it. Each
  // note-off then goes after the last of the following events that start no
  // later than its end, whatever their order.
  TestBlock t(5);
  t.add(0.0f, 3.0f, {32767.0f, 60.0f});
  t.add(2.5f, 0.25f, {32767.0f, 62.0f});
  t.add(2.0f, 0.5f, {32767.0f, 64.0f});
  EXPECT_EQ(midi(t), concat({kHeader, track1({0x9A, 0x20}),  // (3 + 3 + 1) * 480 = 3360
                             track2({0x00, 0x90, 60, 0x7F,          //
                                     0x89, 0x30, 0x90, 62, 0x7F,    // 1200 ticks to 2.5 s
                                     0x00, 0x90, 64, 0x7F,          // back to 2 s: 0 ticks
                                     0x81, 0x70, 0x80, 64, 0x40,    // 2.5 s: 240
                                     0x78, 0x80, 62, 0x40,          // 2.75 s: 120
                                     0x78, 0x80, 60, 0x40})}));     // 3 s: 120
}

TEST(VarLen, BytesAndSizesAtEveryBoundary) {
  const std::vector<std::pair<uint32_t, Bytes>> cases = {
      {0, {0x00}},
      {127, {0x7F}},
      {128, {0x81, 0x00}},
      {16383, {0xFF, 0x7F}},
      {16384, {0x81, 0x80, 0x00}},
      {2097151, {0xFF, 0xFF, 0x7F}},
      {2097152, {0x81, 0x80, 0x80, 0x00}},
      {0x0FFFFFFF, {0xFF, 0xFF, 0xFF, 0x7F}},
  };
  for (const auto& [value, want] : cases) {
    FILE* f = std::tmpfile();
    WriteVarLen(value, f);
    EXPECT_EQ(bytes(f), want) << value;
    EXPECT_EQ(VLSize(value), static_cast<int>(want.size())) << value;
    std::fclose(f);
  }
  EXPECT_EQ(VLSize(0x10000000), 5);
  EXPECT_EQ(VLSize(0xFFFFFFFF), 5);
}

TEST(Ticks, SecondsBecome480thsTruncatedSaturatedAndClamped) {
  EXPECT_EQ(midi_ticks(0.001f), 0u);    // 0.48
  EXPECT_EQ(midi_ticks(0.0035f), 1u);   // 1.68
  EXPECT_EQ(midi_ticks(-0.5f), 0u);     // negative differences count as 0
  EXPECT_EQ(midi_ticks(1e7f), 0xFFFFFFFFu);  // 4.8e9 does not fit 32 bits
  EXPECT_EQ(midi_ticks(559241.0f), 268435680u);
  // A delta of 2^28 ticks or more is held at the most four bytes can carry.
  EXPECT_EQ(midi_delta(559241.0f), 0x0FFFFFFFu);
  EXPECT_EQ(midi_delta(1e7f), 0x0FFFFFFFu);
  EXPECT_EQ(midi_delta(559240.0f), 268435200u);
}

TEST(MidiFile, DeltasOf2To28TicksOrMoreAreClampedWhenSizedAndWritten) {
  // 600000 s is 288,000,000 ticks, beyond 2^28 = 268,435,456.
  TestBlock t(5);
  t.add(0.0f, 600000.0f, {32767.0f, 60.0f});
  EXPECT_EQ(midi(t), concat({kHeader, track1({0xFF, 0xFF, 0xFF, 0x7F}),
                             track2({0x00, 0x90, 0x3C, 0x7F,  //
                                     0xFF, 0xFF, 0xFF, 0x7F, 0x80, 0x3C, 0x40})}));
}

// ---------------------------------------------------------------------------
// The two placements of the note-offs agree on every list: in start order or
// not, with NaN and infinite starts and durations.

struct Note {
  float start, dur;
  std::vector<float> pf;
};

// A list of notes in start order: chords, overlaps, equal ends, notes ending
// exactly where others start, durations too small to move a late start, and
// notes lasting past all the rest. When `any_order`, starts may also step
// back, and starts and durations may be NaN or infinite.
std::vector<Note> random_notes(std::mt19937& g, int pfields, bool any_order = false) {
  auto pick = [&](int n) { return static_cast<int>(g() % static_cast<unsigned>(n)); };
  auto uniform = [&] { return std::uniform_real_distribution<float>(0.0f, 1.0f)(g); };
  const float origins[] = {0.0f, 0.5f, 3.25f, 100.0f, 70000.0f};
  float t = origins[pick(5)];
  std::vector<Note> notes(static_cast<size_t>(1 + pick(30)));
  for (size_t i = 0; i < notes.size(); ++i) {
    if (i > 0) {
      switch (pick(8)) {
        case 0:
        case 1:
        case 2: break;  // a chord member: same start
        case 3: t = t + uniform(); break;
        case 4: t = t + 1e-6f; break;
        default: t = t + 0.25f * static_cast<float>(1 + pick(4));
      }
      if (any_order && pick(4) == 0) t = t - 0.25f * static_cast<float>(pick(12));
    }
    Note& n = notes[i];
    n.start = t;
    switch (pick(8)) {
      case 0: n.dur = uniform() + 1e-3f; break;
      case 1: n.dur = 1e-6f; break;  // at 70000 s the end equals the start
      case 2: n.dur = 50.0f; break;
      default: n.dur = 0.25f * static_cast<float>(1 + pick(8));
    }
    if (any_order && pick(12) == 0) {
      const float odd[] = {NAN, INFINITY, -INFINITY};
      (pick(2) ? n.start : n.dur) = odd[pick(3)];
    }
    n.pf.assign(static_cast<size_t>(pfields - 3), 0.0f);
    n.pf[0] = static_cast<float>(pick(32768));
    n.pf[1] = static_cast<float>(pick(300)) - 20.0f;
    for (size_t k = 2; k < n.pf.size(); ++k) n.pf[k] = static_cast<float>(i) + 0.5f * k;
  }
  return notes;
}

void fill(EventList& list, const std::vector<Note>& notes, int count) {
  for (const Note& n : notes) {
    Event* e = list.GetListNode(count);
    ASSERT_NE(e, nullptr);
    e->code = 1;
    e->start = n.start;
    e->dur = n.dur;
    e->beat = n.start * 2.0f;
    for (size_t k = 0; k < n.pf.size(); ++k) e->pf()[k] = n.pf[k];
    if (list.handle) {
      e->next = list.handle->next;
      list.handle->next = e;
    } else {
      e->next = e;
    }
    list.handle = e;
  }
}

// The plain walk the one-pass placement must agree with (quadratic when many
// notes overlap): from each note-on, forward over the events that start no
// later than its end; its note-off goes in after the last of them. Every
// event, note-offs included, is scaled, folded, counted and listed in its
// final order, as the writer does.
uint32_t PlaceNoteOffsByWalk(Run& run, EventList& list, int count) {
  uint32_t size = 0;
  float previous = 0.0f;
  Event* first = list.handle->next;
  Event* e = first;
  do {
    const float end = e->start + e->dur;
    e->pf()[0] = e->pf()[0] * 0.003875850703452f;  // 127 / 32767
    e->pf()[1] = mod(e->pf()[1], 128.0f);
    size += static_cast<uint32_t>(VLSize(midi_delta(e->start - previous))) + 3u;
    if (e->code == 1) {
      Event* at = e;
      while (at->next != first && at->next->start <= end) at = at->next;
      Event* off = CopyEvent(list, e, count);
      off->start = end;
      off->code = 0;
      off->pf()[0] = 15480.47265625f;  // 60 once scaled
      InsertEvent(off, at, list);
    }
    Mprintf(run, "\n%f\t", e->start);
    Mprintf(run, "%f\t", e->dur);
    Mprintf(run, "%s\t", e->code == 1 ? "ON" : "OFF");
    Mprintf(run, "N: %f\t", e->pf()[1]);
    Mprintf(run, "V: %f\t", e->pf()[0]);
    previous = e->start;
    e = e->next;
  } while (e != first);
  return size;
}

std::vector<const Event*> in_order(const EventList& list) {
  std::vector<const Event*> out;
  for (const Event* e = list.handle->next;; e = e->next) {
    out.push_back(e);
    if (e == list.handle) break;
  }
  return out;
}

TEST(NoteOffPlacement, TheOnePassMergeGivesThePlainWalksList) {
  std::mt19937 g(20261121);
  for (int round = 0; round < 6000; ++round) {
    const int count = 5 + round % 3;  // p-fields after p5 must travel too
    const bool any_order = round % 2 == 1;
    const std::vector<Note> notes = random_notes(g, count, any_order);
    TestBlock walk(count), merge(count);
    fill(walk.block.note_list, notes, count);
    fill(merge.block.note_list, notes, count);
    const uint32_t walk_size = PlaceNoteOffsByWalk(walk.run, walk.block.note_list, count);
    const uint32_t merge_size = PlaceNoteOffsInOrder(merge.run, merge.block.note_list, count);
    SCOPED_TRACE("round " + std::to_string(round));
    ASSERT_EQ(walk_size, merge_size);
    ASSERT_EQ(walk.messages(), merge.messages());
    const auto a = in_order(walk.block.note_list);
    const auto b = in_order(merge.block.note_list);
    ASSERT_EQ(a.size(), 2 * notes.size());
    ASSERT_EQ(a.size(), b.size());
    for (size_t i = 0; i < a.size(); ++i) {
      SCOPED_TRACE("event " + std::to_string(i));
      // The same events: compared as bits, so that NaNs compare too.
      ASSERT_EQ(0, std::memcmp(a[i], b[i], offsetof(Event, next)));
      ASSERT_EQ(0, std::memcmp(a[i]->pf(), b[i]->pf(), static_cast<size_t>(count - 3) * sizeof(float)));
    }

    // And the order is the plain one: by time; at one time the
    // note-ons first, then the note-offs in the order of their notes. p6 and
    // later name the note an event belongs to.
    if (count > 5 && !any_order) {
      std::vector<std::tuple<float, int, size_t>> expected;
      for (size_t i = 0; i < notes.size(); ++i) {
        expected.emplace_back(notes[i].start, 0, i);
        expected.emplace_back(notes[i].start + notes[i].dur, 1, i);
      }
      std::stable_sort(expected.begin(), expected.end());
      for (size_t i = 0; i < a.size(); ++i) {
        const auto& [time, off, note] = expected[i];
        ASSERT_EQ(a[i]->start, time) << "event " << i;
        ASSERT_EQ(a[i]->code, off ? 0 : 1) << "event " << i;
        ASSERT_EQ(a[i]->pf()[2], notes[note].pf[2]) << "event " << i;
      }
    }
    // The handle is the last event, which the conductor track's end is
    // taken from.
    ASSERT_EQ(walk.block.note_list.handle, a.back());
    ASSERT_EQ(merge.block.note_list.handle, b.back());
  }
}

}  // namespace
}  // namespace sorvel
