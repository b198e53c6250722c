// The two writers of a run's output file as block sinks: the Csound score
// writer and the MIDI file writer. Each writes every finished block it takes
// to the run's output stream.
#pragma once

#include "base/run.h"
#include "output/sink.h"

namespace sorvel {

// Writes the block comment and the block's "i" statements.
class CsoundWriter : public BlockSink {
 public:
  explicit CsoundWriter(Run& run) : run_(run) {}
  int take_block(FinishedBlock& b) override;

 private:
  Run& run_;
};

// Writes the header, the conductor track and the note track of the block.
// A block of fewer than 5 p-fields that holds events is error 4.
class MidiWriter : public BlockSink {
 public:
  explicit MidiWriter(Run& run) : run_(run) {}
  int take_block(FinishedBlock& b) override;

 private:
  Run& run_;
};

}  // namespace sorvel
