#include "iblock/header.h"

#include "base/catalog.h"
#include "base/chars.h"
#include "base/diag.h"
#include "base/observer.h"
#include "global/tempo.h"
#include "iblock/datalist.h"
#include "input/commands.h"
#include "pfield/timing.h"

namespace sorvel {

namespace {

// The gap between header items: blanks, line breaks, comments and at most
// four "," or "/" separators.
int skip_gap(Source& src) {
  for (int i = 0; i < 4; ++i) {
    int r = src.skip_stuff();
    if (r) return r;
  }
  return 0;
}

}  // namespace

int get_amount(Ctx& c) {
  Source& src = c.src;
  Block& b = c.block;
  b.BEATS = 0.0f;
  b.EVENTS = 0;
  if (src.cur() == '-') {
    ++src.pos;
    unsigned n;
    if (!src.get_uli(n)) return kErrBadEvents;
    b.EVENTS = n;
    b.ETIME = -static_cast<float>(n);
    return kOk;
  }
  const int ch = src.cur();
  if (!is_digit(ch) && ch != '+' && ch != '.')
    return ch == '{' ? kErrNoBlockDuration : kErrBlockDuration;
  float beats;
  if (!src.get_f(beats) || beats < 0.0f) return kErrBadBeats;
  if (beats > 10000.0f) {
    Mprintf(c.run, "\n\nERROR: Line %d: Maximum number of beats = %f\n", src.line, 10000.0);
    return kErrCaretOnly;
  }
  if (beats > 600.0f) warn(c, kWarnLongDuration);
  b.BEATS = beats;
  b.ETIME = beats;
  return kOk;
}

int do_p1(Ctx& c) {
  Source& src = c.src;
  Block& b = c.block;
  ++b.number;
  b.line = src.line;
  ++src.pos;  // the "i"
  int r = src.skip_lines();
  if (r > 0) return r;
  if (!is_digit(src.cur()) && src.cur() != '-') return kErrBadINumber;
  int ino;
  if (!src.get_i(ino)) return kErrBadINumber;
  b.I_NO = ino;
  if (ino < 0) return kSkipBlock;

  if ((r = src.skip_lines()) > 0) return r;
  if (src.cur() != '=') return kErrINumberNeedsEquals;
  ++src.pos;
  if ((r = src.skip_lines()) > 0) return r;
  int n;
  if (!src.get_i(n)) return kErrBadParameterCount;
  if (n < 3 || n > kMaxPfields) {
    Mprintf(c.run, "\n\nERROR: Bad number of p-fields (3 - %d)\n", kMaxPfields);
    return kErrCaretOnly;
  }
  if (n > 50) warn(c, kWarnManyPfields);
  b.MAX_PFIELDS = n;
  b.OUTS.assign(static_cast<size_t>(n - 1), CMD_RE);
  b.RE_FW.assign(static_cast<size_t>(n - 1), c.run.RE_FW_DEFAULT);
  b.FFT_SZ.assign(static_cast<size_t>(n - 1), c.run.FFT_SZ_DEFAULT);
  b.INS.assign(static_cast<size_t>(n - 1), 1u << CMD_RE);

  if ((r = skip_gap(src))) return r;
  float start;
  if (!src.get_f(start) || start < 0.0f) return kErrBadStartTime;
  if (start > 240.0f) warn(c, kWarnLateStart);
  b.SBEAT = start;
  b.STIME = start;

  if ((r = skip_gap(src))) return r;
  if ((r = get_amount(c))) return r;
  if ((r = skip_gap(src))) return r;
  if (src.cur() != '{') return kErrMissingBlockStart;
  ++src.pos;
  return kOk;
}

void reset_pfield(Ctx& c) {
  Run& run = c.run;
  Block& b = c.block;
  Pfield& p = c.pfield;
  b.EVENT_NO = 0;
  if (p.P_NO == 2) {
    // The start is converted at the single tempo in force at the start beat.
    run.TEMPO = find_tempo(run, b.SBEAT);
    p.CBEATS = b.SBEAT;
    b.STIME = 60.0f / run.TEMPO * b.STIME;
    if (run.observer)
      run.observer->block_start(b.line, b.number, b.I_NO, b.SBEAT, static_cast<double>(b.STIME),
                                b.EVENTS == 0);
  }
  p.IN_TYPE = CMD_RE;
  p.OUT_TYPE = CMD_RE;
  p.IS_FUSED = 0;
  p.IN_LOOP = 0;
  p.WROTE_DATA = 0;
  run.PFACTOR = 1.0f;
  run.MAX_DEV2 = 0.0f;
  ClearLFusedCode(b.note_list);
}

int do_pN(Ctx& c, DataList& d) {
  Source& src = c.src;
  Block& b = c.block;
  Pfield& p = c.pfield;
  const size_t k = static_cast<size_t>(p.P_NO - 2);
  int r = src.skip_lines();
  if (r > 0) return r;
  b.RE_FW[k] = c.run.RE_FW_DEFAULT;
  b.FFT_SZ[k] = c.run.FFT_SZ_DEFAULT;
  int code = CMD_RE;
  if (src.cur() == '(') {
    ++src.pos;
    src.skip_blanks();
    CommandExtras extras;
    if (!is_out_type(src.buffer, src.pos) || !get_command(code, src.buffer, src.pos, &extras))
      return kErrBadOutputSpec;
    if (extras.nx != -1) p.NX = extras.nx;
    if (p.P_NO <= 3 && code != CMD_RE) return kErrP2P3Floats;
    if (extras.digits >= 0) {
      if (code == CMD_RE) b.RE_FW[k] = extras.digits;
      if (code == CMD_BN) b.FFT_SZ[k] = extras.digits;
    }
    src.skip_blanks();
    if (src.cur() != ')') return kErrMissingParen;
    ++src.pos;
  }
  b.OUTS[k] = code;
  p.OUT_TYPE = code;
  if (c.run.observer) c.run.observer->pfield_start(p.line, p.P_NO, p.IN_TYPE, p.OUT_TYPE);
  d.cursor = b.note_list.handle;
  return do_pfield(c, d);
}

}  // namespace sorvel
