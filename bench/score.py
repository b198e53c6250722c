#!/usr/bin/env python3
"""A random Csound score written in plain Python: the yardstick of the benchmark.

    score.py EVENTS [PFIELDS] OUTFILE

Writes EVENTS lines of the shape Sorvel writes for a block of PFIELDS p-fields
(default 8) that have no output specifier: "i1", p2 in "%8.3f", p3 in "%6.3f",
p4 to pN in "%9.3f", each followed by a blank, the score ending with "e". The
values come from the standard random module under a fixed seed.
"""

import random
import sys


def main():
    args = sys.argv[1:]
    if len(args) not in (2, 3):
        sys.exit("usage: score.py EVENTS [PFIELDS] OUTFILE")
    events = int(args[0])
    pfields = int(args[1]) if len(args) == 3 else 8
    outfile = args[-1]

    rng = random.Random(4321)
    fmt = "\ni1 %8.3f %6.3f " + "%9.3f " * (pfields - 3)
    start = 0.0
    with open(outfile, "w") as out:
        out.write("\n;I-block #1 (i1):")
        for _ in range(events):
            values = [start, rng.uniform(0.0, 2.0)]
            values.extend(rng.uniform(0.0, 10000.0) for _ in range(pfields - 3))
            out.write(fmt % tuple(values))
            start += rng.random()
        out.write("\n\ne\n")


if __name__ == "__main__":
    main()
