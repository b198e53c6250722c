#!/usr/bin/env python3
"""Large Sorvel inputs for the benchmark.

    gen.py literal EVENTS [--pfields P] [-o FILE]
    gen.py cloud   EVENTS [--pfields P] [-o FILE]
    gen.py midi    NOTES  [-o FILE]

literal  One block counted in events whose p-fields are short loops of literal
         values: rhythms (rh), durations, pitch names (no) with chords, dB,
         reals, integers with "x" repeats, rhythms in a later p-field (and
         from 9 p-fields on "/" repeats and "op" values). Filling the block
         replays the loops, so a few lines of input make EVENTS events.
         The chords add events of their own; the block's head count is chosen
         so that the score holds exactly EVENTS events.
cloud    A granular cloud: every p-field is a dynamic data function (RA, MO,
         RW, SE) over the whole block, under a fixed random seed.
midi     A block for "-m": NOTES notes of a steady sixteenth-note pulse whose
         durations reach ten pulses, so up to ten notes sound at once; p4 is an
         amplitude from 0 to 32767, p5 the key.

The default is 8 p-fields. The input goes to standard output unless -o is given.
"""

import argparse
import sys

SEED = 4321

# Literal shape -----------------------------------------------------------

# The chord p-field: each loop group adds as many events as it has fused
# members. Groups: c4 (0 extra), e:g (1), d (0), f:a:c5 (2).
CHORD_LOOP = "< c4 e:g d f:a:c5 >"
CHORD_EXTRA = [0, 1, 0, 2]
# A chord put before the loop to make up a count the loop alone cannot reach.
CHORD_PREFIX = "c3:g3"

# Loops for p-fields after the chord p-field and the dB p-field, taken in turn.
LITERAL_LOOPS = [
    "< 1 2.5 3 0.25 >",
    "in < 7 x2 9 12 >",
    "rh < 4 8. 2,8 16 >",
    "< 100 / / 250.5 300 >",
    "op < 8.00 8.07 9.04 7.11 >",
    "< 0.5 x3 0.75 1.125 >",
]


def chord_total(head, prefix):
    """Events in the score when p2 makes `head` events and the chord p-field
    starts with `prefix` two-note chords before its loop."""
    groups = head - prefix
    per_cycle = sum(CHORD_EXTRA)
    cycles, rest = divmod(groups, len(CHORD_EXTRA))
    return head + prefix + cycles * per_cycle + sum(CHORD_EXTRA[:rest])


def literal_head(events):
    """The head count and the number of prefix chords that give `events`."""
    ratio = len(CHORD_EXTRA) / (len(CHORD_EXTRA) + sum(CHORD_EXTRA))
    guess = int(events * ratio)
    for head in range(max(0, guess - 8), guess + 9):
        for prefix in range(0, 4):
            if prefix <= head and chord_total(head, prefix) == events:
                return head, prefix
    raise SystemExit("gen.py: no head count gives %d events" % events)


def literal(events, pfields):
    if pfields < 4:
        raise SystemExit("gen.py: the literal shape needs at least 4 p-fields")
    head, prefix = literal_head(events)
    chord = " ".join([CHORD_PREFIX] * prefix + [CHORD_LOOP])
    lines = [
        "; Literal block: %d events from loops, fill and chords." % events,
        "i1 = %d 0 -%d {" % (pfields, head),
        "  p2 rh < 4 8 8 4. 16 16 >",
        "  p3 < 0.9 1 0.5 >",
        "  p4 no %s" % chord,
    ]
    if pfields >= 5:
        lines.append("  p5 db < 60 70 65 72 >")
    for k in range(6, pfields + 1):
        lines.append("  p%d %s" % (k, LITERAL_LOOPS[(k - 6) % len(LITERAL_LOOPS)]))
    lines.append("}")
    return "\n".join(lines) + "\n"


# Cloud shape -------------------------------------------------------------

def cloud_fields(events):
    """Data lists for p4 onwards, taken in turn."""
    return [
        "rw(T 1 [1000 20000] 0.1 5000)",
        "se(-%d 0.5 * [60 62 64 65 67 69 71 72] 0.5 x [48 55 43])" % events,
        "ra(T 0.3 [g 0 1] 0.7 [b 0 1])",
        "mo(T 1 s [f 100 200] [t 2000 4000])",
        "se(T 1 [1 2 3 5 8 13])",
        "ra(T 0.5 [x -1 1] 0.25 [l 0 10] 0.25 [h 0 10])",
        "mo(-%d 1 v1.5 [0 0.1] [0.9 1])" % events,
        "rw(T 0.6 [0 1] 0.25 0.5 0.4 [-10 10] 0.05 0)",
    ]


def cloud(events, pfields):
    fields = cloud_fields(events)
    lines = [
        "; Granular cloud: %d events, every p-field a dynamic data function." % events,
        "rs(%d)" % SEED,
        "i1 = %d 0 -%d {" % (pfields, events),
        "  p2 ra(T 0.7 [l 0.02 0.25] 0.3 [t 0.1 0.5])",
        "  p3 mo(T 1 e [0.5 1] [2 3])",
    ]
    for k in range(4, pfields + 1):
        lines.append("  p%d %s" % (k, fields[(k - 4) % len(fields)]))
    lines.append("}")
    return "\n".join(lines) + "\n"


# MIDI shape --------------------------------------------------------------

def midi(notes):
    lines = [
        "; MIDI block: %d notes, up to ten sounding at once." % notes,
        "rs(%d)" % SEED,
        "i1 = 5 0 -%d {" % notes,
        "  p2 rh 16",
        "  p3 < 1 3 10 2 6 4 8 5 9 7 >",
        "  p4 ra(T 0.8 [t 8000 32767] 0.2 [0 32767])",
        "  p5 no < c4 e g b d5 f a c6 a5 f d b4 g e >",
        "}",
    ]
    return "\n".join(lines) + "\n"


def main():
    ap = argparse.ArgumentParser(description=__doc__,
                                 formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("shape", choices=["literal", "cloud", "midi"])
    ap.add_argument("events", type=int, help="events (notes for midi)")
    ap.add_argument("--pfields", type=int, default=8, help="p-fields per event (default 8)")
    ap.add_argument("-o", dest="out", help="output file (default standard output)")
    args = ap.parse_args()
    if args.events < 1:
        raise SystemExit("gen.py: the event count must be at least 1")
    if not 3 <= args.pfields <= 128:
        raise SystemExit("gen.py: p-fields must be 3 to 128")
    if args.shape == "literal":
        text = literal(args.events, args.pfields)
    elif args.shape == "cloud":
        text = cloud(args.events, args.pfields)
    else:
        text = midi(args.events)
    if args.out:
        with open(args.out, "w") as f:
            f.write(text)
    else:
        sys.stdout.write(text)


if __name__ == "__main__":
    main()
