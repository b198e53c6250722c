// The floor of the benchmark: writes a Csound score of the same shape as
// Sorvel's for a block of EVENTS events of PFIELDS p-fields, with the same
// number writers and the same widths and decimals, and does nothing else. No
// input is read and no event list is built; the values come from a cheap
// xorshift generator so that the digits vary as they do in a real score.
//
//   bench_floor EVENTS [PFIELDS] OUTFILE
//
// Each line is "\ni1 " then p2 in "%8.3f ", p3 in "%6.3f " and p4 to pN in
// "%9.3f ", as Sorvel writes p-fields that have no output specifier; the score
// ends with "\ne\n".

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "base/numtext.h"

namespace {

struct Xorshift {
  uint64_t s = 0x9E3779B97F4A7C15ull;
  uint64_t next() {
    s ^= s << 13;
    s ^= s >> 7;
    s ^= s << 17;
    return s;
  }
  // A value in [0, 1) with 24 random bits, as a float holds them.
  float unit() { return static_cast<float>(next() >> 40) * (1.0f / 16777216.0f); }
};

int usage() {
  std::fputs("usage: bench_floor EVENTS [PFIELDS] OUTFILE\n", stderr);
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3 && argc != 4) return usage();
  char* end = nullptr;
  const long events = std::strtol(argv[1], &end, 10);
  if (*end || events < 0) return usage();
  long pfields = 8;
  if (argc == 4) {
    pfields = std::strtol(argv[2], &end, 10);
    if (*end || pfields < 3 || pfields > 128) return usage();
  }
  FILE* out = std::fopen(argv[argc - 1], "wb");
  if (!out) {
    std::perror(argv[argc - 1]);
    return 1;
  }

  // Lines are gathered in a large buffer and handed to fwrite in big pieces.
  constexpr size_t kChunk = 1 << 16;
  const size_t line_room = static_cast<size_t>(pfields + 1) * 64 + sorvel::kNumTextMax;
  std::vector<char> buf(kChunk + line_room);
  char* p = buf.data();

  const char head[] = "\n;I-block #1 (i1):";
  for (const char* h = head; *h; ++h) *p++ = *h;

  Xorshift rng;
  float start = 0.0f;
  for (long i = 0; i < events; ++i) {
    *p++ = '\n';
    *p++ = 'i';
    p = sorvel::put_long(p, 1);
    *p++ = ' ';
    p = sorvel::put_fixed(p, static_cast<double>(start), 8, 3);
    *p++ = ' ';
    p = sorvel::put_fixed(p, static_cast<double>(rng.unit() * 2.0f), 6, 3);
    *p++ = ' ';
    for (long k = 4; k <= pfields; ++k) {
      p = sorvel::put_fixed(p, static_cast<double>(rng.unit() * 10000.0f), 9, 3);
      *p++ = ' ';
    }
    start += rng.unit();
    if (static_cast<size_t>(p - buf.data()) >= kChunk) {
      std::fwrite(buf.data(), 1, static_cast<size_t>(p - buf.data()), out);
      p = buf.data();
    }
  }
  const char tail[] = "\n\ne\n";
  for (const char* t = tail; *t; ++t) *p++ = *t;
  std::fwrite(buf.data(), 1, static_cast<size_t>(p - buf.data()), out);
  if (std::fclose(out) != 0) {
    std::perror(argv[argc - 1]);
    return 1;
  }
  return 0;
}
