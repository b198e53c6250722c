// Hints on the MIDI file (-m): keys and velocities that do not fit a MIDI
// data byte (H06), blocks the file does not hold (H07), and note times that
// fall behind as each time between events is rounded down to a tick (H08).
#pragma once

#include <cstddef>

#include "hints/family.h"

namespace sorvel {

class MidiHints : public Family {
 public:
  using Family::Family;

  void block_start(int line, int index, int I_NO, float SBEAT, double STIME,
                   bool in_beats) override;
  void midi_note(int block, double seconds, unsigned long tick, int key, int velocity,
                 float key_value, float velocity_value) override;
  void midi_block_left_out(int line, int block, int I_NO) override;
  void finish() override;

 private:
  // The first note of a kind that does not fit, and how many more there were.
  struct Told {
    size_t finding = 0;
    long more = -1;  // -1: none told yet
  };
  void tell(Told& told, std::string message);

  int line_ = 0;  // the header line of the block being written
  int block_ = 0;
  int I_NO_ = 0;
  long note_ = 0;  // notes of the block so far
  Told velocity_, key_;
  bool drift_told_ = false;
};

}  // namespace sorvel
