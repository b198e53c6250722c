// wav_level: reads the samples of a WAV file and tells how loud it is.
//
//   wav_level [-min DBFS] FILE.wav
//
// Prints one line: the number of frames and channels, the length in
// seconds, the peak and the RMS level in dB relative to full scale (a full
// scale sine has an RMS level of -3 dBFS). Exit status 0 when the RMS level
// is at least DBFS (-60 unless given), 1 when the file is quieter (silent) or
// cannot be read as a WAV file of 16, 24 or 32-bit integer or 32-bit float
// samples. Csound writes 16-bit integer samples unless told otherwise.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

uint32_t le32(const unsigned char* p) {
  return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}

uint16_t le16(const unsigned char* p) { return uint16_t(p[0] | p[1] << 8); }

struct Format {
  unsigned channels = 0;
  unsigned rate = 0;
  unsigned bits = 0;
  bool is_float = false;
};

// One sample, scaled so that full scale is 1.0.
double sample_at(const unsigned char* p, const Format& f) {
  switch (f.bits) {
    case 16:
      return int16_t(le16(p)) / 32768.0;
    case 24: {
      int32_t v = int32_t(uint32_t(p[0]) << 8 | uint32_t(p[1]) << 16 | uint32_t(p[2]) << 24);
      return (v >> 8) / 8388608.0;
    }
    default: {  // 32
      uint32_t u = le32(p);
      if (f.is_float) {
        float x;
        std::memcpy(&x, &u, sizeof x);
        return x;
      }
      return int32_t(u) / 2147483648.0;
    }
  }
}

int fail(const char* name, const char* why) {
  std::printf("%s: %s\n", name, why);
  return 1;
}

double to_db(double x) { return x > 0 ? 20.0 * std::log10(x) : -HUGE_VAL; }

}  // namespace

int main(int argc, char** argv) {
  double min_db = -60.0;
  int arg = 1;
  if (argc == 4 && std::strcmp(argv[1], "-min") == 0) {
    min_db = std::atof(argv[2]);
    arg = 3;
  }
  if (arg != argc - 1) {
    std::fprintf(stderr, "usage: wav_level [-min DBFS] FILE.wav\n");
    return 2;
  }
  const char* name = argv[arg];
  FILE* in = std::fopen(name, "rb");
  if (!in) return fail(name, "cannot be opened");
  std::vector<unsigned char> bytes;
  unsigned char block[65536];
  size_t got;
  while ((got = std::fread(block, 1, sizeof block, in)) > 0) bytes.insert(bytes.end(), block, block + got);
  std::fclose(in);

  if (bytes.size() < 12 || std::memcmp(&bytes[0], "RIFF", 4) != 0 ||
      std::memcmp(&bytes[8], "WAVE", 4) != 0)
    return fail(name, "not a RIFF WAVE file");

  // Walk the chunks: "fmt " describes the samples, "data" holds them.
  Format format;
  const unsigned char* data = nullptr;
  size_t data_size = 0;
  size_t at = 12;
  while (at + 8 <= bytes.size()) {
    const unsigned char* chunk = &bytes[at];
    size_t size = le32(chunk + 4);
    size_t body = at + 8;
    if (size > bytes.size() - body) size = bytes.size() - body;  // a cut file: read what is there
    if (std::memcmp(chunk, "fmt ", 4) == 0 && size >= 16) {
      unsigned tag = le16(chunk + 8);
      if (tag == 0xFFFE && size >= 40) tag = le16(chunk + 8 + 24);  // extensible: the subformat
      format.channels = le16(chunk + 10);
      format.rate = le32(chunk + 12);
      format.bits = le16(chunk + 22);
      format.is_float = tag == 3;
      if (tag != 1 && tag != 3) return fail(name, "samples neither integer nor float");
    } else if (std::memcmp(chunk, "data", 4) == 0) {
      data = chunk + 8;
      data_size = size;
    }
    at = body + size + (size & 1);
  }
  if (format.channels == 0 || format.rate == 0) return fail(name, "no \"fmt \" chunk");
  bool bits_ok = format.is_float ? format.bits == 32
                                 : format.bits == 16 || format.bits == 24 || format.bits == 32;
  if (!bits_ok) return fail(name, "unsupported sample size");
  if (!data) return fail(name, "no \"data\" chunk");

  size_t width = format.bits / 8;
  size_t frames = data_size / (width * format.channels);
  double peak = 0.0;
  double sum_squares = 0.0;
  for (size_t i = 0; i < frames * format.channels; ++i) {
    double x = sample_at(data + i * width, format);
    if (std::fabs(x) > peak) peak = std::fabs(x);
    sum_squares += x * x;
  }
  double rms = frames ? std::sqrt(sum_squares / double(frames * format.channels)) : 0.0;
  std::printf("%s: %zu frames, %u channels, %.2f s, peak %.1f dBFS, RMS %.1f dBFS\n", name, frames,
              format.channels, double(frames) / format.rate, to_db(peak), to_db(rms));
  if (frames == 0 || to_db(rms) < min_db) {
    std::printf("%s: silent (RMS below %.1f dBFS)\n", name, min_db);
    return 1;
  }
  return 0;
}
