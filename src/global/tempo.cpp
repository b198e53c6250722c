// The tempo map: which definition governs a beat, the tempo there, and the
// conversion of beats to seconds.
#include "global/tempo.h"

#include "base/curves.h"
#include "base/diag.h"
#include "base/x86_int.h"

namespace sorvel {

namespace {

// The curve type of a record as an integer, as the curve routines take it.
int type_of(const TempoDef& def) { return trunc_i32(static_cast<double>(def.Type)); }

}  // namespace

int good_tempo(float t) { return t >= 1.0f && t <= 4000.0f ? 1 : 0; }

int good_time(float t) { return t >= 0.0f && t <= 10000.0f ? 1 : 0; }

int curtempo(const Run& run, float beat) { return run.tempo_map.record_at(beat); }

float find_tempo(const Run& run, float beat) {
  const TempoDef& r = run.tempo_map[curtempo(run, beat)];
  return tplot_val(beat - r.Stime, r.Etime - r.Stime, r.Stempo, r.Etempo,
                   static_cast<unsigned>(type_of(r)), static_cast<double>(r.Vcurve));
}

float to_tempo(Run& run, float CBEATS, float beats) {
  const float tempo = find_tempo(run, CBEATS);
  run.TEMPO = tempo;
  const float seconds = (60.0f / tempo) * beats;
  if (run.SHOW_TEMPOS)
    Mprintf(run, "\n  > Beat %f Tempo = %f Val = %f (bts) %f (secs)", CBEATS, tempo, beats,
            seconds);
  return seconds;
}

void check_tempos(Run& run) {
  for (int k : run.tempo_map.conflicts())
    Mprintf(run, "\nWARNING: Tempo #%d conflicts with previous tempo's end time!", k + 1);
}

void print_tempos(Run& run) {
  const TempoMap& map = run.tempo_map;
  Mprintf(run, "\n  Stored Tempos (There are %d defs):", map.count());
  for (int i = 0; i < map.count(); ++i) {
    const TempoDef& r = map[i];
    const int type = type_of(r);
    const char letter = type >= 0 && type <= 5 ? "FELUSX"[type] : '?';
    Mprintf(run, "\n\t%d: Stime %f, Etime %f, Stempo %f, Etempo %f, Type %c", i + 1, r.Stime,
            r.Etime, r.Stempo, r.Etempo, letter);
    if (r.Type == 3.0f) Mprintf(run, ", Vcurve = %f", r.Vcurve);
  }
  Mprintf(run, "\n");
}

}  // namespace sorvel
