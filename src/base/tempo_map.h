// The tempo map: the run's tempo records in the order they were given, with
// what makes finding the record of a beat and listing the conflicts quick.
// Records change only through replace_first and add, which keep the indexes
// right, so no reader can see them out of step.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace sorvel {

// One tempo definition of the tempo map.
struct TempoDef {
  float Stime;   // beat at which the definition starts
  float Stempo;  // tempo at Stime (beats per minute)
  float Etime;   // beat at which the end tempo is reached
  float Etempo;  // tempo from Etime on
  float Type;    // curve type 0..5 (f e l v s c)
  float Vcurve;  // exponent of curve type 3
};

class TempoMap {
 public:
  // Record 0 is a constant 60 beats per minute.
  TempoMap();

  // Record 0 becomes `def` (a change from beat 0).
  void replace_first(const TempoDef& def);
  // `def` becomes the last record; there is no limit.
  void add(const TempoDef& def);

  int count() const { return TOT_TEMPOS; }
  const TempoDef& operator[](int i) const { return TEMPO_LIST[static_cast<size_t>(i)]; }

  // The record that governs a beat: from record 0, the walk steps to the next
  // record while the beat is at or past the current record's start and the
  // next record starts no later than the beat. A NaN beat stays at record 0.
  int record_at(float beat) const {
    if (TOT_TEMPOS <= 1 || !(beat >= TEMPO_LIST[0].Stime)) return 0;
    const auto from = tempo_reach.begin() + 1;
    return static_cast<int>(std::upper_bound(from, tempo_reach.end(), beat) - from);
  }

  // The records that start before the record ahead of them ends, in order
  // (record 0, after an end of 0, never does).
  const std::vector<int>& conflicts() const { return tempo_conflicts; }

 private:
  void changed(int index);

  std::vector<TempoDef> TEMPO_LIST;
  int TOT_TEMPOS = 0;  // always the size of TEMPO_LIST
  // For each record k from 1 on, the latest start among records 1 to k (entry
  // 0 unused): past record 0 the walk goes on while every start up to the
  // next record is at most the beat, so the record of a beat is the number of
  // reaches at most the beat, found by bisection.
  std::vector<float> tempo_reach;
  std::vector<int> tempo_conflicts;
};

}  // namespace sorvel
