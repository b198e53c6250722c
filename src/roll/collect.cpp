#include "roll/collect.h"

#include <algorithm>
#include <cmath>
#include <deque>

#include "global/tempo.h"
#include "input/commands.h"
#include "output/midi.h"
#include "roll/frame.h"

namespace sorvel {

namespace {

bool has_type(unsigned ins, int code) { return (ins >> code) & 1u; }

}  // namespace

bool holds_semitones(const Block& block, int pno) {
  if (pno < 4 || pno > block.MAX_PFIELDS) return false;
  const size_t k = static_cast<size_t>(pno - 2);
  const int out = block.OUTS[k];
  if (out == CMD_HZ || out == CMD_OP || out == CMD_OD || out == CMD_BN) return true;
  return has_type(block.INS[k], CMD_NO) || has_type(block.INS[k], CMD_OP);
}

bool holds_db(const Block& block, int pno) {
  if (pno < 4 || pno > block.MAX_PFIELDS) return false;
  const size_t k = static_cast<size_t>(pno - 2);
  return block.OUTS[k] == CMD_DB || has_type(block.INS[k], CMD_DB);
}

int default_pitch_pfield(const Block& block) {
  for (int p = 4; p <= block.MAX_PFIELDS; ++p)
    if (holds_semitones(block, p)) return p;
  return block.MAX_PFIELDS >= 4 ? 4 : 0;
}

int default_amp_pfield(const Block& block) {
  for (int p = 4; p <= block.MAX_PFIELDS; ++p)
    if (holds_db(block, p)) return p;
  return 0;
}

int RollSink::take_block(const FinishedBlock& b) {
  const Block& block = b.block;
  roll_.midi = b.run.MKMIDI != 0;
  roll_.SRATE = b.run.SRATE;
  RollBlock rb;
  rb.number = b.number;
  rb.I_NO = block.I_NO;
  rb.MAX_PFIELDS = block.MAX_PFIELDS;
  rb.OUTS = block.OUTS;
  rb.RE_FW = block.RE_FW;
  rb.FFT_SZ = block.FFT_SZ;
  rb.first_note = roll_.notes.size();
  rb.values_at = roll_.values.size();
  if (roll_.midi) {
    rb.semitones = true;
    roll_.blocks.push_back(rb);
    take_midi_events(block);
    return 0;
  }
  rb.pitch = options_.pitch > 0 ? options_.pitch : default_pitch_pfield(block);
  if (rb.pitch > block.MAX_PFIELDS) rb.pitch = 0;
  rb.semitones = holds_semitones(block, rb.pitch);
  rb.amp = options_.amp > 0 ? options_.amp : (options_.amp < 0 ? 0 : default_amp_pfield(block));
  if (rb.amp > block.MAX_PFIELDS) rb.amp = 0;
  rb.amp_db = holds_db(block, rb.amp);
  roll_.blocks.push_back(rb);
  take_score_events(block, roll_.blocks.back());
  return 0;
}

void RollSink::keep_values(const float* values, int count, bool shown) {
  if (roll_.values_dropped) return;
  shown_ += shown;
  if (shown_ > options_.max_notes) {
    roll_.values.clear();
    roll_.values.shrink_to_fit();
    roll_.values_dropped = true;
    return;
  }
  roll_.values.insert(roll_.values.end(), values, values + count);
}

void RollSink::take_score_events(const Block& block, RollBlock& rb) {
  const uint32_t index = static_cast<uint32_t>(roll_.blocks.size() - 1);
  const int count = block.MAX_PFIELDS - 3;
  const size_t need = roll_.notes.size() + block.note_list.size();
  if (need > roll_.notes.capacity()) roll_.notes.reserve(std::max(need, 2 * roll_.notes.capacity()));
  const Event* first = block.note_list.handle->next;
  const Event* e = first;
  do {
    const float* pf = e->pf();
    const float y = rb.pitch ? pf[rb.pitch - 4] : 0.0f;
    const float amp = rb.amp ? pf[rb.amp - 4] : 0.0f;
    roll_.notes.push_back(RollNote{e->start, e->dur, y, amp, index});
    keep_values(pf, count, in_range(roll_.notes.back(), options_));
    ++rb.notes;
    e = e->next;
  } while (e != first);
}

// The list holds note-ons and note-offs in the order of the file. Times are
// the ticks the file holds (each delta truncated on its own, as written);
// a note-off ends the earliest note of its key still sounding, as a player
// of the file would have it.
void RollSink::take_midi_events(const Block& block) {
  const uint32_t index = static_cast<uint32_t>(roll_.blocks.size() - 1);
  RollBlock& rb = roll_.blocks.back();
  std::deque<size_t> sounding[256];
  std::vector<uint64_t> on_tick;
  const size_t base = roll_.notes.size();
  uint64_t tick = 0;
  float previous = 0.0f;
  const Event* first = block.note_list.handle->next;
  const Event* e = first;
  do {
    tick += midi_delta(e->start - previous);
    previous = e->start;
    const int key = midi_data_byte(e->pf()[1]);
    if (e->code == 1) {
      const int velocity = midi_data_byte(e->pf()[0]);
      sounding[key].push_back(roll_.notes.size());
      on_tick.push_back(tick);
      const float seconds = static_cast<float>(static_cast<double>(tick) / 480.0);
      roll_.notes.push_back(RollNote{seconds, 0.0f, static_cast<float>(key),
                                     static_cast<float>(velocity), index});
      const float kv[2] = {static_cast<float>(key), static_cast<float>(velocity)};
      keep_values(kv, 2, true);
      ++rb.notes;
    } else if (!sounding[key].empty()) {
      const size_t n = sounding[key].front();
      sounding[key].pop_front();
      roll_.notes[n].dur =
          static_cast<float>(static_cast<double>(tick - on_tick[n - base]) / 480.0);
    }
    e = e->next;
  } while (e != first);
}

std::vector<double> beat_times(const Run& run, double until, size_t most) {
  std::vector<double> times{0.0};
  double t = 0.0;
  for (size_t b = 0; t <= until && b < most; ++b) {
    t += 60.0 / static_cast<double>(find_tempo(run, static_cast<float>(b)));
    times.push_back(t);
  }
  return times;
}

}  // namespace sorvel
