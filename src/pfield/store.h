// Storing values into the block: a new event for p2, a duration for p3, a
// p-field value for p4 and later; repeating the last value; filling the rest
// of the block when a p-field's data ends.
#pragma once

#include "base/catalog.h"
#include "pfield/state.h"
#include "pfield/timing.h"

namespace sorvel {

// Stores one value of the current p-field as a freshly read value: p2 appends
// an event of `value` beats, p3 gives the next event a duration, p4 and later
// store the value (with deviation and rounding) in the next event, or in a new
// chord member when IS_FUSED. Does not count the event. Returns 0 or an error.
int store_value(Ctx& c, DataList& d, float value);

// Stores a value of p4 or later in the event after the cursor, or in a new
// chord member when IS_FUSED, after random deviation and pitch rounding.
// Returns kOk or kErrOutOfMemory. Inline, like the steps it is made of: every value of
// p4 and later passes through here.
inline int store_in_event(Ctx& c, DataList& d, float value) {
  Run& run = c.run;
  Block& b = c.block;
  Pfield& p = c.pfield;
  const float v = adjust(c, add_rdev(run, value, run.MAX_DEV + run.MAX_DEV2));
  if (!StorePfield(v, d.cursor, b.note_list, p.P_NO, b.MAX_PFIELDS, p.IS_FUSED, p.LUT,
                   run.PFACTOR))
    return kErrOutOfMemory;
  p.WROTE_DATA = 1;
  return kOk;
}

// One repetition of the last value (or, in p4 and later, of the last chord),
// counted in EVENT_NO; inside a loop the queue's last group is repeated too.
// The caller checks that the block has room first.
int repeat_last(Ctx& c, DataList& d);

// Completes the p-field to the end of the block: plays the loop queue round
// and round, or repeats the last value or chord.
int fill_to_end(Ctx& c, DataList& d);

}  // namespace sorvel
