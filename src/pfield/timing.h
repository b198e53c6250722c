// The rules that make time in an i-block: when the block is full, p3 codes,
// random deviation and rounding in pitch modes.
#pragma once

#include "pfield/state.h"

namespace sorvel {

// 1 when the block is full: in events mode EVENT_NO has reached EVENTS, in
// beats mode the beat position has reached the block's end.
int out_of_time(const Ctx& c);

// Splits a p3 value into its code (0, 200, 300, 400, 1000) and its signed amount.
float extract_p3val(float value, int& code);

// Gives the event after the cursor its duration from a p3 value.
void store_p3(Ctx& c, DataList& d, float value);

// The value moved at random by up to half of deviation x value either way.
float add_rdev(Run& run, float value, float deviation);

// Rounds to a whole number in "no" and "op" input unless "x" followed the type.
float adjust(const Ctx& c, float value);

// Prints warning `number` at the reader's line and position.
void warn(Ctx& c, int number);

}  // namespace sorvel
