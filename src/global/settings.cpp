#include "global/settings.h"

#include "base/catalog.h"
#include "base/diag.h"

namespace sorvel {

namespace {

// The shared form: "(" after optional white space, the value (line ends may
// stand around it), ")". `read` scans the value and returns 1 on success.
template <class Reader>
int read_setting(Source& src, int format_error, Reader read) {
  int r = src.good_cmd_format();
  if (r > 0) return r;
  ++src.pos;  // "("
  r = src.skip_lines();
  if (r > 0) return r;
  if (!read()) return format_error;
  r = src.skip_lines();
  if (r > 0) return r;
  if (src.cur() != ')') return kErrMissingParen;
  ++src.pos;
  return kOk;
}

// RD and DV: above 100 or below 0 is refused; above 1 is allowed with a
// warning.
int check_deviation(Source& src, float dev) {
  if (dev > 100.0f || dev < 0.0f) return kErrDeviationFormat;
  if (dev > 1.0f) warning_no(src.run, kWarnDeviationOverOne, src.line, src.buffer, src.pos);
  return kOk;
}

}  // namespace

int set_rand_seed(Source& src) {
  unsigned seed = 0;
  int r = read_setting(src, kErrSeedFormat, [&] { return src.get_ui(seed); });
  if (r) return r;
  src.run.rng.srand(seed);
  return kOk;
}

int set_samp_rate(Source& src) {
  return read_setting(src, kErrSampleRateFormat, [&] { return src.get_uli(src.run.SRATE); });
}

int set_rand_dev(Source& src) {
  int r = read_setting(src, kErrDeviationFormat, [&] { return src.get_f(src.run.MAX_DEV); });
  return r ? r : check_deviation(src, src.run.MAX_DEV);
}

int set_rand_dev2(Source& src) {
  int r = read_setting(src, kErrDeviationFormat, [&] { return src.get_f(src.run.MAX_DEV2); });
  return r ? r : check_deviation(src, src.run.MAX_DEV2);
}

int set_pfactor(Source& src, int P_NO) {
  if (P_NO == 2) return kErrPfactorInP2;
  return read_setting(src, kErrPfactorFormat, [&] { return src.get_f(src.run.PFACTOR); });
}

}  // namespace sorvel
