// The two writers of a run's output file as block sinks: the Csound score
// writer and the MIDI file writer. Each is made with the block it writes
// (the run's one Block, filled again for every i-block) and writes it to the
// run's output stream each time it is taken.
#pragma once

#include "base/run_state.h"
#include "output/sink.h"

namespace sorvel {

// Writes the block comment and the block's "i" statements.
class CsoundWriter : public BlockSink {
 public:
  CsoundWriter(Run& run, Block& block) : run_(run), block_(block) {}
  int take_block(const FinishedBlock& b) override;

 private:
  Run& run_;
  Block& block_;
};

// Writes the header, the conductor track and the note track of the block.
// A block of fewer than 5 p-fields that holds events is error 4.
class MidiWriter : public BlockSink {
 public:
  MidiWriter(Run& run, Block& block) : run_(run), block_(block) {}
  int take_block(const FinishedBlock& b) override;

 private:
  Run& run_;
  Block& block_;
};

}  // namespace sorvel
