#include "base/tempo_map.h"

#include <algorithm>

namespace sorvel {

TempoMap::TempoMap()
    : TEMPO_LIST{TempoDef{0.0f, 60.0f, 0.0f, 60.0f, 1.0f, 0.0f}}, TOT_TEMPOS(1), tempo_reach{0.0f} {}

void TempoMap::replace_first(const TempoDef& def) {
  TEMPO_LIST[0] = def;
  changed(0);
}

void TempoMap::add(const TempoDef& def) {
  TEMPO_LIST.push_back(def);
  tempo_reach.push_back(0.0f);
  ++TOT_TEMPOS;
  changed(TOT_TEMPOS - 1);
}

void TempoMap::changed(int index) {
  const size_t i = static_cast<size_t>(index);
  if (index >= 1)
    tempo_reach[i] = index > 1 ? std::max(tempo_reach[i - 1], TEMPO_LIST[i].Stime) : TEMPO_LIST[i].Stime;
  // The record's own pair and the pair it leads may have changed.
  for (int k : {index, index + 1}) {
    if (k < 1 || k >= TOT_TEMPOS) continue;
    const bool conflict = TEMPO_LIST[static_cast<size_t>(k) - 1].Etime > TEMPO_LIST[static_cast<size_t>(k)].Stime;
    const auto at = std::lower_bound(tempo_conflicts.begin(), tempo_conflicts.end(), k);
    const bool listed = at != tempo_conflicts.end() && *at == k;
    if (conflict && !listed)
      tempo_conflicts.insert(at, k);
    else if (!conflict && listed)
      tempo_conflicts.erase(at);
  }
}

}  // namespace sorvel
