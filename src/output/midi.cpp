#include "output/midi.h"

namespace sorvel {

int List2MIDI(Run&, Block& block, uint32_t& size) {
  size = 0;
  if (!block.note_list.handle) return 0;
  return 0;
}

void PutMidiHeader(FILE*, int) {}
void PutTrack1(FILE*, float) {}
void WriteTrack(FILE*, EventList&, uint32_t) {}

}  // namespace sorvel
