// Reading one value in the current input type: real, integer, rhythm code,
// dB, pitch name, octave.pitch-class, or "z" for the last value in the types
// that have it ("re", "rh", "db", "op").
#pragma once

#include "pfield/state.h"

namespace sorvel {

// Reads one value in IN_TYPE at the reader's position. 1 on success, 0 on a
// syntax or range fault.
int get_input_type(Ctx& c, float& value);

// Whether `ch` may begin a value of the current input type in a data list.
int in_limits(const Ctx& c, int ch);

// 1 when the character is "z" or "Z".
int is_last_variable(const char* buffer, int pos);

// The readers of the input types.
int get_rdc(Source& src, float& value);                      // rhythm code
int get_db(Source& src, float& value);                       // dB to amplitude
int get_pitch(Ctx& c, float& value);                         // pitch name
int get_oct_pc(Source& src, int MKMIDI, float& value);       // octave.pitch-class

}  // namespace sorvel
