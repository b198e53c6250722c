#include "hints/families.h"

#include "hints/data_hints.h"
#include "hints/midi_hints.h"
#include "hints/pitch_hints.h"
#include "hints/preproc_hints.h"
#include "hints/timing_hints.h"

namespace sorvel {

void add_families(const Run& run, Findings& out, std::vector<std::unique_ptr<Family>>& families) {
  families.push_back(std::make_unique<PreprocHints>(run, out));
  families.push_back(std::make_unique<PitchHints>(run, out));
  families.push_back(std::make_unique<DataHints>(run, out));
  families.push_back(std::make_unique<TimingHints>(run, out));
  families.push_back(std::make_unique<MidiHints>(run, out));
}

}  // namespace sorvel
