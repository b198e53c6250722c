// Runs every end-to-end case of tests/cases through the browser entry, all in
// one loaded module and each case twice, and compares every byte with the
// case's expected files, as run_fenced does for a program. A case that passes
// twice in a module that has already made hundreds of runs shows that no
// state leaks from one run to the next.
//
//   node web/test/cases.mjs DIST CASES
//
// CASES is the tree that "run_fenced --unpack tests/cases CASES" writes: each
// case as NAME.sor with NAME.err, NAME.status and its other expected files
// beside it.
//
// Exit status 0 when every case matches, 1 otherwise.
import fs from 'node:fs';
import path from 'node:path';
import { pathToFileURL } from 'node:url';

const dist = path.resolve(process.argv[2]);
if (process.argv.length !== 4) {
  console.log('usage: node web/test/cases.mjs DIST CASES (CASES written by run_fenced --unpack)');
  process.exit(2);
}
const casesDir = path.resolve(process.argv[3]);
const { loadSorvel } = await import(pathToFileURL(path.join(dist, 'sorvel-web.mjs')).href);

const RESULTS = ['.sco', '.mid', '.log', '.x'];
const KINDS = ['.err', '.status', '.stdout', '.args'];

function findCases(dir) {
  const found = [];
  for (const entry of fs.readdirSync(dir, { withFileTypes: true })) {
    const p = path.join(dir, entry.name);
    if (entry.isDirectory()) found.push(...findCases(p));
    else if (entry.name.endsWith('.sor')) found.push(p);
  }
  return found.sort();
}

// The inputs of a case: every file of its directory but the expectations.
function inputsOf(dir) {
  const names = fs.readdirSync(dir);
  const results = new Set();
  for (const n of names) if (n.endsWith('.sor')) for (const r of RESULTS) results.add(n.slice(0, -4) + r);
  const files = {};
  const add = (p, rel) => {
    if (fs.statSync(p).isDirectory()) {
      for (const n of fs.readdirSync(p)) add(path.join(p, n), `${rel}/${n}`);
    } else {
      files[rel] = fs.readFileSync(p);
    }
  };
  for (const n of names) {
    if (results.has(n) || KINDS.includes(path.extname(n))) continue;
    add(path.join(dir, n), n);
  }
  return files;
}

function read(p) {
  return fs.existsSync(p) ? fs.readFileSync(p) : null;
}

function differences(sor, result) {
  const dir = path.dirname(sor);
  const name = path.basename(sor, '.sor');
  const problems = [];
  const status = Number(fs.readFileSync(path.join(dir, `${name}.status`), 'utf8').trim());
  if (result.status !== status) problems.push(`exit status ${result.status}, expected ${status}`);
  const same = (what, want, got) => {
    if (!Buffer.from(got).equals(want)) problems.push(`${what} differs`);
  };
  same('standard error', read(path.join(dir, `${name}.err`)), result.stderrBytes);
  same('standard output', read(path.join(dir, `${name}.stdout`)) ?? Buffer.alloc(0), result.stdoutBytes);
  for (const ext of RESULTS) {
    const want = read(path.join(dir, name + ext));
    if (!want) continue;
    const got = result.files[name + ext];
    if (!got) problems.push(`${name}${ext} not written`);
    else same(name + ext, want, got);
  }
  return problems;
}

const sorvel = await loadSorvel();
// Cases that write to the host's devices (/dev/full, /dev/stdout) test the
// host's file system; the in-memory one has no such devices. The Node entry
// runs them on the host like every other case.
const argsOf = (sor) => {
  const argsFile = read(path.join(path.dirname(sor), `${path.basename(sor, '.sor')}.args`));
  const name = path.basename(sor, '.sor');
  return argsFile ? argsFile.toString().split(/\s+/).filter(Boolean) : [`${name}.sor`, `${name}.sco`];
};
const cases = findCases(casesDir).filter((sor) => !argsOf(sor).some((a) => a.startsWith('/dev/')));
let failed = 0;
for (const round of [1, 2]) {
  for (const sor of cases) {
    const dir = path.dirname(sor);
    const args = argsOf(sor);
    const problems = differences(sor, sorvel.run({ args, files: inputsOf(dir) }));
    if (problems.length) {
      failed++;
      console.log(`round ${round}: ${path.relative(casesDir, sor)}: ${problems.join('; ')}`);
    }
  }
}
console.log(`${cases.length} cases, twice in one module: ${failed} runs differ`);
process.exit(failed ? 1 : 0);
