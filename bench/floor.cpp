// The floor of the benchmark: writes a Csound score of the same shape as
// Sorvel's for a block of EVENTS events of PFIELDS p-fields, with the same
// widths and decimals, and does nothing else. No input is read and no event
// list is built; the values come from a cheap xorshift generator so that the
// digits vary as they do in a real score.
//
//   bench_floor [--own] EVENTS [PFIELDS] OUTFILE
//
// Each line is "\ni1 " then p2 in "%8.3f ", p3 in "%6.3f " and p4 to pN in
// "%9.3f ", as Sorvel writes p-fields that have no output specifier; the score
// ends with "\ne\n". Lines are gathered in a large buffer and handed to fwrite
// in big pieces.
//
// The numbers are written with std::to_chars (fixed notation, then padded to
// the width): the standard library's fastest exact way to write them, and the
// cost a score writer cannot avoid. With --own they are written with Sorvel's
// own number writer instead (put_fixed, put_long), which is faster still; that
// floor is what is left when all Sorvel does besides writing is taken away.

#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
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

// "%*.*f" with std::to_chars: the digits into a small buffer, then blanks and
// digits into the line.
char* to_chars_fixed(char* p, double v, int width, int prec) {
  char digits[64];
  const auto res = std::to_chars(digits, digits + sizeof digits, v, std::chars_format::fixed, prec);
  const int len = static_cast<int>(res.ptr - digits);
  if (len < width) {
    std::memset(p, ' ', static_cast<size_t>(width - len));
    p += width - len;
  }
  std::memcpy(p, digits, static_cast<size_t>(len));
  return p + len;
}

char* to_chars_long(char* p, long v) { return std::to_chars(p, p + 24, v).ptr; }

struct Writer {
  char* (*fixed)(char*, double, int, int);
  char* (*whole)(char*, long);
};

constexpr Writer kToChars{to_chars_fixed, to_chars_long};
constexpr Writer kOwn{[](char* p, double v, int width, int prec) { return sorvel::put_fixed(p, v, width, prec); },
                      [](char* p, long v) { return sorvel::put_long(p, v); }};

int usage() {
  std::fputs("usage: bench_floor [--own] EVENTS [PFIELDS] OUTFILE\n", stderr);
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  Writer w = kToChars;
  if (argc > 1 && std::strcmp(argv[1], "--own") == 0) {
    w = kOwn;
    --argc;
    ++argv;
  }
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
    p = w.whole(p, 1);
    *p++ = ' ';
    p = w.fixed(p, static_cast<double>(start), 8, 3);
    *p++ = ' ';
    p = w.fixed(p, static_cast<double>(rng.unit() * 2.0f), 6, 3);
    *p++ = ' ';
    for (long k = 4; k <= pfields; ++k) {
      p = w.fixed(p, static_cast<double>(rng.unit() * 10000.0f), 9, 3);
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
