#!/usr/bin/env python3
"""check_roll.py -- sorvel-roll against sorvel, run by run, and the pictures
of the examples in docs/pictures/.

    check_roll.py SORVEL SORVEL_ROLL SOURCE_DIR
    check_roll.py --pictures SORVEL_ROLL SOURCE_DIR [--update]

Every example of examples/ and every input of tests/roll/inputs/ is run
twice, by sorvel (a score, or with -m a MIDI file) and by sorvel-roll (a
picture), with the same options. The picture must parse as XML and hold one
note element per event line of the score (per note-on of the MIDI file),
block by block, each at the start the score gives it; its axes, beat lines
and legend must be there. Then the roll's own options (--pitch, --amp,
--from/--to, --width, --max-notes) and its failures: the same messages and
exit status as sorvel, and no picture.

With --pictures, each examples/NAME.sor is drawn, with the options of its
"; Run it:" line, as docs/pictures/NAME.svg: the check fails when a committed
picture is missing, differs from what the program draws now, or belongs to
no example, and when docs/guide.md does not show one of them; --update
writes them.

Exit status 0 when everything holds, 1 otherwise.
"""

import os
import re
import shutil
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ET

SVG = '{http://www.w3.org/2000/svg}'
FAILURES = []


def fail(what):
    FAILURES.append(what)
    print('FAIL: ' + what)


def run(cmd, cwd):
    p = subprocess.run(cmd, cwd=cwd, capture_output=True, timeout=120)
    return p.returncode, p.stdout.decode('latin-1'), p.stderr.decode('latin-1')


def run_line_options(path):
    """The options of an example's "; Run it:  sorvel [options] NAME.sor ..." line."""
    with open(path, encoding='latin-1') as f:
        for line in f:
            m = re.match(r';\s*Run it:\s*sorvel\s+(.*)', line)
            if m:
                words = m.group(1).split()
                return words[:words.index(os.path.basename(path))]
    return []


def score_blocks(score):
    """{block number: [(p2, p3), ...]} from a score's comments and "i" lines."""
    blocks, current = {}, None
    for line in score.splitlines():
        m = re.match(r';I-block #(\d+) \(i(-?\d+)\):', line)
        if m:
            current = int(m.group(1))
            blocks[current] = []
        elif line.startswith('i'):
            words = line.split()
            blocks[current].append((float(words[1]), float(words[2]), words[1:]))
    return blocks


def midi_note_ons(data):
    """[(tick, key, velocity), ...] of the note track of one of sorvel's MIDI files."""
    assert data[:4] == b'MThd'
    p = 14
    ons = []
    for track in range(2):
        assert data[p:p + 4] == b'MTrk'
        end = p + 8 + int.from_bytes(data[p + 4:p + 8], 'big')
        p += 8
        tick = 0
        while p < end:
            delta = 0
            while True:
                b = data[p]
                p += 1
                delta = (delta << 7) | (b & 0x7F)
                if not b & 0x80:
                    break
            tick += delta
            status = data[p]
            if status == 0xFF:
                length = data[p + 2]
                p += 3 + length
            else:
                if status & 0xF0 == 0x90 and track == 1:
                    ons.append((tick, data[p + 1], data[p + 2]))
                p += 3
    return ons


def parse_svg(path, what):
    try:
        return ET.parse(path).getroot()
    except ET.ParseError as e:
        fail('%s: the picture is not well-formed XML: %s' % (what, e))
    except OSError as e:
        fail('%s: no picture: %s' % (what, e))
    return None


def with_class(root, cls):
    return [e for e in root.iter() if cls in (e.get('class') or '').split()]


def notes_of(root):
    return [e for e in root.iter() if e.get('class') == 'note']


def check_frame(root, what, blocks):
    for cls in ('x-axis', 'y-axis', 'legend', 'beats'):
        if not with_class(root, cls):
            fail('%s: no %s' % (what, cls))
    if not with_class(root, 'beat'):
        fail('%s: no beat lines' % what)
    titles = [t.text for t in with_class(root, 'axis-title')]
    if 'time (s)' not in titles:
        fail('%s: the time axis has no title (%s)' % (what, titles))
    legend = sorted(int(e.get('data-block')) for e in with_class(root, 'legend-entry'))
    if legend != sorted(blocks):
        fail('%s: the legend shows blocks %s, the run wrote %s' % (what, legend, sorted(blocks)))
    for e in notes_of(root):
        if e.tag != SVG + 'rect' or e.find(SVG + 'title') is None:
            fail('%s: a note that is not a rectangle with a title' % what)
            break


def compare_with_score(root, what, blocks):
    notes = notes_of(root)
    events = sum(len(v) for v in blocks.values())
    if len(notes) != events:
        fail('%s: %d notes drawn, the score has %d events' % (what, len(notes), events))
        return
    for number, lines in blocks.items():
        drawn = [e for e in notes if e.get('data-block') == str(number)]
        if len(drawn) != len(lines):
            fail('%s: block %d: %d notes drawn, %d in the score' % (what, number, len(drawn), len(lines)))
            continue
        for e, (p2, p3, fields) in zip(drawn, lines):
            start, dur = float(e.get('data-start')), float(e.get('data-dur'))
            if abs(start - p2) > 0.0006 or abs(dur - p3) > 0.0006:
                fail('%s: block %d: a note at %s for %s, the score has %s for %s'
                     % (what, number, start, dur, p2, p3))
                break
            # The title shows the p-fields as the score line has them.
            title = e.find(SVG + 'title').text
            shown = re.findall(r' p\d+ (\S+)', title)
            if shown != fields:
                fail('%s: block %d: the title "%s" does not show the line %s' % (what, number, title, fields))
                break


def compare_with_midi(root, what, data):
    notes = notes_of(root)
    ons = midi_note_ons(data)
    if len(notes) != len(ons):
        fail('%s: %d notes drawn, the MIDI file has %d note-ons' % (what, len(notes), len(ons)))
        return
    for e, (tick, key, velocity) in zip(notes, ons):
        title = e.find(SVG + 'title').text
        if abs(float(e.get('data-start')) - tick / 480.0) > 2e-5 or \
                'key %d ' % key not in title or 'velocity %d' % velocity not in title:
            fail('%s: note %s does not match the note-on at tick %d, key %d, velocity %d'
                 % (what, title, tick, key, velocity))
            break


def check_input(roll, sorvel, work, name, options):
    """Runs one input both ways and compares; returns the score's blocks."""
    midi = '-m' in options
    out = name + ('.mid' if midi else '.sco')
    what = ' '.join(options + [name + '.sor'])
    status, _, err = run([sorvel] + options + [name + '.sor', out], work)
    if status != 0:
        fail('%s: sorvel failed: %s' % (what, err[-400:]))
        return None
    status, _, err = run([roll] + options + [name + '.sor', name + '.svg'], work)
    if status != 0:
        fail('%s: sorvel-roll failed: %s' % (what, err[-400:]))
        return None
    root = parse_svg(os.path.join(work, name + '.svg'), what)
    if root is None:
        return None
    with open(os.path.join(work, out), 'rb') as f:
        data = f.read()
    blocks = {1: []} if midi else score_blocks(data.decode('latin-1'))
    check_frame(root, what, blocks)
    if midi:
        compare_with_midi(root, what, data)
    else:
        compare_with_score(root, what, blocks)
    return blocks


def y_of(e):
    return float(e.get('y'))


def value_in_title(e, p):
    return float(re.search(r' p%d (\S+)' % p, e.find(SVG + 'title').text).group(1))


def check_options(roll, sorvel, work):
    def picture(args, name='options'):
        status, _, err = run([roll, '-s'] + args + [name + '.sor', 'o.svg'], work)
        if status != 0:
            fail('sorvel-roll %s: failed: %s' % (' '.join(args), err[-300:]))
            return None
        return parse_svg(os.path.join(work, 'o.svg'), ' '.join(args))

    def y_title(root):
        return [t.text for t in with_class(root, 'y-title')][0]

    def ordered(notes, key, value, what):
        pairs = sorted((key(e), value(e)) for e in notes)
        values = [v for _, v in pairs]
        if values != sorted(values):
            fail('%s: not in the order of the values' % what)

    # --pitch: by default the pitch p-field (p6, written in Hz); else the one
    # asked for, higher values higher up.
    root = picture([])
    if root is not None:
        if 'p6' not in y_title(root) or 'pitch' not in y_title(root):
            fail('default pitch: the y axis is "%s", not p6' % y_title(root))
        if not any(t.text == 'c4' for t in root.iter(SVG + 'text')):
            fail('default pitch: no note names on the y axis')
        # the default opacity: p5, read in dB, louder is more opaque
        ordered(notes_of(root), lambda e: value_in_title(e, 5), lambda e: float(e.get('opacity')),
                'default --amp (p5)')
    root = picture(['--pitch', 'p4'])
    if root is not None:
        if y_title(root) != 'p4':
            fail('--pitch p4: the y axis is "%s"' % y_title(root))
        ordered(notes_of(root), lambda e: value_in_title(e, 4), lambda e: -y_of(e), '--pitch p4')
    # --amp: another p-field, or none.
    root = picture(['--amp', 'p4'])
    if root is not None:
        ordered(notes_of(root), lambda e: value_in_title(e, 4), lambda e: float(e.get('opacity')),
                '--amp p4')
    root = picture(['--amp', 'none'])
    if root is not None and any(e.get('opacity') for e in notes_of(root)):
        fail('--amp none: notes have an opacity')
    # --from / --to: the notes that sound within the span, inside the plot.
    run([sorvel, '-s', 'options.sor', 'options.sco'], work)
    with open(os.path.join(work, 'options.sco')) as f:
        events = score_blocks(f.read())[1]
    for lo, hi in ((1.2345, 3.7), (0.0, 2.2), (4.9, 100.0)):
        root = picture(['--from', str(lo), '--to', str(hi)])
        if root is None:
            continue
        want = [p2 for p2, p3, _ in events if p2 < hi and p2 + p3 > lo]
        got = [float(e.get('data-start')) for e in notes_of(root)]
        if len(got) != len(want) or any(abs(a - b) > 0.0006 for a, b in zip(got, want)):
            fail('--from %s --to %s: notes at %s, the score sounds %s' % (lo, hi, got, want))
        left = float(with_class(root, 'axis-line')[0].get('x1'))
        if any(float(e.get('x')) < left - 1e-9 for e in notes_of(root)):
            fail('--from %s: a note left of the plot' % lo)
        labels = [t.text for t in with_class(root, 'x-labels')[0]]
        if float(labels[0]) < lo or float(labels[-1]) > hi:
            fail('--from %s --to %s: the time axis runs from %s to %s' % (lo, hi, labels[0], labels[-1]))
    # --width
    root = picture(['--width', '1600'])
    if root is not None and root.get('width') != '1600':
        fail('--width 1600: the picture is %s wide' % root.get('width'))
    # Above the limit, a density image of the same axes, and it says so.
    shutil.copy(os.path.join(work, 'cloud.sor'), os.path.join(work, 'dense.sor'))
    root = picture(['--max-notes', '100'], 'dense')
    if root is not None:
        if notes_of(root) or not with_class(root, 'cell'):
            fail('--max-notes 100 on the cloud: no density image')
        if not any('density image' in (t.text or '') for t in root.iter(SVG + 'text')):
            fail('--max-notes 100: the picture does not say it is a density image')
        check_frame(root, 'density image', {1: []})


def check_failures(roll, sorvel, work):
    def banner_free(text):
        # The summary names the output (the picture goes to no score file).
        return re.sub(r'Output\t= "[^"]*"', 'Output', text)

    with open(os.path.join(work, 'bad.sor'), 'w') as f:
        f.write('i1 = 5 0 4 {\n  p2 1\n  p3 1\n  p4 1\n  p5 q\n}\n')
    with open(os.path.join(work, 'keep.svg'), 'w') as f:
        f.write('an earlier picture')
    for args in (['bad.sor'], ['-s', 'bad.sor'], ['-m', 'bad.sor'], ['nothere.sor'], ['-q', 'bad.sor']):
        s_status, s_out, s_err = run([sorvel] + args + ['bad.sco'], work)
        for target in ('new.svg', 'keep.svg'):
            r_status, r_out, r_err = run([roll] + args + [target], work)
            what = 'sorvel-roll ' + ' '.join(args + [target])
            if (r_status, r_out, banner_free(r_err)) != (s_status, s_out, banner_free(s_err)):
                fail('%s: status %d and messages %r, sorvel gives %d and %r'
                     % (what, r_status, r_err[-300:], s_status, s_err[-300:]))
            if os.path.exists(os.path.join(work, 'new.svg')):
                fail('%s: a picture was written' % what)
            with open(os.path.join(work, 'keep.svg')) as f:
                if f.read() != 'an earlier picture':
                    fail('%s: the earlier picture was changed' % what)
    leftovers = [n for n in os.listdir(work) if n.startswith(('new.svg', 'keep.svg.'))]
    if leftovers:
        fail('files left behind: %s' % leftovers)
    for args in (['options.sor', 'options.sor'], ['options.sor', './options.sor'],
                 ['-l', 'new.log', 'options.sor', './new.log'], ['-x./sub/../new.x', 'options.sor', 'new.x']):
        os.makedirs(os.path.join(work, 'sub'), exist_ok=True)
        status, _, err = run([roll] + args, work)
        if status != 1 or "can't use a filename multiple times" not in err:
            fail('sorvel-roll %s: not refused (%d)' % (' '.join(args), status))
        if any(os.path.exists(os.path.join(work, n)) for n in ('new.log', 'new.x')):
            fail('sorvel-roll %s: a file was written' % ' '.join(args))
    status, _, err = run([roll, '--pitch', 'q5', 'options.sor', 'o.svg'], work)
    if status != 1 or 'Bad value for --pitch' not in err:
        fail('sorvel-roll --pitch q5: not refused (%d)' % status)


def check_pictures(roll, source, work, update):
    examples = os.path.join(source, 'examples')
    pictures = os.path.join(source, 'docs', 'pictures')
    names = sorted(n[:-4] for n in os.listdir(examples) if n.endswith('.sor'))
    for n in os.listdir(examples):
        shutil.copy(os.path.join(examples, n), work)
    for name in names:
        options = run_line_options(os.path.join(work, name + '.sor'))
        status, _, _ = run([roll] + options + [name + '.sor', name + '.svg'], work)
        if status != 0:
            fail('sorvel-roll %s.sor: exit status %d' % (name, status))
            continue
        with open(os.path.join(work, name + '.svg'), 'rb') as f:
            drawn = f.read()
        target = os.path.join(pictures, name + '.svg')
        if update:
            os.makedirs(pictures, exist_ok=True)
            with open(target, 'wb') as f:
                f.write(drawn)
            continue
        try:
            with open(target, 'rb') as f:
                committed = f.read()
        except OSError:
            committed = None
        if committed != drawn:
            fail('docs/pictures/%s.svg is %s' % (name, 'missing' if committed is None else 'out of date'))
    with open(os.path.join(source, 'docs', 'guide.md'), encoding='utf-8') as f:
        guide = f.read()
    for name in names:
        if '](pictures/%s.svg)' % name not in guide:
            fail('docs/guide.md does not show pictures/%s.svg' % name)
    if not update and os.path.isdir(pictures):
        for n in sorted(os.listdir(pictures)):
            if n.endswith('.svg') and n[:-4] not in names:
                fail('docs/pictures/%s belongs to no example' % n)
    if FAILURES:
        print('Redraw them with: tests/roll/check_roll.py --pictures build/sorvel-roll . --update')
    else:
        print('%d pictures %s' % (len(names), 'written' if update else 'up to date'))


def check_runs(sorvel, roll, source, work):
    for d in (os.path.join(source, 'examples'), os.path.join(source, 'tests', 'roll', 'inputs')):
        for n in os.listdir(d):
            shutil.copy(os.path.join(d, n), work)
    names = sorted(n[:-4] for n in os.listdir(os.path.join(source, 'examples')) if n.endswith('.sor'))
    for name in names:
        check_input(roll, sorvel, work, name, run_line_options(os.path.join(work, name + '.sor')))
    # With -m, every example's first block as the MIDI file holds it.
    for name in names:
        if name != 'midi':
            check_input(roll, sorvel, work, name, ['-s', '-m'])
    for name in ('chords', 'rests', 'blocks', 'tempo', 'options'):
        check_input(roll, sorvel, work, name, ['-s'])
    check_input(roll, sorvel, work, 'midi', ['-s', '-m'])
    blocks = check_input(roll, sorvel, work, 'blocks', ['-s'])
    if blocks is not None and sorted(blocks) != [1, 2, 3]:
        fail('blocks.sor: the score has blocks %s' % sorted(blocks))
    check_options(roll, sorvel, work)
    check_failures(roll, sorvel, work)
    print('%d failures' % len(FAILURES) if FAILURES else 'all good')


def main():
    work = tempfile.mkdtemp(prefix='sorvel-roll-check.')
    try:
        if sys.argv[1] == '--pictures':
            roll, source = (os.path.abspath(a) for a in sys.argv[2:4])
            check_pictures(roll, source, work, sys.argv[4:] == ['--update'])
        else:
            check_runs(*(os.path.abspath(a) for a in sys.argv[1:4]), work)
    finally:
        shutil.rmtree(work)
    return 1 if FAILURES else 0


if __name__ == '__main__':
    sys.exit(main())
