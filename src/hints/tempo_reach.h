// Time along the tempo map: how many seconds a stretch of beats lasts when
// the tempo is followed as it moves, beat by beat, rather than taken once at
// the stretch's first beat as the run converts a rhythm or a block's start.
#pragma once

#include "base/tempo_map.h"

namespace sorvel {

// The tempo the map gives a beat, in double: the record that governs the beat
// and its curve shape, as the run reads them.
double tempo_at(const TempoMap& map, double beat);

// The seconds from beat `from` to beat `to` (from <= to) along the map: the
// integral of 60 / tempo over the beats. NaN where the map has no positive,
// finite tempo over the stretch.
double seconds_along_map(const TempoMap& map, double from, double to);

}  // namespace sorvel
