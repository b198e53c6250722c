// The i-block being built: its header values, how each p-field is written,
// and its events. Set by the i-block reader, read by the writers.
#pragma once

#include <cerrno>
#include <vector>

#include "output/events.h"

// <cerrno> names an error code ETIME; here ETIME is the block's length.
#undef ETIME

namespace sorvel {

constexpr int kMaxPfields = 128;

struct Block {
  explicit Block(size_t max_events) : note_list(max_events) {}

  int number = 0;       // the number of its header among the run's headers (1 the first)
  int line = 0;         // the line of the header's "i"
  int I_NO = 0;         // instrument number (p1 of every event)
  int MAX_PFIELDS = 0;  // p-fields of every event, 3 to 128
  float STIME = 0.0f;   // start: beats as read, seconds once p2 begins
  float SBEAT = 0.0f;   // start in beats
  float BEATS = 0.0f;   // length in beats; 0 when given in events
  unsigned EVENTS = 0;  // length in events; 0 when given in beats
  float ETIME = 0.0f;   // length in beats, or minus the event count
  int EVENT_NO = 0;     // values produced so far in the p-field being read
  int DID_P[kMaxPfields + 1] = {};  // DID_P[k] = 1 once p-field k has been read
  // Per p-field k at index k - 2: output type, "re" decimals, "bn" size index.
  std::vector<int> OUTS, RE_FW, FFT_SZ;
  // Per p-field k at index k - 2: the input types it was read in, one bit
  // (1u << code) for each.
  std::vector<unsigned> INS;
  EventList note_list;
};

}  // namespace sorvel
