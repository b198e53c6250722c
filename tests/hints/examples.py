"""sorvel-hints over every example: each runs with the options of its
"; Run it:" line and must leave nothing to say (empty output, status 0),
but for the hints it says in a comment are meant: a code written as "(H05:"
in a comment line, which the example then gives as hints and nothing else
(status 1).

    python3 examples.py SORVEL_HINTS EXAMPLES_DIR
"""
import json
import re
import subprocess
import sys
from pathlib import Path

hints, examples = sys.argv[1], Path(sys.argv[2])
failed = 0
for sor in sorted(examples.glob("*.sor")):
    text = sor.read_text(encoding="latin-1")
    m = re.search(r"^; Run it:\s+sorvel\s+(.*?)\s*" + re.escape(sor.name), text, re.M)
    if not m:
        print(f"{sor.name}: no \"; Run it:\" line")
        failed += 1
        continue
    options = m.group(1).split()
    meant = set(re.findall(r"^;.*\((H\d\d):", text, re.M))
    run = subprocess.run([hints, "--json", *options, sor.name], cwd=examples,
                         capture_output=True, timeout=60)
    try:
        found = json.loads(run.stdout) if run.stdout.strip() else []
    except ValueError:
        found = None
    ok = found is not None and not run.stderr
    if ok:
        codes = {f["code"] for f in found}
        ok = all(f["severity"] == "hint" for f in found) and codes == meant
        ok = ok and run.returncode == (1 if meant else 0)
    if not ok:
        print(f"{sor.name} (options {options}, meant {sorted(meant)}): status {run.returncode}")
        sys.stdout.write(run.stdout.decode("utf-8", "replace"))
        sys.stdout.write(run.stderr.decode("utf-8", "replace"))
        failed += 1
    else:
        print(f"ok: {sor.name}" + (f" (meant: {', '.join(sorted(meant))})" if meant else ""))
sys.exit(1 if failed else 0)
