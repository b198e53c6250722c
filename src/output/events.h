// The event list of an i-block and the repeat queue of a loop.
//
// The event list is a circular singly linked list whose handle
// points at the LAST event; the last event's `next` is the first. The repeat
// queue is a circular doubly linked list whose handle points at its last entry.
// Operations return 1 on success and 0 when memory runs out (or the block
// would pass its event limit); they never print.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace sorvel {

struct Event {
  int code;     // 0: leads its group; 1: fused to the event before (chord member)
  float start;  // start time in seconds (p2)
  float dur;    // rhythm while p2 is read, then the duration (p3)
  float beat;   // beat position when the event was made
  Event* next;

  // The values of p4 ... pN at index k - 4. They sit right after the event in
  // the same piece of memory, so they need no pointer of their own.
  float* pf() { return reinterpret_cast<float*>(this + 1); }
  const float* pf() const { return reinterpret_cast<const float*>(this + 1); }
};

struct QEntry {
  QEntry* prev;
  float value;  // the value as read, before deviation
  int fused;    // 1 when the value was fused to the one before it
  QEntry* next;
};

// The events of one block and the memory they live in. Nodes and their value
// arrays come from a block-long arena, so filling a block costs no allocation
// per event and freeing it is one step.
class EventList {
 public:
  explicit EventList(size_t limit = 10000000) : limit(limit) {}
  ~EventList() { FreeListNodes(); }
  EventList(const EventList&) = delete;
  EventList& operator=(const EventList&) = delete;

  Event* handle = nullptr;  // the last event; null when the list is empty
  float last_dur = 0.0f;       // longest absolute rhythm of the group last inserted
  bool any_fused = false;      // some event may have code 1 (ClearLFusedCode has work)
  size_t limit;                // most events the list may hold

  // A new event with room for `count` values, all 0.0; null when memory is
  // exhausted or the list is at its limit. Fields other than pf are unset.
  Event* GetListNode(int count);
  // Gives back one unlinked event.
  void FreeNode(Event* e);
  // Frees every event and sets the handle to null.
  void FreeListNodes();
  // Events currently allocated.
  size_t size() const { return live_; }

 private:
  // Frees a chunk with the size it was made with.
  struct FreeChunk {
    size_t bytes = 0;
    void operator()(unsigned char* p) const;
  };
  // Chunks come zeroed from the system and are never reused within a block,
  // so every new event's values start at 0.0 without further work.
  std::vector<std::unique_ptr<unsigned char, FreeChunk>> chunks_;
  size_t chunk_used_ = 0;
  size_t chunk_size_ = 0;
  size_t live_ = 0;
};

// Appends an event made while reading p2. A fused event joins the last group
// (same start and beat); otherwise it starts after the longest rhythm of the
// last group. The first event of the list starts at `start`.
int InsertBegTime(float rhythm, EventList& list, float start, float beat, int count,
                  int& fused_flag);

// A new unlinked event with the fields and values of `node`.
Event* CopyEvent(EventList& list, const Event* node, int count);

// The fused case of StorePfield: `value` as p-field `pno` of a new copy of the
// cursor event, linked after it as a chord member.
int StoreFusedPfield(float value, Event*& cursor, EventList& list, int pno, int count,
                     int& fused_flag);

// Stores `value` (times pfactor) as p-field `pno` of the event after the
// cursor, or, when fused, of a new copy of the cursor event linked after it.
// Inline: it runs once for every value of every p-field from p4 on.
inline int StorePfield(float value, Event*& cursor, EventList& list, int pno, int count,
                       int& fused_flag, Event*& LUT, float pfactor) {
  value = value * pfactor;
  if (fused_flag) return StoreFusedPfield(value, cursor, list, pno, count, fused_flag);
  cursor = cursor->next;
  cursor->pf()[pno - 4] = value;
  cursor->code = 0;
  LUT = cursor;
  return 1;
}

// Links `node` after the cursor and makes it the cursor (and the last event
// when the cursor was the last).
void InsertEvent(Event* node, Event*& cursor, EventList& list);

// Repeats the group that starts at LUT at the cursor for p-field `pno`;
// `added` receives the number of extra (fused) events made.
int DoListChord(EventList& list, Event*& cursor, Event* LUT, int pno, int count, int& added);

// Counts the events from the one after `from` whose beat lies within `span`
// beats of that event's beat.
unsigned ListSize(float span, float& first_beat, float& last_beat, const Event* from,
                  const EventList& list);

// Block summary: seconds from the first start to the latest end, beats from the
// first to the last event, the latest end, and the number of events.
void GetListStats(const EventList& list, double& secs, float& beats, double& end, int& count);

// Marks every event as leading its own group.
void ClearLFusedCode(EventList& list);

// Bytes of `value` as a MIDI variable-length quantity (1 to 5).
int VLSize(uint32_t value);

// The repeat queue of one p-field's loop.
class RepeatQueue {
 public:
  RepeatQueue() = default;
  ~RepeatQueue() { FreeQNodes(); }
  RepeatQueue(const RepeatQueue&) = delete;
  RepeatQueue& operator=(const RepeatQueue&) = delete;

  QEntry* q = nullptr;  // the last entry; null when empty
  void FreeQNodes();
};

// Appends a value; a fused value cannot open an empty queue (returns 0).
int StoreInQ(float value, RepeatQueue& queue, int fused);
// Appends a copy of the queue's last group (its last unfused entry and the
// entries after it).
int DoQEvent(RepeatQueue& queue);

}  // namespace sorvel
