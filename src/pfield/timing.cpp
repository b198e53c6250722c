#include "pfield/timing.h"

#include <cmath>

#include "base/catalog.h"
#include "base/diag.h"
#include "base/rounding.h"
#include "base/vocabulary.h"

namespace sorvel {

float extract_p3val(float value, int& code) {
  float a = std::fabs(value);
  float base;
  if (a < 200.0f) {
    code = 0;
    base = 0.0f;
  } else if (a < 300.0f) {
    code = 200;
    base = 200.0f;
  } else if (a < 400.0f) {
    code = 300;
    base = 300.0f;
  } else if (a < 1000.0f) {
    code = 400;
    base = 400.0f;
  } else {
    code = 1000;
    base = 1000.0f;
  }
  float amount = a - base;
  return value < 0.0f ? -amount : amount;
}

void store_p3(Ctx& c, DataList& d, float value) {
  Run& run = c.run;
  d.cursor = d.cursor->next;
  Event* e = d.cursor;
  int code;
  float amount = extract_p3val(value, code);
  amount = add_rdev(run, amount, run.MAX_DEV);
  amount = add_rdev(run, amount, run.MAX_DEV2);
  const float rhythm = e->dur;
  float dur;
  switch (code) {
    case 0:
      dur = rhythm * amount;
      break;
    case 200:
      dur = rhythm + amount;
      break;
    case 300:
      // The warning looks at amount - rhythm, so it comes when the resulting
      // duration is positive.
      if (amount - rhythm < 0.0f) warn(c, kWarnNegativeDuration);
      dur = rhythm - amount;
      break;
    case 400:
      dur = amount * 60.0f / run.TEMPO;
      break;
    default:
      dur = amount;
      break;
  }
  e->dur = dur * run.PFACTOR;
  c.pfield.WROTE_DATA = 1;
}

void warn(Ctx& c, int number) {
  warning_no(c.run, number, c.src.line, c.src.buffer, c.src.pos);
}

}  // namespace sorvel
