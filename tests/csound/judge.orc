; judge.orc -- the orchestra that plays the examples in tests.
;
; Every example in examples/ that writes a Csound score is played with this
; orchestra, headless (csound -n), so that Csound itself judges the score:
; each instrument reads exactly the p-fields its examples write, so a score
; line with too few or too many p-fields draws Csound's p-field warning.
;
;   instr 1  p4 amplitude, p5 pitch as octave.pitch-class (8.00 = middle c)
;   instr 2  p4 amplitude, p5 pitch as octave.pitch-class, a plucked sound
;   instr 3  p4 amplitude, p5 frequency in Hz
;   instr 4  p4 loudness in dB, p5 pitch in semitones (48 = middle c),
;            p6 pitch class 0 to 11 (brightness), p7 attack in seconds
;   instr 5  p4 amplitude, p5 frequency in Hz, p6 pan (0 left, 1 right)

sr = 44100
ksmps = 32
nchnls = 2
0dbfs = 32768

giSine ftgen 0, 0, 8192, 10, 1
giSaw  ftgen 0, 0, 8192, 10, 1, .5, .33, .25, .2, .17, .14, .12

instr 1
  aenv linen p4, .01, p3, .05
  asig poscil aenv, cpspch(p5), giSine
  outs asig, asig
endin

instr 2
  aenv expsegr 1, p3, .001, .05, .001
  asig poscil aenv * p4, cpspch(p5), giSaw
  outs asig, asig
endin

instr 3
  aenv linen p4, .02, p3, .1
  asig poscil aenv, p5, giSine
  outs asig, asig
endin

instr 4
  iatt limit p7, .001, p3 * .5
  aenv linen ampdb(p4), iatt, p3, .05
  ibright = 1 + p6 / 11
  asig poscil aenv, cpsmidinn(p5 + 12) * ibright / ibright, giSaw
  outs asig, asig
endin

instr 5
  aenv linen p4, .005, p3, .01
  asig poscil aenv, p5, giSine
  outs asig * (1 - p6), asig * p6
endin
