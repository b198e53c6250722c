<CsoundSynthesizer>
; inside-csound.csd -- Sorvel as Csound's score generator.
;
; The score section below is not a Csound score but Sorvel input: the
; attribute bin="sorvel" makes Csound write the section to a file, run
;     sorvel <that file> <a new score file>
; and play the score that Sorvel writes. Sorvel must be on the PATH.
;
; What to listen for: a looping arpeggio on a c major chord, eighth, eighth,
; quarter, at 100 beats a minute, each note a little louder or softer.
;
; Run it:  csound inside-csound.csd
;          (writes the sound file inside-csound.wav; to play it live on the
;          sound card instead:  csound -odac inside-csound.csd)
<CsOptions>
-W -o inside-csound.wav -d
</CsOptions>
<CsInstruments>
sr = 44100
ksmps = 32
nchnls = 2
0dbfs = 32768

giTone ftgen 0, 0, 8192, 10, 1, .3, .1

; p4 amplitude (0 to 32768), p5 pitch as octave.pitch-class (8.00 = middle c)
instr 1
  aenv linen p4, .01, p3, .1
  asig poscil aenv, cpspch(p5), giTone
  outs asig, asig
endin
</CsInstruments>
<CsScore bin="sorvel">
; Sorvel input from here to the end of the section.
te(100)                        ; 100 beats a minute

i1 = 5 0 8 {                   ; instrument 1, 5 p-fields, 8 beats
  p2 rh < 8 8 4 >              ; eighth, eighth, quarter, round and round
  p3 .9                        ; each note sounds for 90% of its rhythm
  p4 db ra(T 1 [t 70 80])      ; 70 to 80 dB, most often near 75
  p5(op) no < c4 e g c5 g4 e > ; up and down the chord, as Csound pch
}
</CsScore>
</CsoundSynthesizer>
