// The state of the p-field being read, and the context that the block
// parsers pass to each other.
#pragma once

#include "base/run_state.h"
#include "input/source.h"
#include "output/block.h"
#include "output/events.h"

namespace sorvel {

// Per-p-field state. LAST_VAL, NX and LUT carry over from one p-field to the next.
struct Pfield {
  int P_NO = 0;            // number of the p-field being read
  int line = 0;            // the line of its "p"
  int IS_FUSED = 0;        // the next value is fused to the previous one
  int IN_LOOP = 0;         // a loop "<" is open
  int WROTE_DATA = 0;      // something was stored in this p-field
  float LAST_VAL = 0.0f;   // the last value read, as read
  int NX = 0;              // "x" followed "no" or "op": no rounding
  Event* LUT = nullptr;    // leading event of the last group written
  float CBEATS = 0.0f;     // current beat position
  int IN_TYPE = 14;        // input type code
  int OUT_TYPE = 14;       // output type code of the p-field whose head is read
};

// What one p-field's data list is working with: the cursor (the event the
// last value went to; its `next` receives the next value), the loop's repeat
// queue, and whether the block's end was reached so the rest is skipped.
struct DataList {
  Event* cursor = nullptr;
  RepeatQueue queue;
  int exhausted = 0;
  // With an observer: where the value being stored begins in the line, or -1
  // when it was not read there (a repetition, a fill).
  int value_begin = -1;
};

// What a block parser works with.
struct Ctx {
  Run& run;
  Block& block;
  Pfield& pfield;
  Source& src;
};

}  // namespace sorvel
