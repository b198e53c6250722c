#include "ddf/readers.h"

#include <utility>

#include "base/catalog.h"
#include "base/chars.h"
#include "base/diag.h"
#include "base/rounding.h"
#include "input/curve_type.h"
#include "pfield/values.h"

namespace sorvel {

namespace {

// A range: one value (distribution 0, low = high) or "[", an optional range
// letter, one or two values, "]". The bounds come out low first.
int get_range(Ctx& c, float& code, float& low, float& high) {
  Source& src = c.src;
  code = 0.0f;
  if (src.cur() != '[') {
    if (!get_input_type(c, low)) return kErrValuesMissing;
    high = low;
    return kOk;
  }
  ++src.pos;
  int r = src.skip_wc();
  if (r) return r;
  if (is_rrange_type(src.cur())) {
    code = static_cast<float>(get_rrange_type(src));
    if ((r = src.skip_wc())) return r;
  }
  if (!get_input_type(c, low)) return kErrBracketValue;
  if ((r = src.skip_wc())) return r;
  if (src.cur() == ']') {
    high = low;
  } else {
    if (!get_input_type(c, high)) return kErrBracketValue;
    if ((r = src.skip_wc())) return r;
    if (src.cur() != ']') return kErrTwoValuesExpected;
  }
  ++src.pos;
  if (low > high) std::swap(low, high);
  return kOk;
}

// A set: "[" one or more values "]", or a single value. Appends the values
// to `rec` and stores their count.
int get_set(Ctx& c, std::vector<float>& rec, int& count) {
  Source& src = c.src;
  float v;
  count = 0;
  if (src.cur() != '[') {
    if (!get_input_type(c, v)) return kErrValuesMissing;
    rec.push_back(v);
    count = 1;
    return kOk;
  }
  ++src.pos;
  for (;;) {
    int r = src.skip_wc();
    if (r) return r;
    if (src.cur() == ']') break;
    if (!get_input_type(c, v)) return kErrBracketValue;
    rec.push_back(v);
    if (++count > kMaxAlternatives) return kErrBadParameterCount;
  }
  if (count == 0) return kErrBracketValue;
  ++src.pos;
  return kOk;
}

// A rhythm in p2 given a span of time may not have a zero bound.
bool zero_bound_in_p2(const Ctx& c, const DdfArgs& a, float low, float high) {
  return c.pfield.P_NO == 2 && a.dur > 0.0f && (low == 0.0f || high == 0.0f);
}

// The curve letter of MO and MS: a beat-related move ("*") only over a span
// of time.
int get_move_curve(Ctx& c, const DdfArgs& a, float& curve, float& value) {
  int e = get_curve_type(c.src, curve, value, a.dur > 0.0f);
  return e ? e : c.src.skip_wc();
}

// SE and S2 mode marks: "*" draws without replacement, "x" never repeats at once.
int get_mode_mark(Source& src, int& mode) {
  mode = 0;
  if (src.cur() == '*')
    mode = 1;
  else if (src.cur() == 'x')
    mode = 2;
  else
    return 0;
  ++src.pos;
  return src.skip_wc();
}

}  // namespace

int is_rrange_type(int ch) {
  switch (to_lower(ch)) {
    case 'f': case 'l': case 'h': case 't': case 'g': case 'x': case 'b':
      return 1;
    default:
      return 0;
  }
}

int get_rrange_type(Source& src) {
  int code;
  switch (to_lower(src.cur())) {
    case 'f': code = 0; break;
    case 'l': code = 1; break;
    case 'h': code = 2; break;
    case 't': code = 3; break;
    case 'g': code = 4; break;
    case 'x': code = 5; break;
    case 'b': code = 6; break;
    default: return 0;
  }
  ++src.pos;
  return code;
}

int get_dynfunc_dur(Ctx& c, float& dur) {
  Source& src = c.src;
  int r = src.skip_wc();
  if (r) return r;
  if (src.cur() != '(') return kErrCharsBeforeDdfParen;
  ++src.pos;
  if ((r = src.skip_wc())) return r;
  if (src.cur() == 'T') {
    ++src.pos;
    float factor = 1.0f;
    if (src.cur() == '*') {
      ++src.pos;
      if ((!is_digit(src.cur()) && src.cur() != '.') || !src.get_f(factor))
        return kErrTimePercentage;
    }
    const Block& b = c.block;
    if (b.ETIME >= 0.0f) {
      dur = b.ETIME * factor;
    } else {
      // Counted in events: minus the rounded count, negated as an integer.
      const int n = Round(static_cast<float>(b.EVENTS) * factor);
      dur = static_cast<float>(static_cast<int>(0u - static_cast<unsigned>(n)));
    }
    if (!c.run.SUPRESS) Mprintf(c.run, "\n\tLine %d: T evaluated at = %f", src.line, dur);
  } else if (!src.get_f(dur)) {
    return kErrBadBeatsOrEvents;
  }
  return src.skip_wc();
}

int get_RA_data(Ctx& c, DdfArgs& a) {
  return read_alternatives(c, a, [&](std::vector<float>& rec) -> int {
    float code, low, high;
    int e = get_range(c, code, low, high);
    if (e) return e;
    if (zero_bound_in_p2(c, a, low, high)) return kErrZeroP2WithBeats;
    rec.insert(rec.end(), {code, low, high});
    return kOk;
  });
}

int get_RW_data(Ctx& c, DdfArgs& a) {
  Source& src = c.src;
  return read_alternatives(c, a, [&](std::vector<float>& rec) -> int {
    int e;
    if (src.cur() == '[') {
      ++src.pos;
      if ((e = src.skip_wc())) return e;
    }
    float low, high, width, start;
    if (!get_input_type(c, low)) return kErrRwRange;
    if ((e = src.skip_wc())) return e;
    if (!get_input_type(c, high) || low == high) return kErrRwRange;
    if (low > high) std::swap(low, high);
    if ((e = src.skip_wc())) return e;
    if (src.cur() == ']') {
      ++src.pos;
      if ((e = src.skip_wc())) return e;
    }
    if (!src.get_f(width) || width < 0.0f || width > 1.0f) return kErrRwWindow;
    if ((e = src.skip_wc())) return e;
    if (!get_input_type(c, start) || start < low || start > high) return kErrRwStart;
    rec.insert(rec.end(), {low, high, width, (start - low) / (high - low)});
    return kOk;
  });
}

int get_MO_data(Ctx& c, DdfArgs& a) {
  Source& src = c.src;
  return read_alternatives(c, a, [&](std::vector<float>& rec) -> int {
    float curve, value;
    int e = get_move_curve(c, a, curve, value);
    if (e) return e;
    float scode, slow, shigh, ecode, elow, ehigh;
    if ((e = get_range(c, scode, slow, shigh))) return e;
    if ((e = src.skip_wc())) return e;
    if ((e = get_range(c, ecode, elow, ehigh))) return e;
    if (zero_bound_in_p2(c, a, slow, shigh) || zero_bound_in_p2(c, a, elow, ehigh))
      return kErrZeroP2WithBeats;
    rec.insert(rec.end(), {curve, value, scode, slow, shigh, ecode, elow, ehigh});
    return kOk;
  });
}

int get_SE_data(Ctx& c, DdfArgs& a) {
  Source& src = c.src;
  return read_alternatives(c, a, [&](std::vector<float>& rec) -> int {
    int mode, count;
    int e = get_mode_mark(src, mode);
    if (e) return e;
    if ((e = get_set(c, rec, count))) return e;
    a.size.push_back(count);
    a.mode.push_back(count == 1 ? 0 : mode);
    return 0;
  });
}

int get_MS_data(Ctx& c, DdfArgs& a) {
  Source& src = c.src;
  return read_alternatives(c, a, [&](std::vector<float>& rec) -> int {
    float curve, value;
    int e = get_move_curve(c, a, curve, value);
    if (e) return e;
    rec.insert(rec.end(), {curve, value});
    int count_a, count_b;
    if ((e = get_set(c, rec, count_a))) return e;
    if ((e = src.skip_wc())) return e;
    if ((e = get_set(c, rec, count_b))) return e;
    a.size.push_back(count_a);
    a.size2.push_back(count_b);
    return 0;
  });
}

int get_HO_data(Ctx& c, DdfArgs& a) {
  Source& src = c.src;
  int r = get_dynfunc_dur(c, a.dur);
  if (r) return r;
  float value;
  if (!get_input_type(c, value)) return kErrRwRange;
  a.alt.push_back({value});
  if ((r = src.skip_wc())) return r;
  if (src.cur() != ')') return kErrHoParen;
  ++src.pos;
  return kOk;
}

}  // namespace sorvel
