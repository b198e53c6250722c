#include "output/units.h"

#include <cmath>
#include <cstdint>

#include "base/power.h"
#include "base/rounding.h"
#include "base/x86_int.h"

namespace sorvel {

namespace {

constexpr double kHzOfPitch0 = 16.35159783;   // C of octave 0
constexpr double kDbFactor = 0.11512925;      // ln(10) / 20
constexpr double kSemitone = 1.059463094359;  // the twelfth root of 2
constexpr double kOctaveOffset = 4.0;         // pitch 0 is octave 4 in pch and oct

// FFT sizes by index: 256 doubled `index` times, 0 to 7.
constexpr int kFftSizes[] = {256, 512, 1024, 2048, 4096, 8192, 16384, 32768};

// The octave of a pitch: its truncated value divided by 12, toward zero.
int32_t octave_of(float c) { return trunc_i32(static_cast<double>(c)) / 12; }

}  // namespace

float cpc_to_pch(float c) {
  float pc = mod(c, 12.0f) / 100.0f;
  double sum = static_cast<double>(octave_of(c)) + kOctaveOffset + static_cast<double>(pc);
  return static_cast<float>(sum);
}

float cpc_to_oct(float c) {
  float pc = mod(c, 12.0f) / 12.0f;
  double sum = static_cast<double>(octave_of(c)) + kOctaveOffset + static_cast<double>(pc);
  return static_cast<float>(sum);
}

float cpc_to_hz(float c) {
  float exponent = static_cast<float>(octave_of(c)) + mod(c, 12.0f) / 12.0f;
  return static_cast<float>(power(2.0, static_cast<double>(exponent)) * kHzOfPitch0);
}

float amp_to_db(int a) { return static_cast<float>(std::log(static_cast<double>(a)) / kDbFactor); }

int db_to_amp(int d) { return trunc_i32(std::exp(static_cast<double>(d) * kDbFactor)); }

float st_to_tr(float s) { return static_cast<float>(power(kSemitone, static_cast<double>(s))); }

// The reader admits indices 0 to 7 only; anything else is held to that range.
int cpc_to_bin(float c, int index, unsigned SRATE) {
  if (index < 0) index = 0;
  if (index > 7) index = 7;
  float width = static_cast<float>(SRATE) / static_cast<float>(kFftSizes[index]);
  return Round(cpc_to_hz(c) / width);
}

}  // namespace sorvel
