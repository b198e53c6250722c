// The tempo map: tempo changes in beats and the conversion of beats to seconds.
#pragma once

#include "base/run_state.h"
#include "input/source.h"

namespace sorvel {

// The "te" command, entered just after its name.
int get_tempo_change(Source& src);
// The index of the record that governs a beat position.
int curtempo(const Run& run, float beat);
// The tempo in force at a beat position.
float find_tempo(const Run& run, float beat);
// `beats` in seconds at the tempo in force at `CBEATS`; sets run.TEMPO.
float to_tempo(Run& run, float CBEATS, float beats);
int good_tempo(float t);
int good_time(float t);
// Warns of every record that starts before the record ahead of it ends.
void check_tempos(Run& run);
void print_tempos(Run& run);

}  // namespace sorvel
