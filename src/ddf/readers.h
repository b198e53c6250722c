// The argument readers of the dynamic data functions. Each reads from just
// after the function's name up to and including its ")" into `a`, and returns
// 0 or an error number.
#pragma once

#include "base/catalog.h"
#include "ddf/record.h"
#include "pfield/state.h"

namespace sorvel {

// The "(" and the duration (a number, or T / T*factor for the block's time).
int get_dynfunc_dur(Ctx& c, float& dur);

// Reads the head, then alternatives until ")": each begins with its weight
// (kErrNoWeight when none can be read), then `body` reads the rest into the new
// record. Every gap between two tokens gets one skip_wc (white space, at most
// one comment, white space) and no more: the head's last skip stands before
// the first weight, the skip after an alternative before the next one, so
// two comments in a row where a weight is due fail at the second.
template <class Body>
int read_alternatives(Ctx& c, DdfArgs& a, Body body) {
  Source& src = c.src;
  int r = get_dynfunc_dur(c, a.dur);
  if (r) return r;
  for (;;) {
    float weight;
    const int begin = src.pos;
    if (!src.get_f(weight)) return kErrNoWeight;
    a.alt.push_back({weight});
    if (c.run.observer) a.weight_at.push_back({src.line, begin, src.pos});
    if ((r = src.skip_wc())) return r;
    if ((r = body(a.alt.back()))) return r;
    if (a.n() > kMaxAlternatives) return kErrBadParameterCount;
    if ((r = src.skip_wc())) return r;
    if (src.cur() == ')') {
      ++src.pos;
      return kOk;
    }
  }
}

int get_RA_data(Ctx& c, DdfArgs& a);
int get_RW_data(Ctx& c, DdfArgs& a);
int get_MO_data(Ctx& c, DdfArgs& a);
int get_SE_data(Ctx& c, DdfArgs& a);
int get_MS_data(Ctx& c, DdfArgs& a);
int get_HO_data(Ctx& c, DdfArgs& a);
int get_EX_data(Ctx& c, DdfArgs& a);
int get_S2_data(Ctx& c, DdfArgs& a);

// Range-type letters: f l h t g x b (either case) for distributions 0 to 6.
int is_rrange_type(int ch);
int get_rrange_type(Source& src);

}  // namespace sorvel
