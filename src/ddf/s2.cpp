// S2: a set choice whose elements are groups of values; a group of several
// values becomes a chord (fused events), so the block grows.
#include "base/catalog.h"
#include "base/chars.h"
#include "base/random.h"
#include "base/rounding.h"
#include "base/vocabulary.h"
#include "ddf/ddf.h"
#include "ddf/engine.h"
#include "ddf/readers.h"
#include "pfield/store.h"
#include "pfield/timing.h"
#include "pfield/values.h"

namespace sorvel {

namespace {

// One group: values joined by ":" or "'"; any white space, "]", ")", ","
// or "/" ends it.
int get_S2_element(Ctx& c, std::vector<float>& values) {
  Source& src = c.src;
  for (;;) {
    float v;
    if (!get_input_type(c, v)) return kErrValuesMissing;
    values.push_back(v);
    if (src.cur() == ':' || src.cur() == '\'') ++src.pos;
    const int ch = src.cur();
    if (is_space(ch) || ch == ']' || ch == ')' || ch == ',' || ch == '/') return kOk;
  }
}

}  // namespace

int get_S2_data(Ctx& c, DdfArgs& a) {
  Source& src = c.src;
  if (c.pfield.P_NO < 4) return kErrS2BelowP4;
  return read_alternatives(c, a, [&](std::vector<float>& rec) -> int {
    int r;
    int mode = 0;
    if (src.cur() == '*' || src.cur() == 'x') {
      mode = src.cur() == '*' ? 1 : 2;
      ++src.pos;
      if ((r = src.skip_wc())) return r;
    }
    std::vector<int> starts, lens;
    auto add_group = [&](int error) -> int {
      const size_t before = rec.size();
      if (get_S2_element(c, rec)) return error;
      starts.push_back(static_cast<int>(before) - 1);
      lens.push_back(static_cast<int>(rec.size() - before));
      return starts.size() > static_cast<size_t>(kMaxAlternatives) ? kErrBadParameterCount : kOk;
    };
    if (src.cur() == '[') {
      ++src.pos;
      if ((r = src.skip_wc())) return r;
      if (src.cur() == ']') return kErrNothingEntered;
      while (src.cur() != ']') {
        if ((r = add_group(kErrBracketValue))) return r;
        if ((r = src.skip_wc())) return r;
      }
      ++src.pos;
    } else if ((r = add_group(kErrValuesMissing))) {
      return r;
    }
    a.size.push_back(static_cast<int>(starts.size()));
    a.mode.push_back(starts.size() == 1 ? 0 : mode);
    a.group_start.push_back(std::move(starts));
    a.group_len.push_back(std::move(lens));
    return kOk;
  });
}

int do_S2(Ctx& c, DataList& d) {
  Run& run = c.run;
  Block& b = c.block;
  Pfield& p = c.pfield;
  DdfArgs a;
  int r = get_S2_data(c, a);
  if (r) return r;
  const std::vector<float> weights = fix_percents(a);
  if (!hundred_percent(weights.data(), a.n())) {
    tell_weights_failed(c, a, weights);
    return kErrWeightsNotOne;
  }
  SetChoice choice;
  init_did(choice, a.size);
  float base, last;
  const unsigned count = events_covered(c, d, a.dur, base, last);
  if (count == 0) return kOk;

  unsigned made = 0;
  while (static_cast<unsigned>(b.EVENT_NO) < b.EVENTS) {
    const int k = prob_result(run.rng, weights.data(), a.n());
    const size_t ks = static_cast<size_t>(k);
    const int g = get_set_element(run.rng, k, a.size[ks], choice, a.mode[ks]) - 1;
    const int start = a.group_start[ks][static_cast<size_t>(g)];
    const int len = a.group_len[ks][static_cast<size_t>(g)];
    float value = 0.0f;
    for (int j = 0; j < len; ++j) {
      value = a.alt[ks][static_cast<size_t>(1 + start + j)];
      if (j == 0) {
        p.IS_FUSED = 0;
      } else {
        p.IS_FUSED = 1;
        if (p.P_NO != 2) {
          ++b.EVENTS;
          ++b.EVENT_NO;
        }
      }
      if ((r = store_in_event(c, d, value))) return r;
      if (p.IN_LOOP && !StoreInQ(value, d.queue, p.IS_FUSED)) return kErrOutOfMemory;
    }
    // Only LAST_VAL is rounded in integer input; the stored values are not.
    p.LAST_VAL = p.IN_TYPE == CMD_IN ? RoundF(value) : value;
    ++b.EVENT_NO;
    if (++made == count) break;
  }
  if (made < count) {
    warn(c, kWarnDdfTruncated);
    d.exhausted = 1;
  }
  return kOk;
}

}  // namespace sorvel
