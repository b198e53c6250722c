#include "pfield/store.h"

#include "base/catalog.h"
#include "base/observer.h"
#include "base/vocabulary.h"
#include "global/tempo.h"
#include "pfield/timing.h"

namespace sorvel {

int store_value(Ctx& c, DataList& d, float value) {
  Run& run = c.run;
  Block& b = c.block;
  Pfield& p = c.pfield;
  if (p.P_NO == 2) {
    float secs = to_tempo(run, p.CBEATS, value);
    if (value == 0.0f && b.EVENTS == 0) return kErrZeroIntervalNeedsEvents;
    if (run.observer) {
      const int end = c.src.pos;
      run.observer->rhythm_timed(c.src.line, d.value_begin >= 0 ? d.value_begin : end, end,
                                 p.CBEATS, value, static_cast<double>(secs));
      d.value_begin = -1;  // a repetition after it was not read there
    }
    secs = add_rdev(run, secs, run.MAX_DEV + run.MAX_DEV2);
    if (!InsertBegTime(secs, b.note_list, b.STIME, p.CBEATS, b.MAX_PFIELDS, p.IS_FUSED))
      return kErrOutOfMemory;
    p.WROTE_DATA = 1;
    p.CBEATS = p.CBEATS + value;
    return kOk;
  }
  if (p.P_NO == 3) {
    store_p3(c, d, value);
    return kOk;
  }
  // A negative pitch is a rest: the event that receives it falls silent.
  if (p.IN_TYPE == CMD_NO && value < 0.0f) d.cursor->next->dur = -d.cursor->next->dur;
  return store_in_event(c, d, value);
}

int repeat_last(Ctx& c, DataList& d) {
  Block& b = c.block;
  Pfield& p = c.pfield;
  if (p.P_NO >= 4 && d.cursor != p.LUT) {
    int added = 0;
    if (!DoListChord(b.note_list, d.cursor, p.LUT, p.P_NO, b.MAX_PFIELDS, added))
      return kErrOutOfMemory;
    b.EVENTS += static_cast<unsigned>(added);
    b.EVENT_NO += added;
  } else {
    int r = store_value(c, d, p.LAST_VAL);
    if (r) return r;
  }
  if (p.IN_LOOP && !DoQEvent(d.queue)) return kErrMisplacedLoop;
  ++b.EVENT_NO;
  return kOk;
}

int fill_to_end(Ctx& c, DataList& d) {
  Block& b = c.block;
  Pfield& p = c.pfield;
  QEntry* last = d.queue.q;
  if (last && last->next->fused) ++b.EVENTS;
  if (out_of_time(c)) return 0;
  if (!last) {
    // Whether the data list gave one value or one chord (in p4 and later the
    // last group leads from LUT, the block's first event when it is the
    // only one), before the repeats move LUT on.
    const int given = b.EVENT_NO;
    const bool one_group =
        c.run.observer && (p.P_NO >= 4 ? p.LUT == b.note_list.handle->next : given <= 1);
    while (!out_of_time(c)) {
      int r = repeat_last(c, d);
      if (r) return r;
    }
    if (c.run.observer)
      c.run.observer->block_filled(c.src.line, p.P_NO, p.LAST_VAL, b.EVENT_NO - given, one_group,
                                   b.ETIME >= 0.0f);
    return 0;
  }
  // Play the queue round and round; a chord is never cut.
  for (QEntry* e = last->next;; e = e->next) {
    p.IS_FUSED = e->fused ? 1 : 0;
    if (e->fused) ++b.EVENTS;
    int r = store_value(c, d, e->value);
    if (r) return r;
    ++b.EVENT_NO;
    if (out_of_time(c) && !e->next->fused) break;
  }
  return 0;
}

}  // namespace sorvel
