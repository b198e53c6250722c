// Hints on time under a tempo map that moves: a block's start converted at
// the tempo of its start beat alone (H04), and the first rhythm of a block
// whose seconds, taken at the tempo where it starts, differ from the same
// beats read along the map (H05).
#pragma once

#include "hints/family.h"

namespace sorvel {

class TimingHints : public Family {
 public:
  using Family::Family;

  void block_start(int line, int index, int I_NO, float SBEAT, double STIME,
                   bool in_beats) override;
  void rhythm_timed(int line, int begin, int end, float beat, float beats,
                    double seconds) override;

 private:
  int block_ = 0;      // the block being read (its number among the headers)
  int I_NO_ = 0;
  bool rhythm_told_ = false;  // H05 given for this block
};

}  // namespace sorvel
