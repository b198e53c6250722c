#include "output/convert.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace sorvel {
namespace {

TEST(PitchNotation, OctavePointPitchClass) {
  EXPECT_EQ(cpc_to_pch(48.0f), 8.0f);
  EXPECT_EQ(cpc_to_pch(60.0f), 9.0f);
  // 4 + 4.0 + 1.5f / 100 in double, then to float.
  EXPECT_EQ(cpc_to_pch(49.5f), static_cast<float>(8.0 + static_cast<double>(1.5f / 100.0f)));
  EXPECT_FLOAT_EQ(cpc_to_pch(49.5f), 8.015f);
  EXPECT_FLOAT_EQ(cpc_to_pch(61.0f), 9.01f);
  EXPECT_FLOAT_EQ(cpc_to_pch(59.0f), 8.11f);
}

TEST(PitchNotation, OctavePointDecimal) {
  EXPECT_EQ(cpc_to_oct(48.0f), 8.0f);
  EXPECT_EQ(cpc_to_oct(54.0f), 8.5f);
  EXPECT_EQ(cpc_to_oct(51.0f), 8.25f);
}

// The octave comes from the truncated pitch, toward zero, and the pitch class
// keeps the sign of the pitch: -1 is octave 0 less one semitone, not octave -1.
TEST(PitchNotation, NegativePitchesKeepANegativePitchClass) {
  EXPECT_EQ(cpc_to_pch(-1.0f), static_cast<float>(4.0 + static_cast<double>(-1.0f / 100.0f)));
  EXPECT_FLOAT_EQ(cpc_to_pch(-1.0f), 3.99f);
  EXPECT_EQ(cpc_to_oct(-1.0f), static_cast<float>(4.0 + static_cast<double>(-1.0f / 12.0f)));
  EXPECT_NEAR(cpc_to_oct(-1.0f), 3.9166667, 1e-6);
  // -13: octave -1, pitch class -1.
  EXPECT_FLOAT_EQ(cpc_to_pch(-13.0f), 2.99f);
  // -0.5 truncates to octave 0; the half semitone stays.
  EXPECT_FLOAT_EQ(cpc_to_pch(-0.5f), 3.995f);
}

TEST(Frequency, TwelveToneEqualTemperamentFromC0) {
  EXPECT_EQ(cpc_to_hz(0.0f), static_cast<float>(16.35159783));
  EXPECT_EQ(cpc_to_hz(48.0f), static_cast<float>(16.0 * 16.35159783));
  EXPECT_NEAR(cpc_to_hz(48.0f), 261.6256, 1e-4);
  EXPECT_FLOAT_EQ(cpc_to_hz(57.0f), 440.0f);
  // The exponent is single precision: 4 + 9/12 as a float.
  EXPECT_EQ(cpc_to_hz(57.0f),
            static_cast<float>(std::pow(2.0, static_cast<double>(4.0f + 9.0f / 12.0f)) * 16.35159783));
  EXPECT_FLOAT_EQ(cpc_to_hz(-12.0f), static_cast<float>(16.35159783 / 2.0));
}

TEST(Frequency, FftBinOfAPitch) {
  EXPECT_EQ(cpc_to_bin(57.0f, 4, 44100), 41);  // 440 / (44100 / 4096) = 40.87
  EXPECT_EQ(cpc_to_bin(57.0f, 0, 44100), 3);   // 440 / 172.27 = 2.55
  EXPECT_EQ(cpc_to_bin(57.0f, 6, 44100), 163);  // 440 / 2.6917 = 163.47
  EXPECT_EQ(cpc_to_bin(57.0f, 7, 44100), 327);  // 32768 points: 440 / 1.3458 = 326.94
  EXPECT_EQ(cpc_to_bin(57.0f, 4, 48000), 38);   // 440 / 11.71875 = 37.55
  EXPECT_EQ(cpc_to_bin(0.0f, 0, 44100), 0);
}

TEST(Decibels, AmplitudeToDecibels) {
  EXPECT_EQ(amp_to_db(1), 0.0f);
  EXPECT_EQ(amp_to_db(32767), static_cast<float>(std::log(32767.0) / 0.11512925));
  EXPECT_NEAR(amp_to_db(10), 20.0, 1e-5);
  EXPECT_NEAR(amp_to_db(32767), 90.309, 1e-3);
  float zero = amp_to_db(0);
  EXPECT_TRUE(std::isinf(zero) && zero < 0);
  EXPECT_TRUE(std::isnan(amp_to_db(-1)));
}

TEST(Decibels, DecibelsToAmplitudeTruncates) {
  EXPECT_EQ(db_to_amp(0), 1);
  EXPECT_EQ(db_to_amp(-6), 0);  // 0.501
  EXPECT_EQ(db_to_amp(6), 1);   // 1.995
  // 20 * 0.11512925 falls just short of ln 10: 9.99999...
  EXPECT_EQ(db_to_amp(20), 9);
  EXPECT_EQ(db_to_amp(40), 99);
  EXPECT_EQ(db_to_amp(90), 31622);  // 31622.7
  EXPECT_EQ(db_to_amp(1000), std::numeric_limits<int>::min());  // no integer holds it
}

TEST(Transposition, SemitonesToRatio) {
  EXPECT_EQ(st_to_tr(0.0f), 1.0f);
  EXPECT_FLOAT_EQ(st_to_tr(12.0f), 2.0f);
  EXPECT_FLOAT_EQ(st_to_tr(-12.0f), 0.5f);
  EXPECT_FLOAT_EQ(st_to_tr(7.0f), 1.4983071f);
}

}  // namespace
}  // namespace sorvel
