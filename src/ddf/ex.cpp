#include "ddf/ex.h"

#include <cstring>

#include "base/catalog.h"
#include "base/rounding.h"
#include "base/x86_int.h"
#include "ddf/readers.h"
#include "pfield/timing.h"

namespace sorvel {

namespace {

struct ExReader {
  Ctx& c;
  bool referenced = false;  // a p-field was used somewhere in this function

  // One operand: "p" and a p-field number, or a constant. After "/" a
  // p-field draws a warning and a constant 0 is refused.
  int operand(std::vector<float>& rec, bool after_divide) {
    Source& src = c.src;
    if (src.cur() == 'p' || src.cur() == 'P') {
      ++src.pos;
      int n;
      if (!src.get_i(n)) return kErrBadPfieldNumber;
      if (n < 2 || n > c.block.MAX_PFIELDS || n == c.pfield.P_NO || !c.block.DID_P[n])
        return kErrExPfield;
      if (after_divide) warn(c, kWarnExMayDivideByZero);
      referenced = true;
      rec.insert(rec.end(), {static_cast<float>(EX_PFIELD), static_cast<float>(n)});
      return 0;
    }
    float v;
    if (!src.get_f(v)) return kErrValueOrSyntax;
    if (after_divide && v == 0.0f) return kErrExDivideByZero;
    rec.insert(rec.end(), {static_cast<float>(EX_CONSTANT), v});
    return 0;
  }

  // "[" operand (operator operand)... "]", or a single "p" reference.
  int equation(std::vector<float>& rec) {
    Source& src = c.src;
    rec.push_back(0.0f);  // length, set at the end
    const size_t length_at = rec.size() - 1;
    if (src.cur() != '[') {
      if (src.cur() != 'p' && src.cur() != 'P') return kErrExPfield;
      int r = operand(rec, false);
      if (r) return r;
      rec[length_at] = 2.0f;
      return 0;
    }
    ++src.pos;
    int r = operand(rec, false);
    if (r) return r;
    int ops = 0;
    for (;;) {
      src.skip_blanks();
      if (src.cur() == ']') break;
      const char* symbol = std::strchr("+-*/%", src.cur());
      if (src.cur() == '\0' || !symbol) return kErrExOperation;
      const int op = static_cast<int>(symbol - "+-*/%");
      ++src.pos;
      src.skip_blanks();
      rec.push_back(static_cast<float>(op));
      if ((r = operand(rec, op == EX_DIV))) return r;
      if (++ops > kMaxExOperations) return kErrValueOrSyntax;
    }
    ++src.pos;
    rec[length_at] = static_cast<float>(2 + 3 * ops);
    return 0;
  }
};

float pfield_value(const Event* e, int n) {
  if (n == 2) return e->start;
  if (n == 3) return e->dur;
  return e->pf()[n - 4];
}

}  // namespace

int get_EX_data(Ctx& c, DdfArgs& a) {
  Source& src = c.src;
  if (c.pfield.P_NO < 3) return kErrExPfield;
  if (c.pfield.P_NO == 3) warn(c, kWarnExP3Codes);
  int r = get_dynfunc_dur(c, a.dur);
  if (r) return r;
  ExReader reader{c};
  // The head's last skip stands before the first weight, the skip after an
  // alternative before the next one: one skip_wc in each gap.
  for (;;) {
    float weight;
    const int begin = src.pos;
    if (!src.get_f(weight)) return kErrExData;
    a.alt.push_back({weight});
    if (c.run.observer) a.weight_at.push_back({src.line, begin, src.pos});
    if ((r = src.skip_wc())) return r;
    int mode = 0;
    const int mark = src.cur();
    if (mark == 'f' || mark == 'F' || mark == 'i' || mark == 'I') {
      mode = (mark == 'i' || mark == 'I') ? 1 : 0;
      ++src.pos;
      if ((r = src.skip_wc())) return r;
    }
    a.mode.push_back(mode);
    if ((r = reader.equation(a.alt.back()))) return r;
    if (a.n() > kMaxAlternatives) return kErrBadParameterCount;
    if ((r = src.skip_wc())) return r;
    if (!reader.referenced) return kErrExNoPfield;
    if (src.cur() == ')') {
      ++src.pos;
      return kOk;
    }
  }
}

int make_EX(const Ctx& c, const DataList& d, const DdfArgs& a, int k, float& result) {
  const std::vector<float>& rec = a.alt[static_cast<size_t>(k)];
  const Event* e = d.cursor->next;
  const int length = trunc_i32(rec[1]);
  float value;
  if (length == 2) {
    // A lone operand is read as a p-field reference, whatever its kind.
    const int n = trunc_i32(rec[3]);
    if (n < 2 || n > c.block.MAX_PFIELDS) return kErrExPfield;
    value = pfield_value(e, n);
  } else {
    auto operand = [&](size_t at) {
      return trunc_i32(rec[at]) == EX_PFIELD ? pfield_value(e, trunc_i32(rec[at + 1])) : rec[at + 1];
    };
    value = operand(2);
    for (size_t at = 4; at + 2 < rec.size(); at += 3) {
      const float v = operand(at + 1);
      switch (trunc_i32(rec[at])) {
        case EX_ADD: value = value + v; break;
        case EX_SUB: value = value - v; break;
        case EX_MUL: value = value * v; break;
        case EX_DIV:
          if (v == 0.0f) return kErrExPfieldDivideByZero;
          value = value / v;
          break;
        default: value = mod(value, v); break;
      }
    }
  }
  result = a.mode[static_cast<size_t>(k)] == 1 ? static_cast<float>(Round(value)) : value;
  return kOk;
}

}  // namespace sorvel
