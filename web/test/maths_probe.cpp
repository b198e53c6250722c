// maths_probe: evaluates every place where Sorvel calls the maths library
// (log, exp, pow, sin), over all or very many of the arguments it can meet,
// and prints one hash per stretch of arguments: once for the library's double
// result and once for the value Sorvel keeps. Built natively and for
// WebAssembly (web/test/maths_probe.sh), the two listings must agree on the
// kept values; a stretch that differs names arguments to look at.
//
//   maths_probe [STRIDE]   every STRIDE-th argument of the large sets (1: all)
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "base/curves.h"
#include "output/units.h"

namespace {

struct Hash {
  uint64_t h = 1469598103934665603ull;
  void add(uint64_t v) {
    for (int i = 0; i < 8; ++i, v >>= 8) h = (h ^ (v & 0xFF)) * 1099511628211ull;
  }
  void add(double d) {
    uint64_t v;
    std::memcpy(&v, &d, 8);
    add(v);
  }
  void add(float f) {
    uint32_t v;
    std::memcpy(&v, &f, 4);
    add(static_cast<uint64_t>(v));
  }
};

// One probe: `stretches` hashes of the library result and of the kept value.
struct Probe {
  const char* name;
  long count = 0;
  Hash lib, kept;
  Probe(const char* n) : name(n) {}
  void report(long stretch) {
    std::printf("%s %ld %016llx %016llx\n", name, stretch, static_cast<unsigned long long>(lib.h),
                static_cast<unsigned long long>(kept.h));
    lib = Hash();
    kept = Hash();
  }
};

float from_bits(uint32_t b) {
  float f;
  std::memcpy(&f, &b, 4);
  return f;
}
uint32_t bits_of(float f) {
  uint32_t b;
  std::memcpy(&b, &f, 4);
  return b;
}

constexpr long kStretch = 1 << 22;  // arguments per printed hash

// Every float from lo to hi (by bit pattern, both positive), stepping `stride`.
template <class F>
void over_floats(Probe& p, float lo, float hi, uint32_t stride, F f) {
  long n = 0, stretch = 0;
  for (uint32_t b = bits_of(lo); b <= bits_of(hi); b += stride) {
    f(p, from_bits(b));
    if (++n % kStretch == 0) p.report(stretch++);
  }
  p.report(stretch);
}

}  // namespace

int main(int argc, char** argv) {
  const uint32_t stride = argc > 1 ? static_cast<uint32_t>(std::atol(argv[1])) : 1;

  // The uniform variates: every float from 2^-31 to 1.
  const float lowest = 4.656613e-10f;
  Probe expone("expone_left");  // -log(u) / ln 1000, kept as a float
  over_floats(expone, lowest, 1.0f, stride, [](Probe& p, float u) {
    const double l = std::log(static_cast<double>(u));
    p.lib.add(l);
    p.kept.add(static_cast<float>(-l / 6.9078001976));
  });
  Probe bilex("bilex");  // 0.5 +- log(x) / 14 for x = 2u folded into (0, 1]
  over_floats(bilex, 2 * lowest, 1.0f, stride, [](Probe& p, float x) {
    const double l = std::log(static_cast<double>(x));
    p.lib.add(l);
    p.kept.add(static_cast<float>(0.5 + l / 14.0));
    p.kept.add(static_cast<float>(0.5 - l / 14.0));
  });
  Probe beta("beta");  // u^5, kept as a float
  over_floats(beta, lowest, 1.0f, stride, [](Probe& p, float u) {
    const double v = std::pow(static_cast<double>(u), 5.0);
    p.lib.add(v);
    p.kept.add(static_cast<float>(v));
  });

  // Curves at every fraction t / total that a float time can give: every
  // float fraction from 2^-40 to 1, each curve that calls the library, and
  // start and end values of several sizes.
  const double values[] = {0.3, 0.5, 1.7, 2.5, 3.99, 7.0};
  Probe curves("curves");
  over_floats(curves, 1e-12f, 1.0f, stride * 4, [&](Probe& p, float f) {
    const double d = static_cast<double>(f);
    p.lib.add(std::sin(d * 1.5707963267948966));
    p.lib.add(std::pow(d, 0.5));
    for (float end : {1.0f, 100.0f, 127.0f, -3.5f, 32000.0f}) {
      p.kept.add(sorvel::tplot_val(f, 1.0f, 0.0f, end, 4, 1.0));
      p.kept.add(sorvel::tplot_val(f, 1.0f, 0.25f, end, 5, 1.0));
      p.kept.add(sorvel::tplot_val(f, 1.0f, 60.0f, end, 2, 1.0));
    }
    const double v = values[bits_of(f) % 6];
    p.lib.add(std::pow(d, v));
    p.kept.add(sorvel::tplot_val(f, 1.0f, 10.0f, 90.0f, 3, v));
  });
  // Curves over whole blocks of events: index / (count - 1).
  Probe events("curves_by_event");
  long stretch = 0;
  for (unsigned count = 2; count <= 3000; ++count) {
    for (unsigned i = 0; i < count; ++i)
      for (unsigned curve = 2; curve <= 5; ++curve)
        events.kept.add(sorvel::pplot_val(i, count, -50.0f, 1000.0f, curve, values[count % 6]));
    if (count % 500 == 0) events.report(stretch++);
  }
  events.report(stretch);

  // Pitch and amplitude conversions.
  Probe hz("cpc_to_hz");  // every float pitch from 0 to 256, and the negative ones down to -128
  over_floats(hz, 1e-6f, 256.0f, stride * 4, [](Probe& p, float c) {
    p.kept.add(sorvel::cpc_to_hz(c));
    p.kept.add(sorvel::cpc_to_hz(-c / 2));
    p.kept.add(sorvel::st_to_tr(c - 128.0f));
  });
  Probe decimal("decimal_inputs");  // pitches and semitones written with three decimals
  stretch = 0;
  for (int k = -300000; k <= 300000; ++k) {
    const float c = static_cast<float>(k) / 1000.0f;
    decimal.kept.add(sorvel::cpc_to_hz(c));
    decimal.kept.add(sorvel::st_to_tr(c));
    decimal.kept.add(sorvel::st_to_tr(c / 10.0f));
    if (k % 100000 == 0) decimal.report(stretch++);
  }
  decimal.report(stretch);
  Probe db("amp_db");  // every amplitude up to 2^27, every decibel value that does not overflow
  stretch = 0;
  for (int a = 0; a < (1 << 27); a += static_cast<int>(stride)) {
    db.kept.add(sorvel::amp_to_db(a));
    if (a % kStretch == 0) db.report(stretch++);
  }
  for (int d = -10000; d <= 186; ++d) db.kept.add(static_cast<uint64_t>(sorvel::db_to_amp(d)));
  db.report(stretch);
  return 0;
}
