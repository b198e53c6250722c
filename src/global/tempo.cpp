// The tempo map: which definition governs a beat, the tempo there, and the
// conversion of beats to seconds.
#include "global/tempo.h"

#include <algorithm>
#include <vector>

#include "base/convert.h"
#include "base/curves.h"
#include "base/diag.h"

namespace sorvel {

namespace {

// Records in use; TOT_TEMPOS and the table are kept equal, this only makes
// sure that nothing reads past the table.
int tempo_count(const Run& run) {
  return std::min(run.TOT_TEMPOS, static_cast<int>(run.TEMPO_LIST.size()));
}

// The curve type of a record as an integer, as the curve routines take it.
int type_of(const TempoDef& def) { return trunc_i32(static_cast<double>(def.Type)); }

}  // namespace

int good_tempo(float t) { return t >= 1.0f && t <= 4000.0f ? 1 : 0; }

int good_time(float t) { return t >= 0.0f && t <= 10000.0f ? 1 : 0; }

// The walk this stands for: from record 0, step to the next record while the
// beat is at or past the current record's start and the next record starts no
// later than the beat. Past record 0 that is "while every start from record
// 1 to the next one is at most the beat", so the record is the number of
// records from 1 on whose reach (the latest start up to them) is at most the
// beat, found by bisection. A NaN beat stays at record 0.
int curtempo(const Run& run, float beat) {
  const int count = std::min(tempo_count(run), static_cast<int>(run.tempo_reach.size()));
  if (count <= 1 || !(beat >= run.TEMPO_LIST[0].Stime)) return 0;
  const auto from = run.tempo_reach.begin() + 1;
  return static_cast<int>(std::upper_bound(from, run.tempo_reach.begin() + count, beat) - from);
}

float find_tempo(const Run& run, float beat) {
  const TempoDef& r = run.TEMPO_LIST[curtempo(run, beat)];
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

// A record conflicts when the one before it ends after it starts (record 0,
// after an end of 0, never does). The conflicts are listed in record order.
void check_tempos(Run& run) {
  const int count = tempo_count(run);
  for (int k : run.tempo_conflicts)
    if (k < count) Mprintf(run, "\nWARNING: Tempo #%d conflicts with previous tempo's end time!", k + 1);
}

void tempo_changed(Run& run, int index) {
  const int count = tempo_count(run);
  if (index < 0 || index >= count) return;
  if (index >= 1) {
    if (run.tempo_reach.size() < static_cast<size_t>(count)) run.tempo_reach.resize(static_cast<size_t>(count), 0.0f);
    const float start = run.TEMPO_LIST[static_cast<size_t>(index)].Stime;
    run.tempo_reach[static_cast<size_t>(index)] =
        index > 1 ? std::max(run.tempo_reach[static_cast<size_t>(index) - 1], start) : start;
  }
  // The record's own pair and the pair it leads may have changed.
  std::vector<int>& conflicts = run.tempo_conflicts;
  for (int k : {index, index + 1}) {
    if (k < 1 || k >= count) continue;
    const bool conflict = run.TEMPO_LIST[static_cast<size_t>(k) - 1].Etime > run.TEMPO_LIST[static_cast<size_t>(k)].Stime;
    const auto at = std::lower_bound(conflicts.begin(), conflicts.end(), k);
    const bool listed = at != conflicts.end() && *at == k;
    if (conflict && !listed)
      conflicts.insert(at, k);
    else if (!conflict && listed)
      conflicts.erase(at);
  }
}

void print_tempos(Run& run) {
  const int count = tempo_count(run);
  Mprintf(run, "\n  Stored Tempos (There are %d defs):", run.TOT_TEMPOS);
  for (int i = 0; i < count; ++i) {
    const TempoDef& r = run.TEMPO_LIST[i];
    const int type = type_of(r);
    const char letter = type >= 0 && type <= 5 ? "FELUSX"[type] : '?';
    Mprintf(run, "\n\t%d: Stime %f, Etime %f, Stempo %f, Etempo %f, Type %c", i + 1, r.Stime,
            r.Etime, r.Stempo, r.Etempo, letter);
    if (r.Type == 3.0f) Mprintf(run, ", Vcurve = %f", r.Vcurve);
  }
  Mprintf(run, "\n");
}

}  // namespace sorvel
