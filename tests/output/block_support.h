// A block built event by event for the writers' tests, with a screen that the
// test can read back.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "base/run_state.h"
#include "output/block.h"

namespace sorvel::testing {

// Everything a stream received, from its start.
inline std::string contents(FILE* f) {
  std::fflush(f);
  std::rewind(f);
  std::string s;
  char buf[4096];
  size_t n;
  while ((n = std::fread(buf, 1, sizeof buf, f)) > 0) s.append(buf, n);
  return s;
}

struct TestBlock {
  explicit TestBlock(int pfields, int ino = 1) : block(1000), screen(std::tmpfile()) {
    block.I_NO = ino;
    block.MAX_PFIELDS = pfields;
    run.screen = screen;
  }
  ~TestBlock() { std::fclose(screen); }
  TestBlock(const TestBlock&) = delete;
  TestBlock& operator=(const TestBlock&) = delete;

  // Appends an event at the end of the list; p4 onwards from `values`.
  Event* add(float start, float dur, std::vector<float> values = {}) {
    EventList& list = block.note_list;
    Event* e = list.GetListNode(block.MAX_PFIELDS);
    e->code = 0;
    e->start = start;
    e->dur = dur;
    e->beat = 0.0f;
    for (size_t i = 0; i < values.size(); ++i) e->pf()[i] = values[i];
    e->next = list.handle ? list.handle->next : e;
    if (list.handle) list.handle->next = e;
    list.handle = e;
    ++block.EVENTS;
    ++block.EVENT_NO;
    return e;
  }

  std::string messages() { return contents(screen); }

  Run run;
  Block block;
  FILE* screen;
};

}  // namespace sorvel::testing
