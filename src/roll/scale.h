// The axes of the roll: where their ticks fall and what they say.
#pragma once

#include <string>
#include <vector>

namespace sorvel {

// Tick values from `lo` to `hi` at a round step (1, 2 or 5 times a power of
// ten) that gives about `about` ticks; `decimals` receives the decimals their
// labels need.
std::vector<double> nice_ticks(double lo, double hi, int about, int& decimals);

// The name of a pitch in semitones as Sorvel reads pitch names: "c4" is 48,
// "cs4" 49. With `midi`, key numbers: "c4" is key 60. The value is rounded to
// the nearest semitone.
std::string note_name(double semitones, bool midi);

}  // namespace sorvel
