"""sorvel-hints over every example: each runs with the options of its
"; Run it:" line and must leave nothing to say (empty output, status 0).

    python3 examples.py SORVEL_HINTS EXAMPLES_DIR
"""
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
    run = subprocess.run([hints, *options, sor.name], cwd=examples, capture_output=True,
                         timeout=60)
    if run.returncode != 0 or run.stdout or run.stderr:
        print(f"{sor.name} (options {options}): status {run.returncode}")
        sys.stdout.write(run.stdout.decode("utf-8", "replace"))
        sys.stdout.write(run.stderr.decode("utf-8", "replace"))
        failed += 1
    else:
        print(f"ok: {sor.name}")
sys.exit(1 if failed else 0)
