// The engine shared by the dynamic data functions and S2.
#pragma once

#include "ddf/record.h"
#include "pfield/state.h"

namespace sorvel {

// The used flags and last choices for n alternatives with the given set sizes.
void init_did(SetChoice& choice, const std::vector<int>& sizes);

// A 1-based element index of alternative k's set of `size` elements, by its
// mode: 0 free choice, 1 without replacement, 2 no immediate repetition.
int get_set_element(Rng& rng, int k, int size, SetChoice& choice, int mode);

// The weights of the alternatives (each record's first number).
std::vector<float> fix_percents(const DdfArgs& a);

// Tells the run's observer, if any, that these weights did not add up to 1.
void tell_weights_failed(Ctx& c, const DdfArgs& a, const std::vector<float>& weights);

// How many events from the one after the cursor a function covers: the
// magnitude of a negative duration, or the events within `dur` beats (with
// warning 14 when the span reaches past the block). `base` and `last` receive
// the beats of the first and last covered events.
unsigned events_covered(Ctx& c, const DataList& d, float dur, float& base, float& last);

}  // namespace sorvel
