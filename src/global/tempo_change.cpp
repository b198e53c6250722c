// The "te" command: te(T) sets the tempo from beat 0; te(S E T1 T2 [C]) moves
// from tempo T1 at beat S to T2 at beat E along curve C (e when left out).
#include "base/catalog.h"
#include "global/tempo.h"

#include <cstddef>

#include "base/chars.h"
#include "base/diag.h"
#include "input/curve_type.h"

namespace sorvel {

namespace {

void warn(Source& src, int number) { warning_no(src.run, number, src.line, src.buffer, src.pos); }

// te(T): record 0 becomes T from beat 0 on; its curve value is kept.
int single_tempo(Source& src, float T) {
  ++src.pos;  // ")"
  if (!good_tempo(T)) return kErrTempoFormat;
  TempoDef r = src.run.tempo_map[0];
  r.Stime = 0.0f;
  r.Etime = 1000.0f;
  r.Stempo = T;
  r.Etempo = T;
  r.Type = 0.0f;
  src.run.tempo_map.replace_first(r);
  if (T > 300.0f) warn(src, kWarnTempo1Fast);
  else if (T < 30.0f) warn(src, kWarnTempo1Slow);
  return kOk;
}

// Reads one term and the separators after it.
int read_term(Source& src, float& value, int error) {
  if (!src.get_f(value)) return error;
  int r = src.skip_stuff();
  return r > 0 ? r : 0;
}

// te(S E T1 T2 [C]), entered on the second term.
int tempo_move(Source& src, float S) {
  float E = 0.0f, T1 = 0.0f, T2 = 0.0f;
  int r = read_term(src, E, kErrTeEnd);
  if (!r) r = read_term(src, T1, kErrTeStartTempo);
  if (!r) r = read_term(src, T2, kErrTeEndTempo);
  if (r) return r;

  float type = 1.0f, vcurve = 1.0f;
  if (is_alpha(src.cur())) {
    r = get_curve_type(src, type, vcurve, false);
    if (r > 0) return r;
    r = src.skip_stuff();
    if (r > 0) return r;
  }

  if (!good_time(S)) return kErrTeStartRange;
  if (!good_time(E)) return kErrTeEndRange;
  if (!good_tempo(T1)) return kErrTeStartTempoRange;
  if (!good_tempo(T2)) return kErrTeEndTempoRange;
  if (S > E) return kErrTeBackwards;

  if (S > 600.0f) warn(src, kWarnLateChange);
  if (E > 600.0f) warn(src, kWarnLongChange);
  if (T1 > 300.0f) warn(src, kWarnTempo1Fast);
  else if (T1 < 30.0f) warn(src, kWarnTempo1Slow);
  if (T2 > 300.0f) warn(src, kWarnTempo2Fast);
  else if (T2 < 30.0f) warn(src, kWarnTempo2Slow);

  Run& run = src.run;
  const TempoDef def{S, T1, E, T2, type, vcurve};
  if (S == 0.0f)
    run.tempo_map.replace_first(def);
  else
    run.tempo_map.add(def);
  if (src.cur() != ')') return kErrMissingParen;
  ++src.pos;
  return kOk;
}

}  // namespace

int get_tempo_change(Source& src) {
  int r = src.good_cmd_format();
  if (r > 0) return r;
  ++src.pos;  // "("
  float first = 0.0f;
  r = read_term(src, first, kErrTeStart);
  if (r) return r;
  r = src.cur() == ')' ? single_tempo(src, first) : tempo_move(src, first);
  if (r) return r;
  check_tempos(src.run);
  return kOk;
}

}  // namespace sorvel
