// The Standard MIDI File writer (format 1: a conductor track and a note
// track, 480 ticks a second).
#pragma once

#include <cstdint>
#include <cstdio>

#include "base/run_state.h"
#include "output/block.h"

namespace sorvel {

// p4 is an amplitude, 0 to 32767 for velocities 0 to 127.
constexpr float kVelocityScale = 0.003875850703452f;  // 127 / 32767

// A time in seconds as ticks (480 a second): negative gives 0, and values
// beyond 32 bits saturate.
uint32_t midi_ticks(float seconds);
// The same, clamped to 0x0FFFFFFF, the most a four-byte delta can hold.
uint32_t midi_delta(float seconds);
// A key or velocity as the file holds it: truncated toward zero, low 8 bits.
int midi_data_byte(float v);

// Turns the block's events into note-ons and note-offs, listing each; `size`
// receives the bytes of the note track's events. Returns 1 when there is at
// least one note, else 0 (after the all-rests message when there were rests).
int List2MIDI(Run& run, Block& block, uint32_t& size);

// Places the note-offs in a list in which every event is a note-on (rests
// removed, `code` 1) in one pass, as List2MIDI does: each note's note-off goes
// after the last of the following events that start no later than its end.
// Scales, folds, counts and lists every event as List2MIDI does, and returns
// the bytes of the note track's events. `count` is the block's p-field count.
uint32_t PlaceNoteOffsInOrder(Run& run, EventList& list, int count);

void PutMidiHeader(FILE* file, int tracks);
void PutTrkHeader(FILE* file, uint32_t length);
// The conductor track: 4/4, 60 quarter notes a minute, ending at end_seconds.
void PutTrack1(FILE* file, float end_seconds);
// The note track (nothing for an empty list).
void WriteTrack(FILE* file, EventList& list, uint32_t size);
void NoteOn(FILE* file, uint32_t delta, int key, int velocity, int channel);
void NoteOff(FILE* file, uint32_t delta, int key, int channel);
// A variable-length quantity: seven bits a byte, high groups first.
void WriteVarLen(uint32_t value, FILE* file);

}  // namespace sorvel
