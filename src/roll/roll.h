// A piano roll of a run: the notes every block wrote, and the SVG picture
// of them. The program sorvel-roll fills a Roll through the block seam and
// writes the text of draw_roll to a file; the browser playground calls the
// same functions.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace sorvel {

// What to draw and how large.
struct RollOptions {
  int pitch = 0;        // p-field on the y axis; 0: each block's first pitch p-field, else p4
  int amp = 0;          // p-field that sets each note's opacity; 0: the first in dB; -1: none
  double from = -1.0;   // first second shown; below 0: from the start (0)
  double to = -1.0;     // last second shown; below 0: to the end of the last note
  int width = 1000;     // of the whole picture, in pixels
  size_t max_notes = 200000;  // above this many notes, a density image instead
};

// One block as drawn: who it is and how its p-fields are written.
struct RollBlock {
  int number = 0;       // the block's number in the run
  int I_NO = 0;         // instrument
  int MAX_PFIELDS = 0;  // p-fields of each event
  int pitch = 0;        // p-field on the y axis (0 with MIDI: the key)
  bool semitones = false;  // y values are pitches in semitones: names apply
  int amp = 0;          // p-field of the opacity (0: none; with MIDI: the velocity)
  bool amp_db = false;  // the amplitudes are read or written in dB: opacity by their dB
  size_t notes = 0;     // notes of this block
  size_t first_note = 0;  // index in Roll::notes of its first note
  size_t values_at = 0;   // index in Roll::values of its first note's values
  // Per p-field k at index k - 2, as the score writer uses them.
  std::vector<int> OUTS, RE_FW, FFT_SZ;
};

// One sounding event.
struct RollNote {
  float start;     // seconds
  float dur;       // seconds
  float y;         // value of the pitch p-field (with MIDI: the key)
  float amp;       // value of the amplitude p-field (with MIDI: the velocity)
  uint32_t block;  // index in Roll::blocks
};

struct Roll {
  bool midi = false;       // the notes are those of a MIDI file (keys, velocities, ticks)
  unsigned SRATE = 44100;  // for "bn" values in the notes' titles
  std::vector<RollBlock> blocks;
  std::vector<RollNote> notes;
  // p4 ... pN of each note in turn, for its title; with MIDI the key and the
  // velocity. Dropped (and no longer kept) once the picture is to show more
  // notes than it draws one by one.
  std::vector<float> values;
  bool values_dropped = false;
  std::vector<double> beats;  // seconds at which beat 0, 1, 2 ... begins
  std::string caption;        // the picture's title (the input's name)
};

// The SVG text of the roll: one rectangle per note, or above
// options.max_notes notes a density image of the same axes.
std::string draw_roll(const Roll& roll, const RollOptions& options);

}  // namespace sorvel
