// The rules that make time in an i-block: when the block is full, p3 codes,
// random deviation and rounding in pitch modes.
#pragma once

#include "base/random.h"
#include "base/rounding.h"
#include "base/vocabulary.h"
#include "pfield/state.h"

namespace sorvel {

// 1 when the block is full: in events mode EVENT_NO has reached EVENTS, in
// beats mode the beat position has reached the block's end.
inline int out_of_time(const Ctx& c) {
  const Block& b = c.block;
  if (b.EVENTS != 0) return static_cast<unsigned>(b.EVENT_NO) >= b.EVENTS ? 1 : 0;
  return c.pfield.CBEATS >= b.ETIME + b.SBEAT ? 1 : 0;
}

// Splits a p3 value into its code (0, 200, 300, 400, 1000) and its signed amount.
float extract_p3val(float value, int& code);

// Gives the event after the cursor its duration from a p3 value.
void store_p3(Ctx& c, DataList& d, float value);

// The value moved at random by up to half of deviation x value either way. A
// number is drawn even when the deviation is 0.
inline float add_rdev(Run& run, float value, float deviation) {
  const float w = value * deviation;
  const float r = static_cast<float>(run.rng.rand());
  return value - 0.5f * w + r * (w * kTwoPow31Inv);
}

// Rounds to a whole number in "no" and "op" input unless "x" followed the type.
inline float adjust(const Ctx& c, float value) {
  const Pfield& p = c.pfield;
  if ((p.IN_TYPE == CMD_NO || p.IN_TYPE == CMD_OP) && p.NX == 0) return RoundF(value);
  return value;
}

// Prints warning `number` at the reader's line and position.
void warn(Ctx& c, int number);

}  // namespace sorvel
