// The observer seam: the readers say what they read where, and whoever
// listens (the hints checker, the playground) draws its own conclusions. A run
// without an observer (Run::observer is null) makes no call at all, so the
// score, the messages and the speed of sorvel are those of a run without it.
//
// Lines are the run's lines: the input with its include files spliced in,
// numbered from 1, as the messages number them (map them back to files with
// the file_lines calls). Columns are 0-based positions in the line buffer as
// the run holds it, after macros and constants were expanded. A `text`
// argument is valid only during the call.
#pragma once

namespace sorvel {

// Where one weight of a dynamic data function stands: run line and columns
// [begin, end).
struct WeightSpan {
  int line;
  int begin;
  int end;
};

class Observer {
 public:
  virtual ~Observer() = default;

  // --- preprocessing ---------------------------------------------------------
  // From run line `run_line` on, the lines come from `file`, starting at its
  // line `file_line`. Made when the main input starts, when an include file
  // starts, when the including file goes on after the include, and after a
  // line end that the include pass drops ("#in" and a line end).
  virtual void file_lines(int /*run_line*/, const char* /*file*/, int /*file_line*/) {}
  // An include file that could not be opened; `from` names the including file
  // and the directive's "#" stands in run line `line` at column `column` of
  // the including file's line.
  virtual void include_missing(const char* /*name*/, const char* /*from*/, int /*line*/,
                               int /*column*/) {}
  // A line of the input that fills the buffer (2047 characters or more),
  // read as two lines; `line` is the run line that holds its first part.
  virtual void line_split(int /*line*/) {}
  // A preprocessing directive recognised ("define", "undef", "const", "if",
  // "else", "endif", ...): `keyword` is the directive's name, `written` the
  // characters the test accepted, as they stand in the line from column
  // `begin`, `length` of them.
  virtual void directive(int /*line*/, const char* /*keyword*/, const char* /*written*/,
                         int /*begin*/, int /*length*/) {}
  // A macro call ("$NAME", kind 'm') or a constant reference ("~NAME", kind 'c')
  // whose name is not defined; the name stands at columns [begin, end). A call
  // met inside a macro's body is not in the line: begin == end then, the
  // place of the name of the call in the line that led to it.
  virtual void name_missing(int /*line*/, char /*kind*/, const char* /*name*/, int /*begin*/,
                            int /*end*/) {}

  // --- blocks and values -----------------------------------------------------
  // An i-block begun: made when its p2 begins, once the start is converted
  // to seconds. `line` is the line of the header's "i"; then its number among
  // the run's headers (1 for the first), I_NO, the start beat, its start in
  // seconds as the run converted it, and whether the block is counted in
  // beats (else events).
  virtual void block_start(int /*line*/, int /*index*/, int /*I_NO*/, float /*SBEAT*/,
                           double /*STIME*/, bool /*in_beats*/) {}
  // The block's closing "}" read (not made for a block the run gave up on).
  virtual void block_end(int /*line*/) {}
  // A p-field line's head read: its number, input and output type codes.
  virtual void pfield_start(int /*line*/, int /*P_NO*/, int /*IN_TYPE*/, int /*OUT_TYPE*/) {}
  // One value read in the p-field's input type, from a data list or a
  // function's arguments: the line's text, the value's columns [begin, end),
  // the input type code and the value as read.
  virtual void value_read(int /*line*/, const char* /*text*/, int /*begin*/, int /*end*/,
                          int /*IN_TYPE*/, float /*value*/) {}
  // A value that failed in the p-field's input type: it begins at `begin`,
  // and the reader stopped at `end`, where the text stopped fitting the type.
  virtual void value_failed(int /*line*/, const char* /*text*/, int /*begin*/, int /*end*/,
                            int /*IN_TYPE*/) {}
  // A rhythm placed in p2 under the tempo map: where it starts (beats), how
  // long it is (beats) and the seconds the run gave it.
  virtual void rhythm_timed(int /*line*/, int /*begin*/, int /*end*/, float /*beat*/,
                            float /*beats*/, double /*seconds*/) {}
  // The block's end was reached by repeating the last value (or chord) of
  // p-field P_NO, making `count` more events; `value` is the value repeated,
  // as read, `one_group` says whether the data list gave only that one value
  // or chord, and `in_beats` whether the block is counted in beats (else
  // events).
  virtual void block_filled(int /*line*/, int /*P_NO*/, float /*value*/, long /*count*/,
                            bool /*one_group*/, bool /*in_beats*/) {}
  // Weights that do not add up to 1, raised on run line `line` (its text
  // `text`): their values in order, and where each was written.
  virtual void weights_failed(int /*line*/, const char* /*text*/, const float* /*weights*/,
                              const WeightSpan* /*at*/, int /*count*/) {}

  // --- writing ---------------------------------------------------------------
  // One MIDI note written: the block's number in the file (1 the first), the
  // exact start in seconds, the tick it was written at, the key and velocity
  // as written (bytes), and the values they came from as the block held
  // them: p5 (before it was folded modulo 128) and p4 (an amplitude, which
  // 127/32767 scales to the velocity before it is cut to a byte).
  virtual void midi_note(int /*block*/, double /*seconds*/, unsigned long /*tick*/, int /*key*/,
                         int /*velocity*/, float /*key_value*/, float /*velocity_value*/) {}
  // A block the MIDI file does not hold: the first block when it is all
  // rests, and every block after the first (the run stops reading after the
  // first; with an observer it reads on for their headers only). `line` is
  // the line of the header's "i", `block` its number among the run's headers.
  virtual void midi_block_left_out(int /*line*/, int /*block*/, int /*I_NO*/) {}

  // --- messages --------------------------------------------------------------
  // A warning or an error as the run reports it: its number, the line and the
  // caret's column (line 0: none), and the line's text (may be empty).
  virtual void warning(int /*number*/, int /*line*/, const char* /*text*/, int /*pos*/) {}
  virtual void error(int /*number*/, int /*line*/, const char* /*text*/, int /*pos*/) {}
};

}  // namespace sorvel
