#include "output/writers.h"

#include <cstdint>
#include <string>

#include "base/catalog.h"
#include "output/csound.h"
#include "output/midi.h"

namespace sorvel {

int CsoundWriter::take_block(const FinishedBlock& b) {
  Block& block = block_;
  if (!block.note_list.handle) return 0;
  std::string head = "\n;I-block #" + std::to_string(b.number) + " (i" +
                     std::to_string(block.I_NO) + "):";
  std::fputs(head.c_str(), run_.fout);
  print_csound(run_, block, run_.fout);
  return 0;
}

int MidiWriter::take_block(const FinishedBlock&) {
  Block& block = block_;
  if (block.note_list.handle && block.MAX_PFIELDS < 5) return kErrPfieldsMismatchHeader;
  uint32_t track_bytes = 0;
  if (List2MIDI(run_, block, track_bytes)) {
    const Event* last = block.note_list.handle;
    PutMidiHeader(run_.fout, 2);
    PutTrack1(run_.fout, last->start + last->dur + 1.0f);
    WriteTrack(run_.fout, block.note_list, track_bytes);
  }
  return kOk;
}

}  // namespace sorvel
