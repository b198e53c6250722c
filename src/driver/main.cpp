// sorvel: reads one input file and writes a Csound score or a MIDI file.
#include <cstdio>

#include "driver/run_sorvel.h"

int main(int argc, char** argv) {
  // Messages can be many (one line per MIDI event): buffer them.
  static char screen_buffer[1 << 16];
  std::setvbuf(stderr, screen_buffer, _IOFBF, sizeof screen_buffer);
  sorvel::Run run;
  return sorvel::run_sorvel(run, argc, argv);
}
