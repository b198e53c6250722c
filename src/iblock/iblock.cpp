#include "iblock/iblock.h"

#include <algorithm>
#include <cstdio>

#include "base/catalog.h"
#include "base/observer.h"
#include "global/gblock.h"
#include "global/settings.h"
#include "iblock/comment.h"
#include "iblock/header.h"
#include "input/commands.h"
#include "pfield/timing.h"

namespace sorvel {

namespace {

// Discards a skipped block up to and including its "}" (or the end of input).
int skip_block(Source& src) {
  for (;;) {
    if (src.at_line_end()) {
      int r = src.get_buff();
      if (r == kEndOfInput) return kOk;
      if (r) return r;
      continue;
    }
    bool skipped;
    if (int r = skip_block_comment(src, skipped)) return r;
    if (skipped) continue;
    if (src.get_c() == '}') return kOk;
  }
}

// A p-field line, from its "p": number checks, reset, head and data.
int read_pfield(Ctx& c) {
  Source& src = c.src;
  Block& b = c.block;
  Pfield& p = c.pfield;
  if (p.IN_LOOP) warn(c, kWarnLoopTerminated);
  p.line = src.line;
  ++src.pos;  // the "p"
  int k;
  if (!src.get_i(k) || k < 2) return kErrBadPfieldNumber;
  if (k > b.MAX_PFIELDS) return kErrPfieldOutOfBounds;
  if (k != 2 && !b.DID_P[2]) return kErrP2First;
  if (b.DID_P[k]) return kErrDuplicatePfield;
  p.P_NO = k;
  reset_pfield(c);
  DataList d;
  int r = do_pN(c, d);
  if (r) return r;
  b.DID_P[k] = 1;
  if (k == 2) b.EVENTS = static_cast<unsigned>(b.EVENT_NO);
  return kOk;
}

// "}": every p-field from 2 to N must have been read.
int end_block(Ctx& c) {
  Block& b = c.block;
  for (int k = 2; k <= b.MAX_PFIELDS; ++k)
    if (!b.DID_P[k]) return kErrSkippedPfields;
  if (c.run.observer) c.run.observer->block_end(c.src.line);
  ++c.src.pos;
  return kOk;
}

}  // namespace

void name_blocks_left_out(Ctx& c) {
  Run& run = c.run;
  Source& src = c.src;
  Observer* observer = run.observer;
  FILE* quiet = std::fopen("/dev/null", "w");
  if (!observer || !quiet) {
    if (quiet) std::fclose(quiet);
    return;
  }
  FILE* screen = run.screen;
  const int SUPRESS = run.SUPRESS, MKLOG = run.MKLOG, MKEXP = run.MKEXP;
  const int SHOW_TEMPOS = run.SHOW_TEMPOS;
  run.observer = nullptr;
  run.screen = quiet;
  run.SUPRESS = 1;
  run.MKLOG = 0;
  run.MKEXP = 0;
  run.SHOW_TEMPOS = 0;
  for (;;) {
    if (src.at_eof() && src.at_line_end()) break;
    if (parse_gblock(src, nullptr) != kOk) break;
    const int r = do_p1(c);
    if (r == kOk) observer->midi_block_left_out(c.block.line, c.block.number, c.block.I_NO);
    if ((r != kOk && r != kSkipBlock) || skip_block(src) != kOk) break;
  }
  run.observer = observer;
  run.screen = screen;
  run.SUPRESS = SUPRESS;
  run.MKLOG = MKLOG;
  run.MKEXP = MKEXP;
  run.SHOW_TEMPOS = SHOW_TEMPOS;
  std::fclose(quiet);
}

int parse_iblock(Ctx& c) {
  Source& src = c.src;
  std::fill(std::begin(c.block.DID_P), std::end(c.block.DID_P), 0);
  bool header_read = false;
  for (;;) {
    src.skip_blanks();
    if (src.at_line_end()) {
      int r = src.get_buff();
      if (r) return r;
      continue;
    }
    const int ch = src.cur();
    int r;
    if (ch == 'i' && !header_read) {
      r = do_p1(c);
      if (r == kSkipBlock) {
        if ((r = skip_block(src))) return r;
        warn(c, kWarnBlockSkipped);
        return kSkipBlock;
      }
      if (r) return r;
      header_read = true;
    } else if (is_pfield(src.buffer, src.pos)) {
      if ((r = read_pfield(c))) return r;
    } else if (ch == '}') {
      return end_block(c);
    } else if (bool skipped; (r = skip_block_comment(src, skipped)) || skipped) {
      if (r) return r;
    } else if (is_command(src.buffer, src.pos)) {
      int code;
      if (!get_command(code, src.buffer, src.pos)) return kErrInvalidCommand;
      if (code == CMD_RD)
        r = set_rand_dev(src);
      else if (code == CMD_RS)
        r = set_rand_seed(src);
      else
        r = kErrValueOrSyntax;
      if (r) return r;
    } else {
      return kErrBadIblockCommand;
    }
  }
}

}  // namespace sorvel
