// The tempo map: tempo changes in beats and the conversion of beats to seconds.
#pragma once

#include "base/run.h"
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
void check_tempos(Run& run);
// Brings the map's indexes up to date after record `index` was set: record 0
// at any time, a later one only as it is appended.
void tempo_changed(Run& run, int index);
void print_tempos(Run& run);

}  // namespace sorvel
