#!/usr/bin/env python3
"""pictures.py -- the pictures of the examples in docs/pictures/.

    pictures.py SORVEL_ROLL SOURCE_DIR           check them
    pictures.py SORVEL_ROLL SOURCE_DIR --update  write them

Each examples/NAME.sor is drawn by sorvel-roll, in a copy of examples/ and
with the options of its "; Run it:" line, as docs/pictures/NAME.svg. The
check fails when a committed picture is missing, differs from what the
program draws now, or belongs to no example, and when docs/guide.md does not
show one of them.

Exit status 0 when the pictures are up to date (or were written), 1 otherwise.
"""

import os
import re
import shutil
import subprocess
import sys
import tempfile


def run_line_options(path):
    with open(path, encoding='latin-1') as f:
        for line in f:
            m = re.match(r';\s*Run it:\s*sorvel\s+(.*)', line)
            if m:
                words = m.group(1).split()
                return words[:words.index(os.path.basename(path))]
    return []


def main():
    roll, source = (os.path.abspath(a) for a in sys.argv[1:3])
    update = sys.argv[3:] == ['--update']
    examples = os.path.join(source, 'examples')
    pictures = os.path.join(source, 'docs', 'pictures')
    names = sorted(n[:-4] for n in os.listdir(examples) if n.endswith('.sor'))
    work = tempfile.mkdtemp(prefix='sorvel-pictures.')
    stale = []
    try:
        for n in os.listdir(examples):
            shutil.copy(os.path.join(examples, n), work)
        for name in names:
            options = run_line_options(os.path.join(work, name + '.sor'))
            p = subprocess.run([roll] + options + [name + '.sor', name + '.svg'], cwd=work,
                               capture_output=True, timeout=120)
            if p.returncode != 0:
                print('FAIL: sorvel-roll %s.sor: exit status %d' % (name, p.returncode))
                stale.append(name)
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
                print('FAIL: docs/pictures/%s.svg is %s' % (name, 'missing' if committed is None else 'out of date'))
                stale.append(name)
        with open(os.path.join(source, 'docs', 'guide.md'), encoding='utf-8') as f:
            guide = f.read()
        for name in names:
            if '](pictures/%s.svg)' % name not in guide:
                print('FAIL: docs/guide.md does not show pictures/%s.svg' % name)
                stale.append(name)
        if not update and os.path.isdir(pictures):
            for n in sorted(os.listdir(pictures)):
                if n.endswith('.svg') and n[:-4] not in names:
                    print('FAIL: docs/pictures/%s belongs to no example' % n)
                    stale.append(n)
    finally:
        shutil.rmtree(work)
    if stale:
        print('Redraw them with: tests/roll/pictures.py build/sorvel-roll . --update')
        return 1
    print('%d pictures %s' % (len(names), 'written' if update else 'up to date'))
    return 0


if __name__ == '__main__':
    sys.exit(main())
