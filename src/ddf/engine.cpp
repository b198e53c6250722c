#include "ddf/engine.h"

#include <cmath>
#include <cstdio>

#include "base/catalog.h"
#include "base/curves.h"
#include "base/diag.h"
#include "base/observer.h"
#include "base/random.h"
#include "base/rounding.h"
#include "base/vocabulary.h"
#include "base/x86_int.h"
#include "ddf/ddf.h"
#include "ddf/ex.h"
#include "ddf/readers.h"
#include "global/tempo.h"
#include "pfield/store.h"
#include "pfield/timing.h"

namespace sorvel {

void init_did(SetChoice& choice, const std::vector<int>& sizes) {
  choice.used.clear();
  choice.place.clear();
  for (int s : sizes) {
    choice.used.emplace_back(static_cast<size_t>(s > 0 ? s : 0), 0);
    choice.place.emplace_back(s);
  }
  choice.used_count.assign(sizes.size(), 0);
  choice.last.assign(sizes.size(), -1);
}

int get_set_element(Rng& rng, int k, int size, SetChoice& choice, int mode) {
  const size_t ks = static_cast<size_t>(k);
  const Modulus& place = choice.place[ks];
  auto draw = [&] { return place.of(rng.rand()) + 1; };
  std::vector<char>& used = choice.used[ks];
  int& last = choice.last[ks];
  int i;
  switch (mode) {
    case 1: {
      // Once every element has been used, all become free again.
      int& used_count = choice.used_count[ks];
      if (used_count >= size) {
        std::fill(used.begin(), used.end(), 0);
        used_count = 0;
      }
      do i = draw();
      while (used[static_cast<size_t>(i - 1)]);
      used[static_cast<size_t>(i - 1)] = 1;
      ++used_count;
      return i;
    }
    case 2:
      do i = draw();
      while (i == last);
      last = i;
      return i;
    default:
      return draw();
  }
}

void tell_weights_failed(Ctx& c, const DdfArgs& a, const std::vector<float>& weights) {
  if (c.run.observer)
    c.run.observer->weights_failed(c.src.line, c.src.buffer, weights.data(), a.weight_at.data(),
                                   a.n());
}

std::vector<float> fix_percents(const DdfArgs& a) {
  std::vector<float> w;
  w.reserve(a.alt.size());
  for (const auto& rec : a.alt) w.push_back(rec[0]);
  return w;
}

unsigned events_covered(Ctx& c, const DataList& d, float dur, float& base, float& last) {
  base = last = 0.0f;
  if (std::isnan(dur)) return 0;
  if (dur < 0.0f) {
    // trunc(|dur|) events, at most as many as a block may hold.
    const double n = std::trunc(-static_cast<double>(dur));
    const double cap = static_cast<double>(c.block.note_list.limit);
    return static_cast<unsigned>(n < cap ? n : cap);
  }
  const unsigned count = ListSize(dur, base, last, d.cursor, c.block.note_list);
  if (last < dur - 5.0f && !c.run.SUPRESS) {
    warn(c, kWarnDurationAltered);
    Mprintf(c.run, "Old duration = %f, New duration = %f\n", dur, last);
  }
  return count;
}

namespace {

// The value of alternative k for event `index` of `count` (p3 and later).
struct Producer {
  Ctx& c;
  DataList& d;
  DdfArgs& a;
  int type;
  SetChoice choice;
  unsigned count = 0;
  float base = 0.0f, last = 0.0f;  // beats of the first and last covered events

  // The fraction of a move at this event: by event number, or, for a
  // beat-related curve (code 100 and up), by beat position.
  float curve(unsigned index, float from, float to, float code, double value) {
    const unsigned kind = static_cast<unsigned>(trunc_i32(code));
    if (kind < 100) return pplot_val(index, count, from, to, kind, value);
    const float t = d.cursor->next->beat - base;
    std::fprintf(c.run.console, "\ntime = %f", static_cast<double>(t));
    return tplot_val(t, last + base, from, to, kind - 100, value);
  }

  int value(int k, unsigned index, float& out) {
    Rng& rng = c.run.rng;
    std::vector<float>& rec = a.alt[static_cast<size_t>(k)];
    switch (type) {
      case DDF_RA:
        out = mk_rval(rng, trunc_i32(rec[1]), rec[2], rec[3]);
        return 0;
      case DDF_RW:
        out = rand_window(rng, rec[1], rec[2], rec[3], rec[4]);
        return 0;
      case DDF_MO: {
        const float from = mk_rval(rng, trunc_i32(rec[3]), rec[4], rec[5]);
        const float to = mk_rval(rng, trunc_i32(rec[6]), rec[7], rec[8]);
        out = curve(index, from, to, rec[1], rec[2]);
        return 0;
      }
      case DDF_SE: {
        const int i = get_set_element(rng, k, a.size[static_cast<size_t>(k)], choice,
                                      a.mode[static_cast<size_t>(k)]);
        out = rec[static_cast<size_t>(i)];
        return 0;
      }
      case DDF_EX:
        return make_EX(c, d, a, k, out);
      case DDF_MS: {
        const float chance = curve(index, 1.0f, 0.0f, rec[1], rec[2]);
        const int na = a.size[static_cast<size_t>(k)];
        const int nb = a.size2[static_cast<size_t>(k)];
        const float r = uniform(rng);
        if (chance < r)
          out = rec[static_cast<size_t>(3 + na + rng.rand() % nb)];
        else
          out = rec[static_cast<size_t>(3 + rng.rand() % na)];
        return 0;
      }
      default:  // HO
        out = a.alt[0][0];
        return 0;
    }
  }
};

// The value of alternative k for a rhythm in p2: moves follow the elapsed
// time (or the event number for a duration in events).
struct RhythmProducer {
  Ctx& c;
  DdfArgs& a;
  int type;
  SetChoice choice;
  unsigned span = 0;  // events of a negative duration

  float curve(float elapsed, unsigned index, float from, float to, float code, double value) {
    const unsigned kind = static_cast<unsigned>(trunc_i32(code));
    if (a.dur >= 0.0f) return tplot_val(elapsed, a.dur, from, to, kind, value);
    return pplot_val(index, span, from, to, kind, value);
  }

  float value(int k, float elapsed, unsigned index) {
    Rng& rng = c.run.rng;
    std::vector<float>& rec = a.alt[static_cast<size_t>(k)];
    switch (type) {
      case DDF_RA:
        return mk_rval(rng, trunc_i32(rec[1]), rec[2], rec[3]);
      case DDF_RW:
        return rand_window(rng, rec[1], rec[2], rec[3], rec[4]);
      case DDF_MO: {
        const float from = mk_rval(rng, trunc_i32(rec[3]), rec[4], rec[5]);
        const float to = mk_rval(rng, trunc_i32(rec[6]), rec[7], rec[8]);
        return curve(elapsed, index, from, to, rec[1], rec[2]);
      }
      case DDF_SE: {
        const int i = get_set_element(rng, k, a.size[static_cast<size_t>(k)], choice,
                                      a.mode[static_cast<size_t>(k)]);
        return rec[static_cast<size_t>(i)];
      }
      case DDF_MS: {
        // Here the sets are read one place earlier than in later p-fields.
        const float chance = curve(elapsed, index, 1.0f, 0.0f, rec[1], 1.0);
        const int na = a.size[static_cast<size_t>(k)];
        const int nb = a.size2[static_cast<size_t>(k)];
        const float r = uniform(rng);
        if (chance < r) return rec[static_cast<size_t>(2 + na + rng.rand() % nb)];
        return rec[static_cast<size_t>(2 + rng.rand() % na)];
      }
      case DDF_HO:
        return a.alt[0][0];
      default:  // EX has no rhythm
        return 0.0f;
    }
  }
};

// One event of a rhythm made by a function in p2: kOk, kBlockFull, or an
// error.
int insert_DDFp2(Ctx& c, DataList& d, RhythmProducer& producer, const std::vector<float>& weights,
                 float& elapsed, unsigned& index) {
  Run& run = c.run;
  Block& b = c.block;
  Pfield& p = c.pfield;
  if (out_of_time(c)) {
    warn(c, kWarnDdfTruncated);
    d.exhausted = 1;
    return kBlockFull;
  }
  const int k = prob_result(run.rng, weights.data(), static_cast<int>(weights.size()));
  const float value = producer.value(k, elapsed, index);
  p.LAST_VAL = value;
  float secs = to_tempo(run, p.CBEATS, value);
  if (run.observer)
    run.observer->rhythm_timed(c.src.line, c.src.pos, c.src.pos, p.CBEATS, value,
                               static_cast<double>(secs));
  secs = add_rdev(run, secs, run.MAX_DEV + run.MAX_DEV2);
  if (!InsertBegTime(secs, b.note_list, b.STIME, p.CBEATS, b.MAX_PFIELDS, p.IS_FUSED))
    return kErrOutOfMemory;
  p.WROTE_DATA = 1;
  p.CBEATS = p.CBEATS + value;
  if (p.IN_LOOP && !StoreInQ(value, d.queue, p.IS_FUSED)) return kErrOutOfMemory;
  elapsed = elapsed + std::fabs(secs);
  ++index;
  ++b.EVENT_NO;
  return kOk;
}

int read_args(Ctx& c, int type, DdfArgs& a) {
  switch (type) {
    case DDF_RA: return get_RA_data(c, a);
    case DDF_RW: return get_RW_data(c, a);
    case DDF_MO: return get_MO_data(c, a);
    case DDF_SE: return get_SE_data(c, a);
    case DDF_EX: return get_EX_data(c, a);
    case DDF_MS: return get_MS_data(c, a);
    default: return get_HO_data(c, a);
  }
}

int rhythm_in_p2(Ctx& c, DataList& d, DdfArgs& a, int type, const std::vector<float>& weights) {
  RhythmProducer producer{c, a, type, {}};
  init_did(producer.choice, a.size);
  float elapsed = 0.0f;
  unsigned index = 0;
  if (a.dur >= 0.0f) {
    while (elapsed < a.dur) {
      int r = insert_DDFp2(c, d, producer, weights, elapsed, index);
      if (r == kBlockFull) return kOk;
      if (r) return r;
    }
    return kOk;
  }
  float base, last;
  producer.span = events_covered(c, d, a.dur, base, last);
  for (unsigned i = 0; i < producer.span; ++i) {
    int r = insert_DDFp2(c, d, producer, weights, elapsed, index);
    if (r > 0) return r;
  }
  return kOk;
}

}  // namespace

int do_DDF(Ctx& c, int type, DataList& d) {
  Run& run = c.run;
  Block& b = c.block;
  Pfield& p = c.pfield;
  DdfArgs a;
  int r = read_args(c, type, a);
  if (r) return r;
  const std::vector<float> weights = fix_percents(a);
  if (type != DDF_HO && !hundred_percent(weights.data(), a.n())) {
    tell_weights_failed(c, a, weights);
    return kErrWeightsNotOne;
  }
  if (p.P_NO == 2) return rhythm_in_p2(c, d, a, type, weights);

  Producer producer{c, d, a, type, {}};
  init_did(producer.choice, a.size);
  producer.count = events_covered(c, d, a.dur, producer.base, producer.last);
  unsigned index = 0;
  for (; index < producer.count && static_cast<unsigned>(b.EVENT_NO) < b.EVENTS; ++index) {
    const int k = prob_result(run.rng, weights.data(), a.n());
    float value;
    if ((r = producer.value(k, index, value))) return r;
    if (p.IN_TYPE == CMD_IN) value = RoundF(value);
    p.LAST_VAL = value;
    if (p.P_NO == 3)
      store_p3(c, d, value);
    else if ((r = store_in_event(c, d, value)))
      return r;
    if (p.IN_LOOP && !StoreInQ(value, d.queue, p.IS_FUSED)) return kErrOutOfMemory;
    ++b.EVENT_NO;
  }
  if (index < producer.count) {
    warn(c, kWarnDdfTruncated);
    d.exhausted = 1;
  }
  return kOk;
}

}  // namespace sorvel
