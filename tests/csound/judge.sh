#!/bin/sh
# judge.sh -- lets Csound (and a MIDI reader) judge what the examples give.
#
#   judge.sh csound SORVEL SOURCE_DIR WAV_LEVEL
#       every examples/*.sor written as a Csound score and rendered to a WAV
#       file by examples/examples.orc, as the README shows
#   judge.sh midi   SORVEL SOURCE_DIR
#       every examples/*.sor written with -m, read by python3-mido
#   judge.sh csd    SORVEL SOURCE_DIR WAV_LEVEL
#       examples/inside-csound.csd run as it stands, with Sorvel as Csound's
#       score generator: it writes its own WAV file
#
# Each example says how to run it in its header, on a line
#     ; Run it:  sorvel [options] NAME.sor NAME.sco
# and is run with exactly those options. Csound must exit with status 0 and
# report no error, no warning (a line with too few or too many p-fields for
# its instrument draws one), no undefined instrument and no sample out of
# range; WAV_LEVEL (the program wav_level) then reads the samples of the
# file it wrote, which must not be silent. Exit status: 0 all good, 1 a
# failure, 77 the tool is missing (the test is then reported as skipped).
set -u
mode=$1
sorvel=$2
src=$3
level=${4:-}
case $sorvel in /*) ;; *) sorvel=$(pwd)/$sorvel ;; esac
case $src in /*) ;; *) src=$(pwd)/$src ;; esac
orc=$src/examples/examples.orc

work=$(mktemp -d "${TMPDIR:-/tmp}/sorvel-judge.XXXXXX") || exit 1
trap 'rm -rf "$work"' EXIT
cp -R "$src/examples/." "$work/"
cd "$work" || exit 1

failed=0
checked=0
fail() { echo "FAIL: $*"; failed=1; }

# The lines of Csound's messages that tell of a fault in the score, or of
# samples clipped in the sound file.
csound_faults() {
  grep -v -E '^[[:space:]]*0 errors in performance|samples out of range:([[:space:]]+0)+[[:space:]]*$' "$1" |
    grep -i -E 'sread|error|warning|undefined|deleted|not found|illegal|unexpected|out of range'
}

run_line() { sed -n 's/^;[[:space:]]*Run it:[[:space:]]*sorvel[[:space:]]*//p' "$1" | head -n 1; }

case $mode in
csound)
  command -v csound >/dev/null 2>&1 || { echo "csound not found: the scores are not played"; exit 77; }
  for f in *.sor; do
    name=${f%.sor}
    line=$(run_line "$f")
    if [ -z "$line" ]; then fail "$f: no \"; Run it:  sorvel ...\" line in its header"; continue; fi
    case " $line " in *" -m "*) continue ;; esac
    opts=" $line"; opts=${opts%% "$f"*}
    # shellcheck disable=SC2086
    if ! "$sorvel" $opts "$f" "$name.sco" >"$name.msg" 2>&1; then
      fail "$f: sorvel failed"; cat "$name.msg"; continue
    fi
    csound -W -o "$name.wav" -d -+msg_color=false "$orc" "$name.sco" >"$name.csound" 2>&1
    status=$?
    checked=$((checked + 1))
    faults=$(csound_faults "$name.csound")
    if [ $status -ne 0 ] || [ -n "$faults" ] || ! grep -q 'new alloc for instr' "$name.csound"; then
      fail "$f: Csound exit status $status"
      echo "$faults" | sort | uniq -c | head -n 20
    elif ! "$level" "$name.wav"; then
      fail "$f: the sound file is silent or unreadable"
    else
      echo "ok: $f ($(grep -c '^i' "$name.sco") notes played)"
    fi
  done
  ;;
midi)
  py=/usr/bin/python3
  if [ ! -x "$py" ] || ! "$py" -c 'import mido' 2>/dev/null; then
    echo "$py with mido not found: the MIDI files are not read"; exit 77
  fi
  for f in *.sor; do
    line=$(run_line "$f")
    case " $line " in *" -m "*) ;; *) continue ;; esac
    name=${f%.sor}
    opts=" $line"; opts=${opts%% "$f"*}
    # shellcheck disable=SC2086
    if ! "$sorvel" $opts "$f" "$name.mid" >"$name.msg" 2>&1; then
      fail "$f: sorvel failed"; cat "$name.msg"; continue
    fi
    checked=$((checked + 1))
    if "$py" - "$name.mid" <<'PY'
import sys, mido
m = mido.MidiFile(sys.argv[1])
assert m.type == 1 and len(m.tracks) == 2 and m.ticks_per_beat == 480, "not format 1, 2 tracks, 480"
sounding, notes = {}, 0
for msg in m.tracks[1]:
    if msg.type == 'note_on' and msg.velocity > 0:
        sounding[msg.note] = sounding.get(msg.note, 0) + 1
        notes += 1
    elif msg.type in ('note_off', 'note_on'):
        assert sounding.get(msg.note, 0) > 0, "note off without a note on: %s" % msg
        sounding[msg.note] -= 1
assert notes > 0, "no notes"
assert not any(sounding.values()), "notes left sounding: %s" % sounding
print("ok: %s (%d notes, %.2f s)" % (sys.argv[1], notes, m.length))
PY
    then :; else fail "$f: the MIDI file does not read as expected"; fi
  done
  ;;
csd)
  command -v csound >/dev/null 2>&1 || { echo "csound not found: the .csd is not played"; exit 77; }
  # As a user runs it: the file's own options say where the sound goes.
  PATH=$(dirname "$sorvel"):$PATH csound -+msg_color=false inside-csound.csd >csd.log 2>&1
  status=$?
  checked=1
  faults=$(csound_faults csd.log)
  if [ $status -ne 0 ] || [ -n "$faults" ]; then
    fail "inside-csound.csd: Csound exit status $status"; cat csd.log
  elif ! grep -q '^Sorvel (' csd.log || ! grep -q 'Global cumulative duration' csd.log; then
    fail "inside-csound.csd: Sorvel did not run as the score generator"; cat csd.log
  elif ! grep -q 'new alloc for instr 1' csd.log; then
    fail "inside-csound.csd: no note was played"; cat csd.log
  elif ! "$level" inside-csound.wav; then
    fail "inside-csound.csd: its sound file is silent or missing"; cat csd.log
  else
    echo "ok: inside-csound.csd ($(grep -c '^B ' csd.log) score events played)"
  fi
  ;;
*)
  echo "usage: judge.sh csound|midi|csd SORVEL SOURCE_DIR [WAV_LEVEL]"; exit 2 ;;
esac

if [ $checked -eq 0 ] && [ $failed -eq 0 ]; then echo "no example to check"; exit 1; fi
exit $failed
