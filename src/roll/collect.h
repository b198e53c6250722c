// Filling a Roll from a run: the roll's sink at the block seam, and the
// times of the beats from the run's tempo map.
#pragma once

#include <vector>

#include "base/run_state.h"
#include "output/sink.h"
#include "roll/roll.h"

namespace sorvel {

// Takes every finished block of a run into a Roll: its notes as written
// (with MKMIDI, as the MIDI file holds them), the p-fields chosen for the
// y axis and the opacity, and what the notes' titles need.
class RollSink : public BlockSink {
 public:
  RollSink(Roll& roll, const RollOptions& options) : roll_(roll), options_(options) {}
  int take_block(const FinishedBlock& b) override;

 private:
  void take_score_events(const Block& block, RollBlock& rb);
  void take_midi_events(const Block& block);
  // Keeps a note's values for its title, until more notes are to be shown
  // than the picture draws one by one (`shown`: the note is in the span).
  void keep_values(const float* values, int count, bool shown);

  Roll& roll_;
  RollOptions options_;
  size_t shown_ = 0;  // notes taken that the picture shows
};

// The first pitch p-field of a block (written as hz, op or od, or read as
// pitch names or octave.pitch-class), else p4; 0 when the block has no p4.
int default_pitch_pfield(const Block& block);
// The first p-field read or written in dB; 0 when there is none.
int default_amp_pfield(const Block& block);
// Whether the values of p-field `pno` are pitches in semitones.
bool holds_semitones(const Block& block, int pno);
// Whether the values of p-field `pno` are amplitudes read or written in dB.
bool holds_db(const Block& block, int pno);

// The seconds at which beats 0, 1, 2 ... begin, until `until` seconds are
// passed (at most `most` beats): each beat timed at the tempo in force where
// it starts, as a run of one-beat rhythms from beat 0 is.
std::vector<double> beat_times(const Run& run, double until, size_t most = 1000000);

}  // namespace sorvel
