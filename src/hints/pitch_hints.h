// Hints on pitch names (input type "no"):
//   H01  "#" or "b" written as an accidental (g#, eb4, Bb): "#" is not read
//        and "b" begins another note; the name to write instead (gs, ef4, bf);
//   H02  a quarter-tone mark where the reader does not take it: in "no" mode
//        (only "nox" reads "+" and "-"), or after the octave;
//   H03  an octave above 9, which fails the value.
#pragma once

#include "hints/family.h"

namespace sorvel {

class PitchHints : public Family {
 public:
  using Family::Family;

  void value_read(int line, const char* text, int begin, int end, int IN_TYPE,
                  float value) override;
  void value_failed(int line, const char* text, int begin, int end, int IN_TYPE) override;
};

}  // namespace sorvel
