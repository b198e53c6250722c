// Conversions of p-field values for the score: chromatic pitch (semitones
// from C of octave 0; 48 is middle C) to the notations Csound reads.
#pragma once

namespace sorvel {

float cpc_to_pch(float c);   // octave point pitch class (48 -> 8.00)
float cpc_to_oct(float c);   // octave point decimal (54 -> 8.5)
float cpc_to_hz(float c);    // frequency (57 -> 440)
float amp_to_db(int a);      // amplitude to decibels
int db_to_amp(int d);        // decibels to amplitude
float st_to_tr(float s);     // semitones to frequency ratio
int cpc_to_bin(float c, int index, unsigned SRATE);  // FFT bin of a pitch

}  // namespace sorvel
