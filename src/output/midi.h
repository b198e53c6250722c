// The Standard MIDI File writer (format 1: a conductor track and a note track).
#pragma once

#include <cstdint>
#include <cstdio>

#include "base/run.h"
#include "output/block.h"

namespace sorvel {

// Turns the block's events into note-ons and note-offs; `size` receives the
// bytes of the note track's events. Returns 1 when there is at least one note.
int List2MIDI(Run& run, Block& block, uint32_t& size);
void PutMidiHeader(FILE* file, int tracks);
void PutTrack1(FILE* file, float end_seconds);
void WriteTrack(FILE* file, EventList& list, uint32_t size);

}  // namespace sorvel
