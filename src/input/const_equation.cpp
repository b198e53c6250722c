// Constant equations: "~[A * 2 + 1]", worked out strictly from left to right.
#include <vector>

#include "base/catalog.h"
#include "base/diag.h"
#include "base/rounding.h"
#include "input/constants.h"
#include "input/names.h"

namespace sorvel {

namespace {

double apply(char op, double a, double b) {
  switch (op) {
    case '+': return a + b;
    case '-': return a - b;
    case '*': return a * b;
    case '/': return a / b;
    default:  // '%'
      return static_cast<double>(mod(static_cast<float>(a), static_cast<float>(b)));
  }
}

bool is_operator(int c) { return c == '+' || c == '-' || c == '*' || c == '/' || c == '%'; }

}  // namespace

int parse_vequation(Source& src, double& value) {
  Run& run = src.run;
  ++src.pos;  // the "["
  std::vector<double> terms;
  std::vector<char> ops;
  bool op_last = false;  // an operator was the last thing read
  for (;;) {
    int c = src.cur();
    if (c == ' ' || c == '\t' || c == '\n') {
      ++src.pos;
      continue;
    }
    if (c == ']') {
      ++src.pos;
      break;
    }
    if (c == '\0') return kErrConstMultiline;
    if (is_alpha(c)) {
      const Constant* found = nullptr;
      int r = find_vname(src, found);
      if (r != 1) return r;
      terms.push_back(found->value);
    } else if (c == '?') {
      float v = static_cast<float>(run.rng.rand() % 32767) / 32767.0f;
      if (!run.SUPRESS) Mprintf(run, "\n\tLine %d: '?' evaluated at = %f", src.line, v);
      terms.push_back(v);
      ++src.pos;
    } else if (is_digit(c) || c == '.' || ((c == '+' || c == '-') && op_last)) {
      double v;
      if (!src.get_df(v)) return kErrDigitExpected;
      terms.push_back(v);
    } else if (c == '@') {
      int d = char_at(src, src.pos + 1);
      if (d != '1' && d != '2') return kErrBadAtDigit;
      terms.push_back(d == '1' ? run.LAST_IB_DUR : run.CUM_TIME);
      src.pos += 2;
    } else if (is_operator(c)) {
      ops.push_back(static_cast<char>(c));
      op_last = true;
      ++src.pos;
      continue;
    } else {
      return kErrConstBadChar;
    }
    op_last = false;
  }
  if (terms.size() == 1 && ops.empty()) {
    value = terms[0];
    return kOk;
  }
  if (terms.size() < 2 || ops.size() != terms.size() - 1) return kErrConstTerms;
  double result = terms[0];
  for (size_t k = 0; k < ops.size(); ++k) result = apply(ops[k], result, terms[k + 1]);
  value = result;
  return kOk;
}

}  // namespace sorvel
