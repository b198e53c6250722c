// The browser entry's roll: for every example, run({ roll: true }) draws the
// same SVG as sorvel-roll on the same input, and writes the same files and
// messages as the run without it; a failed run draws nothing.
//   node web/test/roll.mjs <dist> <sorvel-roll> <examples folder>
import { execFileSync } from 'node:child_process';
import { mkdtempSync, readFileSync, readdirSync, rmSync, copyFileSync, existsSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join, resolve } from 'node:path';

const [dist, rollProgram, examplesDir] = process.argv.slice(2).map((p) => resolve(p));
const { loadSorvel } = await import(join(dist, 'sorvel-web.mjs'));
const sorvel = await loadSorvel();
const scratch = mkdtempSync(join(tmpdir(), 'sorvel-roll-'));
let failures = 0;
const fail = (what) => { console.log(`FAIL ${what}`); failures++; };

const names = readdirSync(examplesDir);
const files = {};
for (const name of names.filter((n) => n.endsWith('.inc'))) files[name] = readFileSync(join(examplesDir, name));
for (const name of names.filter((n) => n.endsWith('.sor'))) {
  for (const options of [[], ['-m']]) {
    const out = options.length ? 'out.mid' : 'out.sco';
    const given = { ...files, [name]: readFileSync(join(examplesDir, name)) };
    const args = [...options, name, out];
    const plain = sorvel.run({ args, files: given });
    const drawn = sorvel.run({ args, files: given, roll: true });
    for (const name2 of Object.keys(files)) copyFileSync(join(examplesDir, name2), join(scratch, name2));
    copyFileSync(join(examplesDir, name), join(scratch, name));
    rmSync(join(scratch, 'roll.svg'), { force: true });
    try {
      execFileSync(rollProgram, [...options, name, 'roll.svg'], { cwd: scratch, stdio: 'pipe' });
    } catch { /* compared below */ }
    const expected = existsSync(join(scratch, 'roll.svg')) ? readFileSync(join(scratch, 'roll.svg'), 'utf8') : null;
    const label = `${options.join(' ')} ${name}`.trim();
    if (drawn.roll !== expected) fail(`${label}: the roll differs from sorvel-roll's`);
    if (drawn.stderr !== plain.stderr || drawn.status !== plain.status) fail(`${label}: messages or status differ`);
    if (Buffer.compare(Buffer.from(drawn.files[out] || []), Buffer.from(plain.files[out] || [])) !== 0) {
      fail(`${label}: the output file differs`);
    }
  }
}
// A density image past maxNotes, as with --max-notes.
{
  const given = { 'cloud.sor': readFileSync(join(examplesDir, 'cloud.sor')) };
  const drawn = sorvel.run({ args: ['cloud.sor', 'out.sco'], files: given, roll: { width: 600, maxNotes: 10 } });
  copyFileSync(join(examplesDir, 'cloud.sor'), join(scratch, 'cloud.sor'));
  execFileSync(rollProgram, ['--width', '600', '--max-notes', '10', 'cloud.sor', 'roll.svg'], { cwd: scratch, stdio: 'pipe' });
  if (drawn.roll !== readFileSync(join(scratch, 'roll.svg'), 'utf8')) fail('cloud, maxNotes 10: differs from sorvel-roll --max-notes 10');
  if (!drawn.roll.includes('class="density"')) fail('cloud, maxNotes 10: no density image');
}
const bad = sorvel.run({ args: ['bad.sor', 'bad.sco'], files: { 'bad.sor': 'i1 = 4 0 2 {\np3 nox foo\n}\n' }, roll: true });
if (bad.status !== 1 || bad.roll !== null) fail('a failed run: status 1 and no roll');
const plainAgain = sorvel.run({ args: ['x.sor', 'x.sco'], files: { 'x.sor': 'i1 = 4 0 1 {\np2 rh 4\np3 1\np4 1\n}\n' } });
if ('roll' in plainAgain) fail('a run without the option has no roll');
rmSync(scratch, { recursive: true, force: true });
console.log(failures ? `${failures} failed` : 'the browser entry\'s roll is sorvel-roll\'s');
process.exit(failures ? 1 : 0);
