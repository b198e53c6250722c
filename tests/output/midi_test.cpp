// The MIDI writer: note-ons and note-offs from the event list, the byte
// layout of the header, the conductor track and the note track, deltas in
// ticks of 1/480 s, variable-length quantities and the listing of each event.
#include "output/midi.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <string>
#include <tuple>
#include <vector>

namespace sorvel {
namespace {

using Bytes = std::vector<unsigned char>;

// Everything a stream received, from its start.
Bytes contents(FILE* f) {
  std::fflush(f);
  std::rewind(f);
  Bytes out;
  int c;
  while ((c = std::getc(f)) != EOF) out.push_back(static_cast<unsigned char>(c));
  return out;
}

std::string text(FILE* f) {
  Bytes b = contents(f);
  return std::string(b.begin(), b.end());
}

Bytes concat(std::initializer_list<Bytes> parts) {
  Bytes out;
  for (const Bytes& p : parts) out.insert(out.end(), p.begin(), p.end());
  return out;
}

const Bytes kHeader = {'M', 'T', 'h', 'd', 0, 0, 0, 6, 0, 1, 0, 2, 0x01, 0xE0};

// The conductor track ending with the variable-length delta `end`.
Bytes track1(Bytes end) {
  Bytes out = {'M', 'T', 'r', 'k', 0, 0, 0, static_cast<unsigned char>(18 + end.size())};
  Bytes events = {0x00, 0xFF, 0x58, 0x04, 0x04, 0x02, 0x18, 0x08,  // 4/4
                  0x00, 0xFF, 0x51, 0x03, 0x0F, 0x42, 0x40};       // 1,000,000 us
  out.insert(out.end(), events.begin(), events.end());
  out.insert(out.end(), end.begin(), end.end());
  out.insert(out.end(), {0xFF, 0x2F, 0x00});
  return out;
}

// The note track holding `events` and the end of track.
Bytes track2(Bytes events) {
  const size_t n = events.size() + 4;
  Bytes out = {'M',
               'T',
               'r',
               'k',
               static_cast<unsigned char>(n >> 24),
               static_cast<unsigned char>(n >> 16),
               static_cast<unsigned char>(n >> 8),
               static_cast<unsigned char>(n)};
  out.insert(out.end(), events.begin(), events.end());
  out.insert(out.end(), {0x00, 0xFF, 0x2F, 0x00});
  return out;
}

// A block of `pfields` p-fields with a screen and a log the test can read.
struct Fixture {
  explicit Fixture(int pfields = 5, int ino = 1) : block(1000) {
    block.I_NO = ino;
    block.MAX_PFIELDS = pfields;
    screen = std::tmpfile();
    run.screen = screen;
  }
  ~Fixture() { std::fclose(screen); }

  // Appends an event at the end of the list: p4, p5 and on from `values`.
  Event* add(float start, float dur, std::vector<float> values = {}) {
    EventList& list = block.note_list;
    Event* e = list.GetListNode(block.MAX_PFIELDS);
    e->code = 0;
    e->start = start;
    e->dur = dur;
    e->beat = 0.0f;
    for (size_t i = 0; i < values.size(); ++i) e->pf[i] = values[i];
    if (list.handle) {
      e->next = list.handle->next;
      list.handle->next = e;
    } else {
      e->next = e;
    }
    list.handle = e;
    ++block.EVENTS;
    ++block.EVENT_NO;
    return e;
  }

  // Runs List2MIDI and, when it made notes, writes the file as the run does:
  // the conductor track ends one second after the last list event's end.
  Bytes midi(int* result = nullptr) {
    uint32_t size = 12345;
    const int r = List2MIDI(run, block, size);
    if (result) *result = r;
    FILE* f = std::tmpfile();
    if (r) {
      const Event* last = block.note_list.handle;
      PutMidiHeader(f, 2);
      PutTrack1(f, last->start + last->dur + 1.0f);
      WriteTrack(f, block.note_list, size);
    } else {
      EXPECT_EQ(size, 0u);
    }
    Bytes out = contents(f);
    std::fclose(f);
    return out;
  }

  // (start, code) of the events left in the list, first to last.
  std::vector<std::pair<float, int>> starts() const {
    std::vector<std::pair<float, int>> out;
    const Event* last = block.note_list.handle;
    if (!last) return out;
    for (const Event* e = last->next;; e = e->next) {
      out.emplace_back(e->start, e->code);
      if (e == last) break;
    }
    return out;
  }

  std::string messages() { return text(screen); }

  Run run;
  Block block;
  FILE* screen;
};

TEST(MidiFile, OneNoteGivesTheWholeFileByteForByte) {
  Fixture fx;
  fx.add(0.0f, 1.0f, {32767.0f, 60.0f});
  int r = 0;
  const Bytes file = fx.midi(&r);
  EXPECT_EQ(r, 1);
  const Bytes expected = concat({kHeader,
                                 // 480 * (1 + 1 + 1) = 1440 ticks
                                 track1({0x8B, 0x20}),
                                 track2({0x00, 0x90, 0x3C, 0x7F,          // on, key 60, vel 127
                                         0x83, 0x60, 0x80, 0x3C, 0x40})});  // 480 later: off
  EXPECT_EQ(file, expected);
  // The lengths stated in the chunks: 20 and 13.
  ASSERT_EQ(file.size(), 14u + 28u + 21u);
  EXPECT_EQ(file[21], 20);
  EXPECT_EQ(file[14 + 28 + 7], 13);
  // The note-off goes in after the note and keeps its duration.
  EXPECT_EQ(fx.starts(), (std::vector<std::pair<float, int>>{{0.0f, 1}, {1.0f, 0}}));
  EXPECT_EQ(fx.block.note_list.handle->dur, 1.0f);
}

TEST(MidiFile, KeyIsFoldedBy128AndVelocityScaledFrom32767) {
  Fixture fx;
  fx.add(0.0f, 0.5f, {16384.0f, 188.0f});  // 63.5 -> 63; 188 -> 60
  EXPECT_EQ(fx.midi(),
            concat({kHeader, track1({0x87, 0x40}),  // 480 * 2 = 960 ticks
                    track2({0x00, 0x90, 0x3C, 0x3F, 0x81, 0x70, 0x80, 0x3C, 0x40})}));
}

TEST(MidiFile, KeyAndVelocityAreNotClamped) {
  // Values outside 0..127 give their low eight bits: a p4 of 65534 is 254,
  // a key of -1 stays -1 (the remainder keeps its sign) and is written 0xFF.
  Fixture fx;
  fx.add(0.0f, 1.0f, {65534.0f, -1.0f});
  const Bytes file = fx.midi();
  const Bytes notes(file.end() - 13, file.end() - 4);
  EXPECT_EQ(notes, (Bytes{0x00, 0x90, 0xFF, 0xFE, 0x83, 0x60, 0x80, 0xFF, 0x40}));
}

TEST(MidiFile, NoteOffOfANoteEndingWhereTheNextStartsFollowsThatNoteOn) {
  Fixture fx;
  fx.add(0.0f, 1.0f, {32767.0f, 60.0f});
  fx.add(1.0f, 1.0f, {32767.0f, 60.0f});
  EXPECT_EQ(fx.midi(), concat({kHeader, track1({0x8F, 0x00}),  // (2 + 1 + 1) * 480 = 1920
                               track2({0x00, 0x90, 0x3C, 0x7F,    //
                                       0x83, 0x60, 0x90, 0x3C, 0x7F,  // second on at 1 s
                                       0x00, 0x80, 0x3C, 0x40,        // first off, same tick
                                       0x83, 0x60, 0x80, 0x3C, 0x40})}));
}

TEST(MidiFile, RestsAreRemovedAndTheFirstNoteCountsFromTimeZero) {
  Fixture fx;
  const float nan = std::numeric_limits<float>::quiet_NaN();
  fx.add(0.0f, -1.0f, {32767.0f, 70.0f});  // leading rests
  fx.add(1.0f, 0.0f, {32767.0f, 70.0f});
  fx.add(2.0f, 1.0f, {32767.0f, 60.0f});
  fx.add(3.0f, nan, {32767.0f, 70.0f});  // a NaN duration is no note either
  fx.add(4.0f, 0.5f, {32767.0f, 62.0f});
  fx.add(5.0f, -1.0f, {32767.0f, 70.0f});  // a trailing rest: the list ends earlier
  EXPECT_EQ(fx.midi(),
            concat({kHeader, track1({0x96, 0x40}),                 // (4.5 + 0.5 + 1) * 480 = 2880
                    track2({0x87, 0x40, 0x90, 0x3C, 0x7F,          // 960 ticks after time 0
                            0x83, 0x60, 0x80, 0x3C, 0x40,          // off at 3 s
                            0x83, 0x60, 0x90, 0x3E, 0x7F,          // on at 4 s
                            0x81, 0x70, 0x80, 0x3E, 0x40})}));     // off at 4.5 s
  EXPECT_EQ(fx.block.EVENTS, 2u);  // the four rests are taken off the counts
  EXPECT_EQ(fx.block.EVENT_NO, 2);
  EXPECT_EQ(fx.messages().find("Oops"), std::string::npos);
}

TEST(MidiFile, ABlockOfRestsOnlyWritesNothing) {
  Fixture fx(5, 7);
  fx.add(0.0f, -1.0f, {32767.0f, 60.0f});
  fx.add(1.0f, 0.0f, {32767.0f, 60.0f});
  fx.add(2.0f, std::numeric_limits<float>::quiet_NaN(), {32767.0f, 60.0f});
  int r = 1;
  EXPECT_TRUE(fx.midi(&r).empty());
  EXPECT_EQ(r, 0);
  EXPECT_EQ(fx.messages(), "\n\nOops i-block 7 is all rests! ");
  EXPECT_EQ(fx.block.note_list.handle, nullptr);
  EXPECT_EQ(fx.block.EVENTS, 0u);
  EXPECT_EQ(fx.block.EVENT_NO, 0);

  // An empty list is no block of rests: no message, nothing written.
  Fixture empty;
  EXPECT_TRUE(empty.midi(&r).empty());
  EXPECT_EQ(r, 0);
  EXPECT_EQ(empty.messages(), "");
  FILE* f = std::tmpfile();
  WriteTrack(f, empty.block.note_list, 0);
  EXPECT_TRUE(contents(f).empty());
  std::fclose(f);
}

TEST(MidiFile, DeltasAreTakenEventToEventSoTruncationLossesAddUp) {
  // Ten notes 1 ms apart: each delta is 0.48 ticks, truncated to 0, so all
  // ten note-ons land on tick 0 although the last starts at 4.32 ticks.
  Fixture fx;
  for (int i = 0; i < 10; ++i)
    fx.add(static_cast<float>(i) * 0.001f, 1.0f, {32767.0f, static_cast<float>(60 + i)});
  Bytes notes;
  for (int i = 0; i < 10; ++i) notes.insert(notes.end(), {0x00, 0x90, static_cast<unsigned char>(60 + i), 0x7F});
  // The first note-off: (1.0 - 0.009) * 480 = 475.68 -> 475, written 83 5B;
  // the others follow 0 ticks apart. The track ends at tick 475 where the
  // last note-off belongs at 1.009 s, tick 484.
  notes.insert(notes.end(), {0x83, 0x5B, 0x80, 60, 0x40});
  for (int i = 1; i < 10; ++i) notes.insert(notes.end(), {0x00, 0x80, static_cast<unsigned char>(60 + i), 0x40});
  const Bytes file = fx.midi();
  // The conductor track ends at (1.009 + 1 + 1) * 480 = 1444.32 -> 1444 = 8B 24.
  EXPECT_EQ(file, concat({kHeader, track1({0x8B, 0x24}), track2(notes)}));
  EXPECT_EQ(notes.size(), 81u);
}

TEST(MidiFile, StartsThatGoBackUseThePlainWalk) {
  // A repeated chord can start earlier than the event before it. Each
  // note-off then goes after the last of the following events that start no
  // later than its end, whatever their order.
  Fixture fx;
  fx.add(0.0f, 3.0f, {32767.0f, 60.0f});
  fx.add(2.5f, 0.25f, {32767.0f, 62.0f});
  fx.add(2.0f, 0.5f, {32767.0f, 64.0f});
  const Bytes file = fx.midi();
  EXPECT_EQ(fx.starts(), (std::vector<std::pair<float, int>>{
                             {0.0f, 1}, {2.5f, 1}, {2.0f, 1}, {2.5f, 0}, {2.75f, 0}, {3.0f, 0}}));
  EXPECT_EQ(file, concat({kHeader, track1({0x9A, 0x20}),  // (3 + 3 + 1) * 480 = 3360
                          track2({0x00, 0x90, 60, 0x7F,         //
                                  0x89, 0x30, 0x90, 62, 0x7F,   // 1200 ticks to 2.5 s
                                  0x00, 0x90, 64, 0x7F,         // back to 2 s: 0 ticks
                                  0x81, 0x70, 0x80, 64, 0x40,   // 2.5 s: 240
                                  0x78, 0x80, 62, 0x40,         // 2.75 s: 120
                                  0x78, 0x80, 60, 0x40})}));    // 3 s: 120
}

TEST(MidiFile, ListsEveryEventOnTheScreenAndInTheLog) {
  Fixture fx;
  FILE* log = std::tmpfile();
  fx.run.MKLOG = 1;
  fx.run.fllog = log;
  fx.run.SUPRESS = 1;  // the listing is not one of the messages -s silences
  fx.add(0.0f, 0.25f, {16384.0f, 188.0f});
  fx.add(0.5f, 1.0f, {1000.0f, 62.0f});
  fx.midi();
  const std::string expected =
      "\n   0.00\t   0.25\tON\tN:   60.00\tV:   63.50\t"
      "\n   0.25\t   0.25\tOFF\tN:   60.00\tV:   60.00\t"
      "\n   0.50\t   1.00\tON\tN:   62.00\tV:    3.88\t"
      "\n   1.50\t   1.00\tOFF\tN:   62.00\tV:   60.00\t";
  EXPECT_EQ(fx.messages(), expected);
  EXPECT_EQ(text(log), expected);
  std::fclose(log);
}

TEST(VarLen, BytesAndSizesAtEveryBoundary) {
  const std::vector<std::pair<uint32_t, Bytes>> cases = {
      {0, {0x00}},
      {127, {0x7F}},
      {128, {0x81, 0x00}},
      {1440, {0x8B, 0x20}},
      {16383, {0xFF, 0x7F}},
      {16384, {0x81, 0x80, 0x00}},
      {2097151, {0xFF, 0xFF, 0x7F}},
      {2097152, {0x81, 0x80, 0x80, 0x00}},
      {0x0FFFFFFF, {0xFF, 0xFF, 0xFF, 0x7F}},
  };
  for (const auto& [value, bytes] : cases) {
    FILE* f = std::tmpfile();
    WriteVarLen(value, f);
    EXPECT_EQ(contents(f), bytes) << value;
    EXPECT_EQ(VLSize(value), static_cast<int>(bytes.size())) << value;
    std::fclose(f);
  }
  EXPECT_EQ(VLSize(0x10000000), 5);
  EXPECT_EQ(VLSize(0xFFFFFFFF), 5);
}

TEST(Ticks, SecondsBecome480thsTruncatedAndSaturated) {
  EXPECT_EQ(midi_ticks(1.0f), 480u);
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
  Fixture fx;
  fx.add(0.0f, 600000.0f, {32767.0f, 60.0f});
  uint32_t size = 0;
  ASSERT_EQ(List2MIDI(fx.run, fx.block, size), 1);
  EXPECT_EQ(size, (1u + 3u) + (4u + 3u));  // the clamped delta takes four bytes
  FILE* f = std::tmpfile();
  const Event* last = fx.block.note_list.handle;
  PutMidiHeader(f, 2);
  PutTrack1(f, last->start + last->dur + 1.0f);
  WriteTrack(f, fx.block.note_list, size);
  EXPECT_EQ(contents(f), concat({kHeader, track1({0xFF, 0xFF, 0xFF, 0x7F}),
                                 track2({0x00, 0x90, 0x3C, 0x7F,  //
                                         0xFF, 0xFF, 0xFF, 0x7F, 0x80, 0x3C, 0x40})}));
  std::fclose(f);
}

// ---------------------------------------------------------------------------
// The two placements of the note-offs agree on every list whose starts never
// decrease.

struct Note {
  float start, dur;
  std::vector<float> pf;
};

// A list of notes in start order: chords, overlaps, equal ends, notes ending
// exactly where others start, durations too small to move a late start, and
// notes lasting past all the rest.
std::vector<Note> random_notes(std::mt19937& g, int pfields) {
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
    }
    Note& n = notes[i];
    n.start = t;
    switch (pick(8)) {
      case 0: n.dur = uniform() + 1e-3f; break;
      case 1: n.dur = 1e-6f; break;  // at 70000 s the end equals the start
      case 2: n.dur = 50.0f; break;
      default: n.dur = 0.25f * static_cast<float>(1 + pick(8));
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
    for (size_t k = 0; k < n.pf.size(); ++k) e->pf[k] = n.pf[k];
    if (list.handle) {
      e->next = list.handle->next;
      list.handle->next = e;
    } else {
      e->next = e;
    }
    list.handle = e;
  }
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
  for (int round = 0; round < 3000; ++round) {
    const int count = 5 + round % 3;  // p-fields after p5 must travel too
    const std::vector<Note> notes = random_notes(g, count);
    Fixture walk(count), merge(count);
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
      ASSERT_EQ(a[i]->code, b[i]->code);
      ASSERT_EQ(a[i]->start, b[i]->start);
      ASSERT_EQ(a[i]->dur, b[i]->dur);
      ASSERT_EQ(a[i]->beat, b[i]->beat);
      for (int k = 0; k < count - 3; ++k) ASSERT_EQ(a[i]->pf[k], b[i]->pf[k]) << "p" << k + 4;
    }

    // And the order is the one the rule describes: by time; at one time the
    // note-ons first, then the note-offs in the order of their notes. p6 and
    // later name the note an event belongs to.
    if (count > 5) {
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
        ASSERT_EQ(a[i]->pf[2], notes[note].pf[2]) << "event " << i;
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
