#include "output/events.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <new>

#include "base/x86_int.h"
#include "output/zeroed_memory.h"

namespace sorvel {

namespace {

constexpr size_t kFirstChunk = 64 * 1024;
constexpr size_t kLargestChunk = 8 * 1024 * 1024;

// An event and room for the values of p4 to p`count` (never fewer than two,
// the two a MIDI note reads).
size_t node_bytes(int count) {
  size_t values = count > 5 ? static_cast<size_t>(count - 3) : 2;
  size_t bytes = sizeof(Event) + values * sizeof(float);
  return (bytes + alignof(Event) - 1) / alignof(Event) * alignof(Event);
}

}  // namespace

void EventList::FreeChunk::operator()(unsigned char* p) const { put_zeroed(p, bytes); }

Event* EventList::GetListNode(int count) {
  if (live_ >= limit) return nullptr;
  size_t bytes = node_bytes(count);
  if (chunks_.empty() || chunk_used_ + bytes > chunk_size_) {
    size_t size = chunk_size_ == 0 ? kFirstChunk : std::min(chunk_size_ * 2, kLargestChunk);
    if (size < bytes) size = bytes;
    std::unique_ptr<unsigned char, FreeChunk> chunk(static_cast<unsigned char*>(get_zeroed(size)),
                                                   FreeChunk{size});
    if (!chunk) return nullptr;
    try {
      chunks_.push_back(std::move(chunk));
    } catch (const std::bad_alloc&) {
      return nullptr;
    }
    chunk_size_ = size;
    chunk_used_ = 0;
  }
  unsigned char* p = chunks_.back().get() + chunk_used_;
  chunk_used_ += bytes;
  ++live_;
  return new (p) Event;
}

void EventList::FreeNode(Event* e) {
  if (e && live_ > 0) --live_;
}

void EventList::FreeListNodes() {
  handle = nullptr;
  any_fused = false;
  chunks_.clear();
  chunk_used_ = 0;
  chunk_size_ = 0;
  live_ = 0;
}

int InsertBegTime(float rhythm, EventList& list, float start, float beat, int count,
                  int& fused_flag) {
  Event* node = list.GetListNode(count);
  if (!node) return 0;
  Event* last = list.handle;
  if (!last) {
    node->next = node;
    node->code = 0;
    node->start = start;
  } else {
    node->next = last->next;
    last->next = node;
    if (fused_flag) {
      node->code = 1;
      list.any_fused = true;
      node->start = last->start;
      node->beat = last->beat;
      node->dur = rhythm;
      float a = std::fabs(rhythm);
      if (a > list.last_dur) list.last_dur = a;
      fused_flag = 0;
      list.handle = node;
      return 1;
    }
    node->code = 0;
    node->start = last->start + list.last_dur;
  }
  node->dur = rhythm;
  node->beat = beat;
  list.last_dur = std::fabs(rhythm);
  list.handle = node;
  return 1;
}

Event* CopyEvent(EventList& list, const Event* node, int count) {
  Event* e = list.GetListNode(count);
  if (!e) return nullptr;
  e->code = node->code;
  if (e->code) list.any_fused = true;
  e->start = node->start;
  e->dur = node->dur;
  e->beat = node->beat;
  if (count > 3) std::memcpy(e->pf(), node->pf(), static_cast<size_t>(count - 3) * sizeof(float));
  return e;
}

void InsertEvent(Event* node, Event*& cursor, EventList& list) {
  node->next = cursor->next;
  cursor->next = node;
  if (cursor == list.handle) list.handle = node;
  cursor = node;
}

int StoreFusedPfield(float value, Event*& cursor, EventList& list, int pno, int count,
                     int& fused_flag) {
  Event* copy = CopyEvent(list, cursor, count);
  if (!copy) return 0;
  copy->pf()[pno - 4] = value;
  copy->code = 1;
  list.any_fused = true;
  InsertEvent(copy, cursor, list);
  fused_flag = 0;
  return 1;
}

int DoListChord(EventList& list, Event*& cursor, Event* LUT, int pno, int count, int& added) {
  const Event* S = LUT;
  const int k = pno - 4;
  if (cursor != list.handle) {
    cursor = cursor->next;
    cursor->pf()[k] = S->pf()[k];
    cursor->code = S->code;
    if (S->code) list.any_fused = true;
  } else {
    Event* e = list.GetListNode(count);
    if (!e) return 0;
    // Whole seconds only: the fractions are dropped on this path.
    int32_t whole_start = abs_i32(trunc_i32(cursor->start));
    int32_t whole_dur = abs_i32(trunc_i32(S->dur));
    e->start = static_cast<float>(add_i32(whole_start, whole_dur));
    e->dur = static_cast<float>(whole_dur);
    e->beat = S->beat;
    if (count > 3) std::memcpy(e->pf(), cursor->pf(), static_cast<size_t>(count - 3) * sizeof(float));
    e->pf()[k] = S->pf()[k];
    e->code = S->code;
    if (S->code) list.any_fused = true;
    InsertEvent(e, cursor, list);
  }
  added = 0;
  for (const Event* M = S->next; M->code != 0 && M != S; M = M->next) {
    Event* e = list.GetListNode(count);
    if (!e) return 0;
    e->start = cursor->start;
    e->beat = cursor->beat;
    e->dur = cursor->dur;
    e->code = M->code;
    list.any_fused = true;
    if (count > 3) std::memcpy(e->pf(), cursor->pf(), static_cast<size_t>(count - 3) * sizeof(float));
    e->pf()[k] = M->pf()[k];
    InsertEvent(e, cursor, list);
    ++added;
  }
  return 1;
}

unsigned ListSize(float span, float& first_beat, float& last_beat, const Event* from,
                  const EventList& list) {
  if (!list.handle) return 0;
  const Event* first_of_list = list.handle->next;
  const Event* e = from->next;
  first_beat = e->beat;
  last_beat = e->beat;
  unsigned count = 0;
  do {
    if (e->beat > first_beat + span) break;
    ++count;
    last_beat = e->beat;
    e = e->next;
  } while (e != first_of_list);
  return count;
}

void GetListStats(const EventList& list, double& secs, float& beats, double& end, int& count) {
  if (!list.handle) {
    count = 0;
    return;
  }
  const Event* first = list.handle->next;
  const Event* last = list.handle;
  end = static_cast<double>(first->start) + static_cast<double>(first->dur);
  count = 0;
  const Event* e = first;
  do {
    double sum = static_cast<double>(e->start) + static_cast<double>(e->dur);
    if (sum > end) end = sum;
    ++count;
    e = e->next;
  } while (e != first);
  secs = end - static_cast<double>(first->start);
  beats = last->beat - first->beat;
}

void ClearLFusedCode(EventList& list) {
  if (!list.handle || !list.any_fused) return;
  list.any_fused = false;
  Event* e = list.handle;
  do {
    e->code = 0;
    e = e->next;
  } while (e != list.handle);
}

int VLSize(uint32_t value) {
  int bytes = 1;
  while (value >>= 7) ++bytes;
  return bytes;
}

void RepeatQueue::FreeQNodes() {
  if (!q) return;
  QEntry* first = q->next;
  q->next = nullptr;  // break the ring after the last entry
  while (first) {
    QEntry* next = first->next;
    delete first;
    first = next;
  }
  q = nullptr;
}

int StoreInQ(float value, RepeatQueue& queue, int fused) {
  if (fused == 1 && !queue.q) return 0;
  QEntry* e = new (std::nothrow) QEntry;
  if (!e) return 0;
  e->value = value;
  e->fused = fused;
  QEntry* last = queue.q;
  if (!last) {
    e->prev = e;
    e->next = e;
  } else {
    QEntry* first = last->next;
    e->prev = last;
    e->next = first;
    first->prev = e;
    last->next = e;
  }
  queue.q = e;
  return 1;
}

int DoQEvent(RepeatQueue& queue) {
  QEntry* last = queue.q;
  if (!last) return 1;
  QEntry* g = last;
  while (g->fused && g->prev != last) g = g->prev;
  for (QEntry* e = g;; e = e->next) {
    if (!StoreInQ(e->value, queue, e->fused)) return 0;
    if (e == last) break;
  }
  return 1;
}

}  // namespace sorvel
