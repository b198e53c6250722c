#include "iblock/datalist.h"

#include "base/catalog.h"
#include "base/chars.h"
#include "base/diag.h"
#include "iblock/comment.h"
#include "iblock/dispatch.h"
#include "input/commands.h"
#include "pfield/store.h"
#include "pfield/timing.h"
#include "pfield/values.h"

namespace sorvel {

namespace {

// Reading state of one data list.
struct ListScan {
  DataList& d;
  bool no_value_yet = true;  // cleared by the first literal value
};

// Once the block is full, the rest of the p-field is skipped up to the next
// p-field line or "}"; comments are skipped whole.
int skip_rest(Ctx& c) {
  Source& src = c.src;
  for (;;) {
    if (src.at_line_end()) {
      if (src.at_eof()) return kErrEofBeforeBrace;
      int r = src.get_buff();
      if (r == kEndOfInput) return kErrEofBeforeBrace;
      if (r) return r;
      continue;
    }
    if (is_pfield(src.buffer, src.pos) || src.cur() == '}') return kOk;
    bool skipped;
    if (int r = skip_block_comment(src, skipped)) return r;
    if (skipped) continue;
    ++src.pos;
  }
}

int set_input_type(Ctx& c, int code, const CommandExtras& extras) {
  Pfield& p = c.pfield;
  if (p.P_NO == 2 && code != CMD_RE && code != CMD_IN && code != CMD_RH) return kErrBadP2Input;
  if (p.P_NO == 3 && code != CMD_RE && code != CMD_IN) return kErrBadP3Input;
  p.IN_TYPE = code;
  c.block.INS[static_cast<size_t>(p.P_NO - 2)] |= 1u << code;
  if (extras.nx != -1) p.NX = extras.nx;
  if (code == CMD_RE && extras.digits >= 0)
    c.block.RE_FW[static_cast<size_t>(p.P_NO - 2)] = extras.digits;
  return kOk;
}

// "<" opens a loop when none is open and no fuse mark is pending; ">" closes one.
int set_loop(Pfield& p, int ch) {
  if (ch == '<') {
    if (p.IN_LOOP || p.IS_FUSED) return 0;
    p.IN_LOOP = 1;
    return 1;
  }
  if (!p.IN_LOOP) return 0;
  p.IN_LOOP = 0;
  return 1;
}

// One repetition for "x" or "/", unless the block is full.
int repeat_once(Ctx& c, DataList& d) {
  if (out_of_time(c)) {
    warn(c, kWarnRepeatTruncated);
    d.exhausted = 1;
    return 0;
  }
  return repeat_last(c, d);
}

int do_x(Ctx& c, DataList& d, unsigned count) {
  for (unsigned i = 1; i < count && !d.exhausted; ++i) {
    int r = repeat_once(c, d);
    if (r) return r;
  }
  return 0;
}

int do_separators(Ctx& c, ListScan& s) {
  Source& src = c.src;
  Pfield& p = c.pfield;
  src.skip_blanks();
  if (s.no_value_yet) return kErrBadIblockCommand;
  switch (src.cur()) {
    case '\'':
    case ':':
      if (p.IS_FUSED) return kErrMultipleColons;
      ++p.IS_FUSED;
      if (p.P_NO >= 3) ++c.block.EVENTS;  // the fused value adds a chord member
      ++src.pos;
      return kOk;
    case '/':
      // A single "/" only separates; each further one repeats the last value.
      ++src.pos;
      src.skip_blanks();
      while (src.cur() == '/' && !s.d.exhausted) {
        int r = repeat_once(c, s.d);
        if (r) return r;
        ++src.pos;
        src.skip_blanks();
      }
      return kOk;
    case 'x': {
      ++src.pos;
      if (!is_digit(src.cur())) return kErrXNeedsDigit;
      unsigned count = 0;
      src.get_uli(count);
      return do_x(c, s.d, count);
    }
    case ',':
      ++src.pos;
      return kOk;
    default:
      return kOk;
  }
}

int do_data(Ctx& c, ListScan& s) {
  Block& b = c.block;
  Pfield& p = c.pfield;
  if (out_of_time(c)) {
    warn(c, kWarnEventsNotAdded);
    s.d.exhausted = 1;
    return kOk;
  }
  const int begin = c.src.pos;
  float value;
  if (!get_input_type(c, value)) return kErrValueOrSyntax;
  p.LAST_VAL = value;
  s.no_value_yet = false;
  if (p.IN_LOOP && !StoreInQ(value, s.d.queue, p.IS_FUSED)) return kErrMisplacedLoop;
  if (c.run.observer) s.d.value_begin = begin;
  int r = store_value(c, s.d, value);
  if (r) return r;
  ++b.EVENT_NO;
  return kOk;
}

int parse_pdata(Ctx& c, ListScan& s) {
  const int ch = c.src.cur();
  if (is_separator(ch) || ch == 'x') return do_separators(c, s);
  if (!in_limits(c, ch)) return kErrDataOutOfBounds;
  return do_data(c, s);
}

}  // namespace

int do_pfield(Ctx& c, DataList& d) {
  Source& src = c.src;
  Block& b = c.block;
  Pfield& p = c.pfield;
  const unsigned entry_events = b.EVENTS;
  ListScan s{d};
  if (p.P_NO > 2) p.LUT = b.note_list.handle;

  for (;;) {
    int r = src.skip_lines();
    if (r > 0) return r;
    if (r == kEndOfInput || src.at_line_end()) return kErrEofBeforeBrace;
    if (d.exhausted && (r = skip_rest(c))) return r;
    if (is_pfield(src.buffer, src.pos) || src.cur() == '}') break;

    if (is_command(src.buffer, src.pos)) {
      int code;
      CommandExtras extras;
      if (!get_command(code, src.buffer, src.pos, &extras)) return kErrInvalidCommand;
      r = is_input_code(code) ? set_input_type(c, code, extras) : do_commands(c, code, d);
      if (r) return r;
      continue;
    }
    bool skipped;
    if ((r = skip_block_comment(src, skipped))) return r;
    if (skipped) continue;
    if (src.cur() == '<' || src.cur() == '>') {
      if (!set_loop(p, src.cur())) return kErrBadLoop;
      ++src.pos;
      continue;
    }
    if ((r = parse_pdata(c, s))) return r;
  }

  if (!p.WROTE_DATA) {
    Mprintf(c.run, "\nERROR: P%d is blank ... OY!\n\n", p.P_NO);
    return kErrAlreadyPrinted;
  }
  int r = fill_to_end(c, d);
  if (r) return r;
  if (p.P_NO >= 3 && b.ETIME < 0.0f && b.EVENTS != entry_events)
    Mprintf(c.run, "\n\tP%d: Fused data changed \"events\" from %d to %d", p.P_NO, entry_events,
            b.EVENTS);
  return kOk;
}

}  // namespace sorvel
