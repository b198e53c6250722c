"""Reads the MIDI files of the test suite with an independent reader.

    /usr/bin/python3 check_midi.py SORVEL SOURCE_DIR

Runs SORVEL -m on a set of inputs (every case of tests/cases/midi, the MIDI
example, and a few inputs of its own below) and reads every file it writes,
and every expected .mid file under tests/cases, with mido, strictly: a data
byte above 127 is an error, and so is a chunk length that does not match the
bytes that follow. For each input the notes, their ticks and velocities are
compared with what the input says: its notes, worked out by hand, turned into
note-ons and note-offs by the rules of the format (480 ticks a second, key =
p5 folded by 128, velocity = p4 * 127 / 32767, each note-off after every event
that starts no later than the note's end).

Exit status 0 when everything matches, 1 when something does not, 77 (which
CTest reports as skipped) when mido cannot be imported.
"""

import glob
import os
import shutil
import struct
import subprocess
import sys
import tempfile

SKIP = 77

try:
    import mido
except ImportError:
    print('mido is not importable by %s: the MIDI files are not read' % sys.executable)
    sys.exit(SKIP)


def f32(x):
    """x rounded to single precision."""
    return struct.unpack('f', struct.pack('f', x))[0]


VELOCITY_SCALE = f32(0.003875850703452)  # 127 / 32767


def ticks(seconds):
    """A time difference in seconds as ticks: single-precision product with
    480, negative as 0, truncated, at most 0x0FFFFFFF."""
    t = f32(seconds * 480.0)
    if not t > 0:
        return 0
    return min(int(t), 0x0FFFFFFF)


def fold(key):
    """The key's remainder by 128, keeping the sign of the key."""
    key = f32(key)
    r = f32(key - f32(int(f32(key / 128.0)) * 128.0))
    return r


def varlen_size(value):
    size = 1
    while value >= 128:
        value >>= 7
        size += 1
    return size


# ---------------------------------------------------------------------------
# What each input says: its notes in list order as (start s, duration s, p4,
# p5), worked out by hand. At 60 beats a minute a beat is a second; p3 = n
# gives n times the time to the next onset. None: the run writes no notes and
# leaves the file empty. FAILS: the run fails, and a run that fails writes no
# file at all.

FAILS = 'fails'

NINE_TENTHS = f32(0.9)


def ninety_percent(rhythm):
    return f32(rhythm * NINE_TENTHS)


CASES = {
    'worked': [(0, 1, 32767, 60)],
    'chord': [(0, 1, 20000, 60), (1, 1, 20000, 64), (1, 1, 20000, 67), (2, 1, 20000, 72)],
    'overlap': [(0, 3, 8000, 60), (1, 1, 16000, 62), (2, 0.5, 24000, 64)],
    'rest': [(1, 1, 32767, 62), (3, 1, 32767, 65)],  # the rests at 0 s and 2 s are gone
    'three': [(0, 0.5, 32767, 60), (1, 0.5, 32767, 67)],  # the first block only
    'pitch': [(0, 1, 32767, 60), (1, 1, 32767, 64), (2, 1, 32767, 67), (3, 1, 32767, 58)],
    'op': [(0, 1, 32767, 60), (1, 1, 32767, 67), (2, 1, 32767, 59)],
    'direct': [(0, 0.5, 16384, 72)],
    'tempo': [(1, 0.5, 32767, 60), (1.5, 0.5, 32767, 62)],  # 120 beats a minute
    'noeol': [(0, 1, 32767, 60)],
    'allrests': None,
    'skipped': None,
    'fourpf': FAILS,
    'fourrest': FAILS,
    'full_midi': FAILS,
}

# examples/midi.sor: 96 beats a minute, so an eighth lasts 0.3125 s, a quarter
# 0.625 s and a half 1.25 s; every note lasts 0.9 of its rhythm; the chord's
# members copy the loudness and duration of the note they join.
EXAMPLE = [
    (0.0, ninety_percent(0.3125), 16000, 60),
    (0.3125, ninety_percent(0.3125), 18000, 62),
    (0.625, ninety_percent(0.625), 20000, 64),
    (1.25, ninety_percent(0.3125), 22000, 67),
    (1.5625, ninety_percent(0.3125), 24000, 64),
    (1.875, ninety_percent(0.625), 26000, 62),
    (2.5, ninety_percent(1.25), 28000, 60),
    (2.5, ninety_percent(1.25), 28000, 64),
    (2.5, ninety_percent(1.25), 28000, 67),
]

# Inputs of this reader's own: (text, notes).
OWN = {
    # 35 s of silence before the last note-off: a three-byte delta, and a
    # conductor track ending at (36 + 35 + 1) * 480 = 34560 ticks.
    'long': ("i1 = 5 0 36 {\n p2 1 35\n p3 1\n p4 32767 1000\n p5 40 41\n}\n",
             [(0, 1, 32767, 40), (1, 35, 1000, 41)]),
    # A chord made in p2: the fused rhythm 2 sounds with the first note, and
    # the next onset waits for the longer of the two.
    'fusedp2': ("i1 = 5 0 4 {\n p2 1'2 1\n p3 1\n p4 30000\n p5 50 55 57\n}\n",
                [(0, 1, 30000, 50), (0, 2, 30000, 55), (2, 1, 30000, 57)]),
    # Keys folded by 128 and the ends of the velocity range.
    'fold': ("i1 = 5 0 3 {\n p2 1\n p3 .5\n p4 0 16384 32767\n p5 188 127 128\n}\n",
             [(0, 0.5, 0, 188), (1, 0.5, 16384, 127), (2, 0.5, 32767, 128)]),
}


def expected_events(notes):
    """(ticks, kind, key, velocity) of the note track, and the conductor
    track's end in ticks."""
    events = []
    for i, (start, dur, amp, key) in enumerate(notes):
        start, dur = f32(start), f32(dur)
        k = int(fold(key))
        events.append((start, 0, i, 'note_on', k, int(f32(f32(amp) * VELOCITY_SCALE)), dur))
        events.append((f32(start + dur), 1, i, 'note_off', k, 64, dur))
    # By time; at one time the note-ons first, then the note-offs in the
    # order of their notes.
    events.sort(key=lambda e: e[:3])
    out = []
    previous = 0.0
    for start, _, _, kind, key, velocity, _ in events:
        out.append((ticks(f32(start - previous)), kind, key, velocity))
        previous = start
    last_start, last_dur = events[-1][0], events[-1][6]
    end = ticks(f32(f32(last_start + last_dur) + 1.0))
    return out, end


class Bad(Exception):
    pass


def chunks(data):
    """The header's fields and the track chunks' bodies, checking that the
    stated lengths cover the file exactly."""
    if data[:4] != b'MThd' or len(data) < 14:
        raise Bad('no MThd header')
    length, fmt, ntracks, division = struct.unpack('>LHHH', data[4:14])
    if length != 6:
        raise Bad('header length %d' % length)
    pos = 14
    bodies = []
    while pos < len(data):
        if data[pos:pos + 4] != b'MTrk' or pos + 8 > len(data):
            raise Bad('no MTrk at byte %d' % pos)
        (size,) = struct.unpack('>L', data[pos + 4:pos + 8])
        if pos + 8 + size > len(data):
            raise Bad('track at byte %d states %d bytes, %d follow' % (pos, size, len(data) - pos - 8))
        bodies.append(data[pos + 8:pos + 8 + size])
        pos += 8 + size
    return fmt, ntracks, division, bodies


def read_strict(path):
    """Reads a file with mido (no clipping) and checks what mido does not:
    the chunk lengths against the bytes, the header, no running status, one
    end of track at the end of each track. Returns the MidiFile."""
    with open(path, 'rb') as fh:
        data = fh.read()
    fmt, ntracks, division, bodies = chunks(data)
    if (fmt, ntracks, division) != (1, 2, 480):
        raise Bad('header: format %d, %d tracks, division %d' % (fmt, ntracks, division))
    if len(bodies) != 2:
        raise Bad('%d track chunks' % len(bodies))
    try:
        mid = mido.MidiFile(path, clip=False)
    except Exception as e:  # mido raises IOError, EOFError, ValueError ...
        raise Bad('mido: %s: %s' % (type(e).__name__, e))
    if mid.type != 1 or len(mid.tracks) != 2 or mid.ticks_per_beat != 480:
        raise Bad('mido header: type %d, %d tracks, %d ticks' % (mid.type, len(mid.tracks), mid.ticks_per_beat))
    for n, (track, body) in enumerate(zip(mid.tracks, bodies), 1):
        ends = [i for i, m in enumerate(track) if m.type == 'end_of_track']
        if ends != [len(track) - 1]:
            raise Bad('track %d: end of track at %s of %d messages' % (n, ends, len(track)))
        # Every message written in full after its delta: the sizes add up to
        # the chunk (running status would make the chunk shorter).
        size = sum(varlen_size(m.time) + len(m.bin()) for m in track)
        if size != len(body):
            raise Bad('track %d: %d bytes stated, messages take %d' % (n, len(body), size))
    return mid


def check_notes(mid, notes):
    expected, end = expected_events(notes)
    conductor, track = mid.tracks
    head = [(m.type, m.time) for m in conductor]
    if head != [('time_signature', 0), ('set_tempo', 0), ('end_of_track', end)]:
        raise Bad('conductor track %s, expected its end at %d ticks' % (head, end))
    ts, tempo = conductor[0], conductor[1]
    if (ts.numerator, ts.denominator, ts.clocks_per_click, ts.notated_32nd_notes_per_beat) != (4, 4, 24, 8):
        raise Bad('time signature %s' % ts)
    if tempo.tempo != 1000000:
        raise Bad('tempo %d' % tempo.tempo)
    got = []
    for m in track[:-1]:
        if m.type not in ('note_on', 'note_off') or m.channel != 0:
            raise Bad('unexpected message %s' % m)
        got.append((m.time, m.type, m.note, m.velocity))
    if got != expected:
        raise Bad('note track\n      got      %s\n      expected %s' % (got, expected))
    if track[-1].time != 0:
        raise Bad('end of track %d ticks after the last note' % track[-1].time)
    # The chunk length that follows from the input: 3 bytes a message after
    # its delta, and the end of track.
    length = sum(varlen_size(t) + 3 for t, _, _, _ in expected) + 4
    stated = sum(varlen_size(m.time) + len(m.bin()) for m in track)
    if stated != length:
        raise Bad('note track of %d bytes, expected %d' % (stated, length))


def check_file(path, notes):
    """Checks one file against the notes (None: it must be empty)."""
    if notes is None:
        if os.path.getsize(path) != 0:
            raise Bad('expected an empty file, found %d bytes' % os.path.getsize(path))
        return
    check_notes(read_strict(path), notes)


def self_test(good_path):
    """The reader must refuse a file with a wrong length, a truncated file and
    a data byte above 127."""
    with open(good_path, 'rb') as fh:
        good = bytearray(fh.read())
    last = good.rindex(b'MTrk')
    bad_length = bytearray(good)
    bad_length[last + 7] += 1
    bad_byte = bytearray(good)
    bad_byte[last + 10] = 0xBC  # the key of the first note-on
    corrupt = {'a wrong length': bad_length, 'a truncated file': good[:-2], 'a key of 188': bad_byte}
    with tempfile.TemporaryDirectory() as tmp:
        for what, data in corrupt.items():
            path = os.path.join(tmp, 'bad.mid')
            with open(path, 'wb') as fh:
                fh.write(data)
            try:
                read_strict(path)
            except Bad:
                continue
            raise Bad('the reader accepted %s' % what)


def run_sorvel(sorvel, workdir, args):
    proc = subprocess.run([sorvel] + args, cwd=workdir, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, timeout=60)
    return proc.returncode


def case_input(path, work, name):
    """Writes the input of a case (its ```sorvel block) as NAME.sor in work;
    returns the arguments the block names."""
    with open(path, 'rb') as fh:
        lines = fh.read().split(b'\n')
    start = next(i for i, line in enumerate(lines) if line.startswith(b'```sorvel'))
    end = lines.index(b'```', start + 1)
    words = lines[start].decode().split()[1:]
    text = b''.join(line + b'\n' for line in lines[start + 1:end])
    if 'noeol' in words:
        text = text[:-1]
    with open(os.path.join(work, name + '.sor'), 'wb') as fh:
        fh.write(text)
    args = [w for w in words if w != 'noeol' and not w.startswith('exit=')]
    return args or [name + '.sor', name + '.sco']


def main():
    if len(sys.argv) != 3:
        print(__doc__)
        return 1
    sorvel = os.path.abspath(sys.argv[1])
    source = os.path.abspath(sys.argv[2])
    case_dir = os.path.join(source, 'tests', 'cases', 'midi')
    failures = []
    checked = 0

    def check(label, path, notes):
        nonlocal checked
        checked += 1
        try:
            check_file(path, notes)
        except Bad as e:
            failures.append('%s: %s' % (label, e))

    with tempfile.TemporaryDirectory() as tmp:
        # The cases: the file each run writes and the expected file beside it.
        work = os.path.join(tmp, 'cases')
        shutil.copytree(case_dir, work)
        for name in (os.path.splitext(os.path.basename(p))[0]
                     for p in sorted(glob.glob(os.path.join(case_dir, '*.case')))):
            if name not in CASES:
                failures.append('case %s: no expected notes in this reader' % name)
                continue
            args = case_input(os.path.join(case_dir, name + '.case'), work, name)
            if os.path.isabs(args[-1]):
                continue  # a device, such as /dev/full: nothing to read
            out = os.path.join(work, args[-1])
            if os.path.exists(out):
                os.remove(out)
            run_sorvel(sorvel, work, args)
            if CASES[name] is FAILS:
                if os.path.exists(out):
                    failures.append('case %s: the failed run wrote %s' % (name, args[-1]))
                continue
            if not os.path.exists(out):
                failures.append('case %s: no %s written' % (name, args[-1]))
            else:
                check('case %s (written)' % name, out, CASES[name])
            expected_mid = os.path.join(case_dir, name + '.mid')
            if os.path.exists(expected_mid):
                check('case %s (expected file)' % name, expected_mid, CASES[name])

        # The example.
        out = os.path.join(tmp, 'midi.mid')
        run_sorvel(sorvel, tmp, ['-m', os.path.join(source, 'examples', 'midi.sor'), out])
        check('examples/midi.sor', out, EXAMPLE)

        # This reader's own inputs.
        for name, (text, notes) in OWN.items():
            with open(os.path.join(tmp, name + '.sor'), 'w') as fh:
                fh.write(text)
            out = os.path.join(tmp, name + '.mid')
            run_sorvel(sorvel, tmp, ['-m', name + '.sor', name + '.mid'])
            check('input %s' % name, out, notes)

        # Every other expected MIDI file of the cases is at least well formed.
        for path in sorted(glob.glob(os.path.join(source, 'tests', 'cases', '**', '*.mid'), recursive=True)):
            if os.path.dirname(path) == case_dir or os.path.getsize(path) == 0:
                continue
            checked += 1
            try:
                read_strict(path)
            except Bad as e:
                failures.append('%s: %s' % (os.path.relpath(path, source), e))

        try:
            self_test(os.path.join(case_dir, 'worked.mid'))
        except Bad as e:
            failures.append('self test: %s' % e)

    for failure in failures:
        print('FAIL ' + failure)
    print('%d MIDI files read, %d failures' % (checked, len(failures)))
    return 1 if failures else 0


if __name__ == '__main__':
    sys.exit(main())
