// Random values: the uniform variate, the seven distributions, the random
// walk, and weighted choice among alternatives.
#pragma once

#include "base/rng.h"

namespace sorvel {

// rand() as a float times 2^-31: a value from 0 to 1.
float uniform(Rng& rng);

// Unit-interval variates.
float expone_left(Rng& rng);
float gauss(Rng& rng);
float bilex(Rng& rng);
float beta(Rng& rng);

// A value between low and high from distribution `code` (0 flat, 1 low
// exponential, 2 high exponential, 3 triangular, 4 gauss, 5 bilateral
// exponential, 6 beta); 0.0 for a code above 6.
float mk_rval(Rng& rng, int code, float low, float high);

// One random-walk step: returns the position as it was and stores the new one.
float rwindow(Rng& rng, float width, float& position);
float rand_window(Rng& rng, float low, float high, float width, float& position);

// A random index into n weights, chosen by weight.
int prob_result(Rng& rng, const float* weights, int n);
// Whether the n weights add up to one (within 0.00001).
int hundred_percent(const float* weights, int n);

}  // namespace sorvel
