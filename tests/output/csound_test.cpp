#include "output/csound.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

namespace sorvel {
namespace {

// Everything a stream received, from its start.
std::string contents(FILE* f) {
  std::fflush(f);
  std::rewind(f);
  std::string s;
  char buf[4096];
  size_t n;
  while ((n = std::fread(buf, 1, sizeof buf, f)) > 0) s.append(buf, n);
  return s;
}

std::string format(const char* fmt, double v) {
  char buf[128];
  std::snprintf(buf, sizeof buf, fmt, v);
  return buf;
}

// A block of `pfields` p-fields, all written as "re" with 3 decimals (p4 on in
// fields of 9, p2 of 8, p3 of 6), and a
// score stream and message screen that the test can read back.
struct Fixture {
  explicit Fixture(int pfields, int ino = 1) : block(1000) {
    block.I_NO = ino;
    block.MAX_PFIELDS = pfields;
    block.OUTS.assign(static_cast<size_t>(pfields - 1), 14);
    block.RE_FW.assign(static_cast<size_t>(pfields - 1), 3);
    block.FFT_SZ.assign(static_cast<size_t>(pfields - 1), 4);
    score = std::tmpfile();
    screen = std::tmpfile();
    run.screen = screen;
  }
  ~Fixture() {
    std::fclose(score);
    std::fclose(screen);
  }

  // Appends an event at the end of the list; p4 onwards from `values`.
  Event* add(float start, float dur, std::vector<float> values = {}) {
    EventList& list = block.note_list;
    Event* e = list.GetListNode(block.MAX_PFIELDS);
    e->code = 0;
    e->start = start;
    e->dur = dur;
    e->beat = 0.0f;
    for (size_t i = 0; i < values.size(); ++i) e->pf[i] = values[i];
    if (list.handle) {
      e->next = list.handle->next;
      list.handle->next = e;
    } else {
      e->next = e;
    }
    list.handle = e;
    ++block.EVENTS;
    ++block.EVENT_NO;
    return e;
  }

  // Starts of the events left in the list, from the first; checks the ring.
  std::vector<float> starts() const {
    std::vector<float> out;
    const Event* last = block.note_list.handle;
    if (!last) return out;
    const Event* e = last->next;
    for (;;) {
      out.push_back(e->start);
      if (e == last) break;
      e = e->next;
    }
    EXPECT_EQ(e->next, last->next);
    return out;
  }

  int write() { return print_csound(run, block, score); }

  Run run;
  Block block;
  FILE* score;
  FILE* screen;
};

TEST(CsoundWriter, DefaultLine) {
  Fixture f(4);
  f.block.OUTS[2] = 4;  // p4 in hz
  f.add(0.5f, 0.25f, {60.0f});
  EXPECT_EQ(f.write(), 1);
  // 60 is C5: 2^5 * 16.35159783 = 523.25113056, whose nearest float is
  // 523.251159667..., so the frequency reads 523.25116.
  EXPECT_EQ(contents(f.score), "\ni1    0.500  0.250   523.25116 \n");
  EXPECT_EQ(contents(f.screen), "");
}

TEST(CsoundWriter, DecimalsOfStartDurationAndRealFields) {
  Fixture f(6, 12);
  f.block.RE_FW = {0, 7, 7, 0, 3};
  f.add(2.5f, 0.25f, {1.5f, -2.5f, 0.0f});
  f.add(3.5f, 1.0f, {-0.0f, 12345.5f, 1.0f / 3.0f});
  EXPECT_EQ(f.write(), 1);
  // p2: width 5, no decimals (ties to even as printf does); p3: width 10, 7
  // decimals; p4: width 13, 7 decimals; p5: width 6, none; p6: width 9, 3.
  std::string want = "\ni12     2  0.2500000     1.5000000     -2     0.000 ";
  want += "\ni12     4  1.0000000    -0.0000000  12346     0.333 ";
  want += "\n";
  EXPECT_EQ(contents(f.score), want);
}

TEST(CsoundWriter, EachOutputTypeHasItsFormat) {
  Fixture f(11, 3);
  f.block.OUTS = {14, 14, 6, 2, 4, 11, 13, 26, 27, 23};
  f.block.FFT_SZ[8] = 7;  // p10: 32768 points
  f.add(0.0f, 1.0f, {2.5f, 32767.0f, 57.0f, 49.5f, 54.0f, 12.0f, 57.0f, 99.0f});
  EXPECT_EQ(f.write(), 1);
  std::string want = "\ni3    0.000  1.000 ";
  want += "    3 ";                                                          // in: Round(2.5)
  want += format("%4.1f ", static_cast<float>(std::log(32767.0) / 0.11512925));  // db: 90.3
  want += format("%11.5f ", static_cast<float>(std::pow(2.0, 4.75) * 16.35159783));  // hz
  want += " 8.015 ";                                                         // op
  want += "8.50 ";                                                           // od
  want += "2.000000 ";                                                       // tr: 2^(12/12)
  want += "  327 ";                                                          // bn: 440 / (44100/32768)
  want += "\n";                                                              // xx: nothing
  EXPECT_EQ(contents(f.score), want);
  EXPECT_EQ(format("%4.1f ", static_cast<float>(std::log(32767.0) / 0.11512925)), "90.3 ");
}

TEST(CsoundWriter, SkippedFieldLeavesNoTrace) {
  Fixture f(6);
  f.block.OUTS = {14, 14, 14, 23, 6};
  f.add(1.0f, 2.0f, {7.0f, 8.0f, -3.5f});
  EXPECT_EQ(f.write(), 1);
  EXPECT_EQ(contents(f.score), "\ni1    1.000  2.000     7.000    -3 \n");
}

TEST(CsoundWriter, UnknownOutputCodeWritesNothing) {
  Fixture f(5);
  f.block.OUTS = {14, 14, 99, 6};
  f.add(0.0f, 1.0f, {1.0f, 2.0f});
  EXPECT_EQ(f.write(), 1);
  EXPECT_EQ(contents(f.score), "\ni1    0.000  1.000     2 \n");
}

TEST(CsoundWriter, NonFiniteValuesAsPrintfWritesThem) {
  Fixture f(6);
  f.block.OUTS = {14, 14, 2, 2, 14};
  const float nan = std::numeric_limits<float>::quiet_NaN();
  f.add(0.0f, 1.0f, {0.0f, 0.4f, std::numeric_limits<float>::infinity()});
  EXPECT_EQ(f.write(), 1);
  // A db field of amplitude 0 (also 0.4, which rounds to 0) is minus infinity.
  EXPECT_EQ(contents(f.score), "\ni1    0.000  1.000 -inf -inf       inf \n");
  EXPECT_EQ(format("%4.1f", -std::numeric_limits<double>::infinity()), "-inf");

  Fixture g(3);
  g.add(1.0f, nan);  // a NaN duration sounds: it is written, not removed
  EXPECT_EQ(g.write(), 1);
  EXPECT_EQ(contents(g.score), "\ni1    1.000    nan \n");
}

TEST(CsoundWriter, RestsAreRemovedWhereverTheyAre) {
  Fixture f(4);
  f.add(0.0f, 0.0f, {1.0f});   // leading rest (zero)
  f.add(1.0f, -1.0f, {2.0f});  // leading rest (negative)
  f.add(2.0f, 1.0f, {3.0f});
  f.add(3.0f, -0.5f, {4.0f});  // rest in the middle
  f.add(4.0f, 1.0f, {5.0f});
  f.add(5.0f, 0.0f, {6.0f});   // trailing rests
  f.add(6.0f, -0.0f, {7.0f});
  EXPECT_EQ(f.write(), 1);
  EXPECT_EQ(contents(f.score),
            "\ni1    2.000  1.000     3.000 "
            "\ni1    4.000  1.000     5.000 "
            "\n");
  EXPECT_EQ(f.block.EVENTS, 2u);
  EXPECT_EQ(f.block.EVENT_NO, 2);
  EXPECT_EQ(f.block.note_list.size(), 2u);
  EXPECT_EQ(f.starts(), (std::vector<float>{2.0f, 4.0f}));
  EXPECT_EQ(f.block.note_list.handle->start, 4.0f);  // the handle moved back past the trailing rests
  EXPECT_EQ(contents(f.screen), "");
}

TEST(CsoundWriter, SingleSoundingEventAmongRests) {
  Fixture f(3);
  f.add(0.0f, -1.0f);
  f.add(1.0f, 0.5f);
  f.add(2.0f, -1.0f);
  EXPECT_EQ(f.write(), 1);
  EXPECT_EQ(contents(f.score), "\ni1    1.000  0.500 \n");
  EXPECT_EQ(f.starts(), (std::vector<float>{1.0f}));
  EXPECT_EQ(f.block.note_list.handle->next, f.block.note_list.handle);
}

TEST(CsoundWriter, BlockOfRestsOnlyIsReportedAndEmptied) {
  Fixture f(4, 7);
  f.add(0.0f, 0.0f);
  f.add(1.0f, -1.0f);
  f.add(2.0f, -2.0f);
  EXPECT_EQ(f.write(), 0);
  EXPECT_EQ(contents(f.score), "");
  EXPECT_EQ(contents(f.screen),
            "\n\nOops i-block 7 is all rests (check p2=0 and p3 != 400+n OR 1000+n?)! ");
  EXPECT_EQ(f.block.note_list.handle, nullptr);
  EXPECT_EQ(f.block.EVENTS, 0u);
  EXPECT_EQ(f.block.EVENT_NO, 0);
}

TEST(CsoundWriter, EmptyListWritesNothing) {
  Fixture f(4);
  EXPECT_EQ(f.write(), 0);
  EXPECT_EQ(contents(f.score), "");
  EXPECT_EQ(contents(f.screen), "");
}

}  // namespace
}  // namespace sorvel
