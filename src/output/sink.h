// The block seam: at the end of every i-block the driver hands the finished
// block to the run's writer and then to whoever else listens (the roll, the
// hints checker, the playground). Each of them is a BlockSink.
#pragma once

#include "base/run_state.h"
#include "output/block.h"

namespace sorvel {

// One finished i-block, as a sink receives it.
//
//   number       the block's number in the run: 1 for the first block that
//                wrote anything (the "#N" of the score's block comment)
//   block        I_NO, MAX_PFIELDS; per p-field k at index k - 2: OUTS (the
//                output type), INS (the input types it was read in), RE_FW,
//                FFT_SZ; and note_list, the events
//   run          the settings and the tempo map (TEMPO_LIST, TOT_TEMPOS,
//                find_tempo), SRATE, MKMIDI
//
// The writer goes first. It is made with the block it writes and changes
// it: it takes the rests out as it writes (the MIDI writer also adds the
// note-offs and turns p4 and p5 into velocity and key). Every sink after it
// receives the list as written, and only reads it: the sounding events, and
// with MKMIDI the note-ons (`code` 1) and note-offs (`code` 0) in the order
// of the file.
struct FinishedBlock {
  int number;
  const Block& block;
  const Run& run;
};

class BlockSink {
 public:
  virtual ~BlockSink() = default;
  // Takes one finished block. Returns 0, or a positive error number that
  // ends the run. A block whose list is empty once the writer is done (no
  // event sounded) goes to no further sink.
  virtual int take_block(const FinishedBlock& b) = 0;
};

}  // namespace sorvel
