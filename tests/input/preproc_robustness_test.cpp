// Random text made of the preprocessors' own characters, read the way a
// g-block reads it: whatever comes, reading ends (at the end of input or with
// an error number) and never runs off the line buffer.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "input/preproc_support.h"

namespace sorvel {
namespace {

using testing::TextInput;

// A small fixed generator, so that a failure can be replayed.
struct Lcg {
  uint64_t s;
  uint32_t next() {
    s = s * 6364136223846793005ull + 1442695040888963407ull;
    return static_cast<uint32_t>(s >> 33);
  }
};

std::string random_text(Lcg& g) {
  static const std::string kPieces[] = {
      "#define ", "#undef ", "#const ", "#if(", "#endif", "#if(0)\n", "#", "$", "~", "~[",
      "]", "(", ")", "'", ";", "/*", "*/", ">", "@", "@1", "?", "A", "B", "M", "x",
      "1", "0", ".5", " ", "\n", "+", "%", std::string(1, '\0'), "\xff", "\t", "$A", "$M(", "~A",
      "#define A #$A#\n", "#define M(a'b) #$b$a$b#\n", "#const A 1\n", "#define B ##\n",
  };
  constexpr uint32_t kCount = sizeof kPieces / sizeof kPieces[0];
  std::string text;
  uint32_t n = g.next() % 60;
  for (uint32_t k = 0; k < n; ++k) {
    text += kPieces[g.next() % kCount];
    if (g.next() % 50 == 0) text += std::string(g.next() % 3000, "x;$~#"[g.next() % 5]);
  }
  return text;
}

// Reads the text as a g-block would, handing "#" statements on; returns
// after at most `limit` statements.
int read_through(TextInput& in, int limit) {
  for (int k = 0; k < limit; ++k) {
    int r = testing::statement(in);
    if (r) return r;
  }
  return 0;
}

TEST(PreprocRobustness, RandomTextAlwaysEnds) {
  int runs = 3000;
  if (const char* env = std::getenv("SORVEL_FUZZ_RUNS")) runs = std::atoi(env);
  Lcg g{12345};
  for (int k = 0; k < runs; ++k) {
    std::string text = random_text(g);
    if (text.empty()) continue;
    TextInput in(text);
    in.run.SUPRESS = k % 2;
    int r = read_through(in, 100000);
    EXPECT_NE(r, 0) << "run " << k << " did not end";
    EXPECT_LT(std::string(in.src.buffer).size(), 2048u);
  }
}

}  // namespace
}  // namespace sorvel
