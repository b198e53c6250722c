; examples.orc -- a Csound orchestra that plays every example of this folder.
;
; Turn an example into a score with Sorvel, then let Csound write it to a
; sound file (-W: a WAV file) with this orchestra:
;     sorvel first.sor first.sco
;     csound -W -o first.wav examples.orc first.sco
; (or play it live on the sound card with  csound -odac examples.orc first.sco).
;
; There is one instrument for each p-field layout that the examples write,
; and each reads exactly those p-fields: a score line with too few or too
; many draws Csound's warning. Amplitudes are on the scale 0 to 32768 (0dbfs
; below), the scale of Sorvel's "db" input type: 70 dB is 3162.
;
;   instr 1  p4 amplitude, p5 pitch as octave.pitch-class (8.00 = middle c)
;            a plain sine: first, melody, chords, tempo, variants (lead)
;   instr 2  p4 amplitude, p5 pitch as octave.pitch-class
;            a plucked, fading tone: walk, variants (pad)
;   instr 3  p4 amplitude, p5 frequency in Hz
;            chordcloud
;   instr 4  p4 loudness in dB, p5 pitch in semitones (48 = middle c),
;            p6 pitch class 0 to 11, p7 attack in seconds
;            derived
;   instr 5  p4 amplitude, p5 frequency in Hz, p6 pan (0 left, 1 right)
;            cloud
;
; A new example whose p-fields fit none of these gets an instrument here.

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
  ibright = p6 / 11
  icps = cpsmidinn(p5 + 12)
  asoft poscil aenv * (1 - ibright), icps, giSine
  abright poscil aenv * ibright, icps, giSaw
  outs asoft + abright, asoft + abright
endin

instr 5
  aenv linen p4, .005, p3, .01
  asig poscil aenv, p5, giSine
  outs asig * (1 - p6), asig * p6
endin
