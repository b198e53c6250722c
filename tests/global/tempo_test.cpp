// The tempo map has no fixed number of records, and finds the record of a
// beat and lists its conflicts without walking the whole map: the answers
// must be those of the plain walks below.
#include "global/tempo.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>

#include "support/text_input.h"

namespace sorvel {
namespace {

TEST(TempoMap, TableHasNoFixedLimit) {
  // Sixty one-beat changes from 60 to 61 at beats 1 to 60, each on its own line.
  std::string text;
  for (int k = 1; k <= 60; ++k) text += "te(" + std::to_string(k) + " " + std::to_string(k) + " 60 61)\n";
  testing::TextInput in(text);
  while (in.src.get_buff() == 0) {
    in.src.pos = 2;
    ASSERT_EQ(get_tempo_change(in.src), 0) << in.src.line;
  }
  ASSERT_EQ(in.run.tempo_map.count(), 61);
  EXPECT_EQ(in.run.tempo_map[60].Stime, 60.0f);
  EXPECT_EQ(find_tempo(in.run, 60.5f), 61.0f);
}

// The walks the map stands for: from record 0, step on while the beat is at
// or past the record's start and the next record starts no later than the
// beat; and a conflict wherever a record starts before the one ahead ends.
int walk_to_record(const Run& run, float beat) {
  int i = 0;
  const TempoMap& map = run.tempo_map;
  while (beat >= map[i].Stime && i + 1 < map.count() && map[i + 1].Stime <= beat)
    ++i;
  return i;
}

std::string walk_conflicts(const Run& run) {
  std::string out;
  float prev_end = 0.0f;
  const TempoMap& map = run.tempo_map;
  for (int i = 0; i < map.count(); ++i) {
    if (prev_end > map[i].Stime)
      out += "\nWARNING: Tempo #" + std::to_string(i + 1) + " conflicts with previous tempo's end time!";
    prev_end = map[i].Etime;
  }
  return out;
}

TEST(TempoMap, RecordsAndConflictsAreThoseOfTheWalks) {
  std::mt19937 gen(77);
  for (int round = 0; round < 40; ++round) {
    // Changes in any order: overlapping, touching, out of order, some from
    // beat 0 (which replace record 0), some single tempos.
    std::string text;
    auto beat = [&] { return std::to_string(static_cast<int>(gen() % 40)) + "." + std::to_string(gen() % 4 * 25); };
    for (int k = 0; k < 60; ++k) {
      switch (gen() % 8) {
        case 0: text += "te(90)\n"; break;
        case 1: text += "te(0 " + beat() + " 60 120)\n"; break;
        default: {
          const float s = std::stof(beat()), e = s + static_cast<float>(gen() % 12) * 0.5f;
          text += "te(" + std::to_string(s) + " " + std::to_string(e) + " 70 80)\n";
        }
      }
    }
    testing::TextInput in(text);
    std::string expected;
    while (in.src.get_buff() == 0) {
      in.src.pos = 2;
      ASSERT_EQ(get_tempo_change(in.src), 0) << in.src.line;
      expected += walk_conflicts(in.run);
      for (int b = 0; b < 50; ++b) {
        const float at = static_cast<float>(gen() % 1800) * 0.025f - 1.0f;
        ASSERT_EQ(curtempo(in.run, at), walk_to_record(in.run, at)) << "beat " << at << ", line " << in.src.line;
      }
      ASSERT_EQ(curtempo(in.run, NAN), 0);
    }
    // Every line's warnings together (the numbered warnings of fast and slow
    // tempos do not arise at 60 to 120).
    ASSERT_EQ(in.messages(), expected) << "round " << round;
  }
}

}  // namespace
}  // namespace sorvel
