"""sorvel-hints --json read by a real JSON parser: for inputs that give
hints, errors of each kind, and names with bytes that are no UTF-8 or are
control characters, the output must parse, hold one object for each line of
the text form, and say the same.

    python3 json_check.py SORVEL_HINTS
"""
import json
import os
import subprocess
import sys
import tempfile

hints = os.path.abspath(sys.argv[1])

INPUTS = {
    b"hints.sor": b"#defien A #1#\n#cnost B 2\ni1 = 3 0 1 {\n p2 $A\n p3 ~B\n}\n",
    b"macro.sor": b"#define NOTE #1#\ni1 = 3 0 1 {\n p2 $NOTS\n p3 1\n}\n",
    b"warning.sor": b"i1 = 3 0 1 {\n\tp2 1 1\n p3 1\n}\n",
    b"clean.sor": b"i1 = 3 0 1 {\n p2 1\n p3 1\n}\n",
    # An include name with a tab, a byte 0xff and a quote: the error's text holds it.
    b"include.sor": b"#include |a\tb\xff\"c.inc|\n",
    # The input's own name: a control character and bytes that are no UTF-8.
    b"odd\x01\xc3(\xe9.sor": b"#defien A #1#\n",
    b"noline.sor": b"i1 = 3 0 1 {\n p2 1\n",
}


def text_of(f):
    place = f["file"]
    if f["line"] is not None:
        place += ":" + str(f["line"])
        if f["column"] is not None:
            place += ":" + str(f["column"])
    return place + ": " + f["severity"] + ": " + f["message"]


failed = 0
with tempfile.TemporaryDirectory() as work:
    for name, text in INPUTS.items():
        with open(os.path.join(os.fsencode(work), name), "wb") as f:
            f.write(text)
    for name in INPUTS:
        shown = name.decode("utf-8", "backslashreplace")
        as_text = subprocess.run([hints, name], cwd=work, capture_output=True, timeout=30)
        as_json = subprocess.run([hints, "--json", name], cwd=work, capture_output=True,
                                 timeout=30)
        if as_json.returncode != as_text.returncode:
            print(f"{shown}: status {as_json.returncode} with --json, {as_text.returncode} without")
            failed += 1
            continue
        try:
            findings = json.loads(as_json.stdout.decode("utf-8"))
        except (UnicodeDecodeError, json.JSONDecodeError) as e:
            print(f"{shown}: the output is no JSON: {e}")
            failed += 1
            continue
        lines = as_text.stdout.decode("utf-8", "replace").splitlines()
        said = [text_of(f) for f in findings]
        # Bytes that are no UTF-8 read back as U+FFFD, as the text form does here.
        if said != lines:
            print(f"{shown}: JSON and text differ:\n  {said}\n  {lines}")
            failed += 1
            continue
        for f in findings:
            keys = {"file", "line", "column", "end_column", "severity", "code", "message"}
            if not keys <= f.keys() or (f.keys() - keys - {"fix"}):
                print(f"{shown}: members {sorted(f.keys())}")
                failed += 1
        print(f"ok: {shown}: {len(findings)} findings")
sys.exit(1 if failed else 0)
