#include "output/midi.h"

#include <cmath>
#include <cstring>
#include <new>
#include <queue>
#include <vector>

#include "base/diag.h"
#include "base/observer.h"
#include "base/rounding.h"
#include "base/x86_int.h"

namespace sorvel {

constexpr float kNoteOffVelocity = 15480.47265625f;  // becomes 60 once scaled
constexpr uint32_t kLargestDelta = 0x0FFFFFFF;       // what four bytes can hold

uint32_t midi_ticks(float seconds) {
  const float t = seconds * 480.0f;
  if (!(t > 0.0f)) return 0;
  if (t >= 4294967296.0f) return 0xFFFFFFFFu;
  return static_cast<uint32_t>(t);
}

uint32_t midi_delta(float seconds) {
  const uint32_t ticks = midi_ticks(seconds);
  return ticks > kLargestDelta ? kLargestDelta : ticks;
}

int midi_data_byte(float v) { return static_cast<int>(static_cast<uint32_t>(trunc_i32(v)) & 0xFF); }

namespace {

void put_bytes(FILE* f, std::initializer_list<int> bytes) {
  for (int b : bytes) std::putc(b, f);
}

void put_u32(FILE* f, uint32_t v) {
  put_bytes(f, {static_cast<int>(v >> 24 & 0xFF), static_cast<int>(v >> 16 & 0xFF),
                static_cast<int>(v >> 8 & 0xFF), static_cast<int>(v & 0xFF)});
}

// Unlinks the event after `prev` (the handle moves back when it was the last).
void unlink_after(Event* prev, EventList& list) {
  Event* e = prev->next;
  prev->next = e->next;
  if (e == list.handle) list.handle = prev;
  list.FreeNode(e);
}

// Removes rests (events that are not dur > 0) and marks the notes as note-ons.
// Returns 0, after the all-rests message, when nothing sounds.
int remove_rests(Run& run, Block& block) {
  EventList& list = block.note_list;
  auto drop_count = [&] {
    --block.EVENTS;
    --block.EVENT_NO;
  };
  // Leading rests first, so that the list starts with a note.
  while (!(list.handle->next->dur > 0.0f) && list.handle->next != list.handle) {
    unlink_after(list.handle, list);
    drop_count();
  }
  Event* prev = list.handle;
  Event* e = prev->next;
  const Event* first = e;
  do {
    if (e->dur > 0.0f) {
      e->code = 1;
      list.any_fused = true;
      prev = e;
      e = e->next;
      continue;
    }
    if (e->next == e) {  // the only event left is a rest
      Mprintf(run, "\n\nOops i-block %d is all rests! ", block.I_NO);
      if (run.observer) run.observer->midi_block_left_out(block.line, block.number, block.I_NO);
      list.FreeListNodes();
      block.EVENT_NO = 0;
      block.EVENTS = 0;
      return 0;
    }
    unlink_after(prev, list);
    drop_count();
    e = prev->next;
  } while (e != first);
  return 1;
}

// Makes the note track's events of a list in which every event is a note-on:
// each note gets a note-off after the last of the following events that start
// no later than the note's end. Every event, note-offs included, is visited in
// its final order: its values are scaled for MIDI, its bytes counted and its
// line listed.
class NoteTrack {
 public:
  NoteTrack(Run& run, EventList& list, int count) : run_(run), list_(list), count_(count) {}

  uint32_t size = 0;

  // One pass, for any list: pending note-offs wait, ordered by end (then by
  // note order), and go in before the first event that starts after their
  // end, which is where a walk forward from the note would stop. An event
  // whose start is NaN stops every walk, so it lets every pending note-off in;
  // a note whose end is NaN gets its note-off at once, right after it, as
  // the walk gives it (no start compares as at most a NaN end).
  void place_in_order() {
    struct Pending {
      float end;
      size_t seq;
      Event* on;
      bool operator>(const Pending& o) const { return end != o.end ? end > o.end : seq > o.seq; }
    };
    std::priority_queue<Pending, std::vector<Pending>, std::greater<Pending>> pending;
    Event* first = list_.handle->next;
    Event* prev = list_.handle;
    Event* e = first;
    size_t seq = 0;
    bool done = false;
    auto let_in = [&](Event* on) {
      Event* off = link_note_off(on, prev);
      visit(off);
      list_event(off);
      prev = off;
    };
    auto flush = [&](auto keep_waiting) {
      while (!pending.empty() && !keep_waiting(pending.top().end)) {
        Event* on = pending.top().on;
        pending.pop();
        let_in(on);
      }
    };
    while (!done) {
      Event* next = e->next;
      done = next == first;
      const float start = e->start;
      flush([&](float end) { return start <= end; });
      const float end = e->start + e->dur;
      visit(e);
      list_event(e);
      prev = e;
      if (e->code == 1) {
        if (std::isnan(end))
          let_in(e);
        else
          pending.push({end, seq++, e});
      }
      e = next;
    }
    flush([](float) { return false; });
  }

 private:
  // Scales the velocity, folds the key and counts the event's bytes.
  void visit(Event* e) {
    const float amplitude = e->pf()[0];
    const float key = e->pf()[1];
    e->pf()[0] = amplitude * kVelocityScale;
    e->pf()[1] = mod(key, 128.0f);
    const uint32_t delta = midi_delta(e->start - previous_);
    size += static_cast<uint32_t>(VLSize(delta)) + 3u;
    if (run_.observer) observe(e, delta, key, amplitude);
  }

  // Tells the observer of each note as the note track will hold it.
  void observe(const Event* e, uint32_t delta, float key, float amplitude) {
    ticks_ += delta;
    if (e->code != 1) return;
    run_.observer->midi_note(1, static_cast<double>(e->start), ticks_,
                             midi_data_byte(e->pf()[1]), midi_data_byte(e->pf()[0]), key,
                             amplitude);
  }

  void list_event(const Event* e) {
    Mprintf(run_, "\n%f\t", e->start);
    Mprintf(run_, "%f\t", e->dur);
    Mprintf(run_, "%s\t", e->code == 1 ? "ON" : "OFF");
    Mprintf(run_, "N: %f\t", e->pf()[1]);
    Mprintf(run_, "V: %f\t", e->pf()[0]);
    previous_ = e->start;
  }

  Event* link_note_off(const Event* on, Event* where) {
    Event* off = CopyEvent(list_, on, count_);
    if (!off) throw std::bad_alloc();
    off->start = on->start + on->dur;
    off->code = 0;
    off->pf()[0] = kNoteOffVelocity;
    InsertEvent(off, where, list_);
    return off;
  }

  Run& run_;
  EventList& list_;
  int count_;
  float previous_ = 0.0f;
  unsigned long ticks_ = 0;  // where the event being visited stands on the track
};

}  // namespace

void WriteVarLen(uint32_t value, FILE* file) {
  uint32_t buffer = value & 0x7F;
  while ((value >>= 7)) {
    buffer <<= 8;
    buffer |= ((value & 0x7F) | 0x80);
  }
  for (;;) {
    std::putc(static_cast<int>(buffer & 0xFF), file);
    if (buffer & 0x80)
      buffer >>= 8;
    else
      break;
  }
}

uint32_t PlaceNoteOffsInOrder(Run& run, EventList& list, int count) {
  NoteTrack track(run, list, count);
  track.place_in_order();
  return track.size;
}

int List2MIDI(Run& run, Block& block, uint32_t& size) {
  EventList& list = block.note_list;
  size = 0;
  if (!list.handle) return 0;
  if (!remove_rests(run, block)) return 0;
  NoteTrack track(run, list, block.MAX_PFIELDS);
  track.place_in_order();
  size = track.size;
  return 1;
}

void PutMidiHeader(FILE* file, int tracks) {
  std::fputs("MThd", file);
  put_u32(file, 6);
  put_bytes(file, {0x00, 0x01, (tracks >> 8) & 0xFF, tracks & 0xFF, 0x01, 0xE0});
}

void PutTrkHeader(FILE* file, uint32_t length) {
  std::fputs("MTrk", file);
  put_u32(file, length);
}

void PutTrack1(FILE* file, float end_seconds) {
  const uint32_t ticks = midi_delta(end_seconds);
  PutTrkHeader(file, 18u + static_cast<uint32_t>(VLSize(ticks)));
  put_bytes(file, {0x00, 0xFF, 0x58, 0x04, 0x04, 0x02, 0x18, 0x08});  // 4/4
  put_bytes(file, {0x00, 0xFF, 0x51, 0x03, 0x0F, 0x42, 0x40});        // 1,000,000 us a quarter
  WriteVarLen(ticks, file);
  put_bytes(file, {0xFF, 0x2F, 0x00});
}

void NoteOn(FILE* file, uint32_t delta, int key, int velocity, int channel) {
  WriteVarLen(delta, file);
  put_bytes(file, {0x90 | channel, key, velocity});
}

void NoteOff(FILE* file, uint32_t delta, int key, int channel) {
  WriteVarLen(delta, file);
  put_bytes(file, {0x80 | channel, key, 64});
}

void WriteTrack(FILE* file, EventList& list, uint32_t size) {
  if (!list.handle) return;
  PutTrkHeader(file, size + 4u);
  float previous = 0.0f;
  const Event* first = list.handle->next;
  const Event* e = first;
  do {
    const uint32_t delta = midi_delta(e->start - previous);
    if (e->code == 1)
      NoteOn(file, delta, midi_data_byte(e->pf()[1]), midi_data_byte(e->pf()[0]), 0);
    else
      NoteOff(file, delta, midi_data_byte(e->pf()[1]), 0);
    previous = e->start;
    e = e->next;
  } while (e != first);
  put_bytes(file, {0x00, 0xFF, 0x2F, 0x00});
}

}  // namespace sorvel
