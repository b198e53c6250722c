#include "output/csound.h"

#include <vector>

#include "base/diag.h"
#include "base/numtext.h"
#include "base/rounding.h"
#include "base/vocabulary.h"
#include "output/units.h"

namespace sorvel {

namespace {

// The reader admits 0 to 7 decimals; holding the count to that range keeps a
// line within the room reserved for it whatever the arrays hold.
int decimals(int d) { return d < 0 ? 0 : (d > 7 ? 7 : d); }

// Room for one written value: a float needs at most 39 integer digits, a sign,
// a point and 7 decimals, well within this, and the widths are all smaller.
// The line keeps kNumTextMax spare at its end, the room the number writers ask for.
constexpr int kFieldRoom = 64;

// How one p-field is written.
struct Column {
  int code;
  int decimals;  // "re"
  int fft;       // "bn"
};

// A rest is an event that lasts no time; a NaN duration is not one.
bool is_rest(const Event* e) { return e->dur <= 0.0f; }

char* put_value(char* p, float v, const Column& col, unsigned srate) {
  switch (col.code) {
    case CMD_RE:
      p = put_fixed(p, static_cast<double>(v), col.decimals + 6, col.decimals);
      break;
    case CMD_IN:
      p = put_long(p, Round(v), 5);
      break;
    case CMD_DB:
      p = put_fixed(p, static_cast<double>(amp_to_db(Round(v))), 4, 1);
      break;
    case CMD_HZ:
      p = put_fixed(p, static_cast<double>(cpc_to_hz(v)), 11, 5);
      break;
    case CMD_OP:
      p = put_fixed(p, static_cast<double>(cpc_to_pch(v)), 6, 3);
      break;
    case CMD_OD:
      p = put_fixed(p, static_cast<double>(cpc_to_oct(v)), 4, 2);
      break;
    case CMD_TR:
      p = put_fixed(p, static_cast<double>(st_to_tr(v)), 8, 6);
      break;
    case CMD_BN:
      p = put_long(p, cpc_to_bin(v, col.fft, srate), 5);
      break;
    default:
      return p;  // "xx" and unknown codes leave no trace, not even a blank
  }
  *p++ = ' ';
  return p;
}

}  // namespace

char* put_pfield(char* p, float v, int code, int decimals_, int fft, unsigned srate) {
  return put_value(p, v, Column{code, decimals(decimals_), fft}, srate);
}

// Walks the list from its first event, writing every event that sounds and
// taking every rest out of the list (the handle moves back when the last event
// goes). A list of rests only is reported and emptied.
int print_csound(Run& run, Block& block, FILE* stream) {
  EventList& list = block.note_list;
  if (!list.handle) return 0;

  const int count = block.MAX_PFIELDS;
  const int start_dec = decimals(block.RE_FW[0]);
  const int dur_dec = decimals(block.RE_FW[1]);
  std::vector<Column> columns;
  for (int k = 4; k <= count; ++k)
    columns.push_back(Column{block.OUTS[k - 2], decimals(block.RE_FW[k - 2]), block.FFT_SZ[k - 2]});
  // Lines are gathered in one buffer and written in large pieces.
  const size_t line_room = static_cast<size_t>(count + 1) * kFieldRoom + kNumTextMax;
  constexpr size_t kFlushAt = 1 << 16;
  std::vector<char> buffer(kFlushAt + line_room);
  char* p = buffer.data();
  auto flush = [&] {
    std::fwrite(buffer.data(), 1, static_cast<size_t>(p - buffer.data()), stream);
    p = buffer.data();
  };

  Event* prev = list.handle;
  for (bool done = false; !done;) {
    Event* cur = prev->next;
    done = cur == list.handle;
    if (is_rest(cur)) {
      if (cur->next == cur) {
        Mprintf(run, "\n\nOops i-block %d is all rests (check p2=0 and p3 != 400+n OR 1000+n?)! ",
                block.I_NO);
        list.FreeListNodes();
        block.EVENT_NO = 0;
        block.EVENTS = 0;
        return 0;
      }
      prev->next = cur->next;
      if (cur == list.handle) list.handle = prev;
      list.FreeNode(cur);
      --block.EVENTS;
      --block.EVENT_NO;
      continue;
    }
    *p++ = '\n';
    *p++ = 'i';
    p = put_long(p, block.I_NO);
    *p++ = ' ';
    p = put_fixed(p, static_cast<double>(cur->start), start_dec + 5, start_dec);
    *p++ = ' ';
    p = put_fixed(p, static_cast<double>(cur->dur), dur_dec + 3, dur_dec);
    *p++ = ' ';
    for (size_t i = 0; i < columns.size(); ++i) p = put_value(p, cur->pf()[i], columns[i], run.SRATE);
    if (static_cast<size_t>(p - buffer.data()) >= kFlushAt) flush();
    prev = cur;
  }
  *p++ = '\n';
  flush();
  return 1;
}

}  // namespace sorvel
