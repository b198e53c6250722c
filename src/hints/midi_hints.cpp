#include "hints/midi_hints.h"

#include <cmath>
#include <string>

#include "hints/numbers.h"
#include "output/midi.h"

namespace sorvel {

namespace {

constexpr double kDrift = 0.010;  // seconds

std::string block_name(int index, int I_NO) {
  return "block " + std::to_string(index) + " (i" + std::to_string(I_NO) + ")";
}

// Whether a value truncated toward zero is a data byte, 0 to 127.
bool fits_byte(float value) { return value > -1.0f && value < 128.0f; }

}  // namespace

void MidiHints::block_start(int line, int index, int I_NO, float, double, bool) {
  line_ = line;
  block_ = index;
  I_NO_ = I_NO;
}

void MidiHints::tell(Told& told, std::string message) {
  if (told.more >= 0) {
    ++told.more;
    return;
  }
  Finding f;
  f.line = line_;
  f.code = "H06";
  f.message = std::move(message);
  told.finding = out.size();
  told.more = 0;
  out.push_back(f);
}

void MidiHints::midi_note(int, double seconds, unsigned long tick, int key, int velocity,
                          float key_value, float velocity_value) {
  ++note_;
  const std::string note = block_name(block_, I_NO_) + ", note " + std::to_string(note_) +
                           " at " + fixed(seconds, 3) + " s: ";
  const float scaled = velocity_value * kVelocityScale;
  if (!fits_byte(scaled)) {
    std::string m = note + "p4 " + short_number(velocity_value) +
                    " gives the velocity " + short_number(scaled) +
                    " (p4 is an amplitude, 0 to 32767 for velocities 0 to 127)";
    if (velocity > 127)
      m += ", written as the byte " + std::to_string(velocity) +
           ", which is no MIDI data byte (0 to 127): strict readers refuse the file.";
    else
      m += ", written as velocity " + std::to_string(velocity) + ": it wraps round in the byte.";
    tell(velocity_, m);
  }
  if (!fits_byte(key_value)) {
    std::string m = note + "p5 " + short_number(key_value);
    if (key > 127)
      m += " is written as the byte " + std::to_string(key) +
           ", which is no MIDI key (0 to 127): strict readers refuse the file.";
    else
      m += " is written as key " + std::to_string(key) +
           ": keys are taken modulo 128, so it wraps round.";
    tell(key_, m);
  }
  const double written = static_cast<double>(tick) / 480.0;
  if (!drift_told_ && seconds - written > kDrift) {
    drift_told_ = true;
    Finding f;
    f.line = line_;
    f.code = "H08";
    f.message = note + "written at tick " + std::to_string(tick) + " (" + fixed(written, 3) +
                " s), " + short_number((seconds - written) * 1000.0) +
                " ms early: each time between MIDI events is rounded down to a whole tick "
                "(1/480 s), and the losses add up along the block.";
    out.push_back(f);
  }
}

void MidiHints::midi_block_left_out(int line, int block, int I_NO) {
  Finding f;
  f.line = line;
  f.code = "H07";
  if (block == block_)
    f.message = block_name(block, I_NO) + " is all rests: the MIDI file holds no notes.";
  else
    f.message = block_name(block, I_NO) +
                " is not in the MIDI file: with -m the run writes the first i-block only and "
                "reads no further.";
  out.push_back(f);
}

void MidiHints::finish() {
  for (const Told* told : {&velocity_, &key_})
    if (told->more > 0)
      out[told->finding].message += " (" + std::to_string(told->more) + " more " +
                                    (told->more == 1 ? "note" : "notes") + " like it)";
}

}  // namespace sorvel
