// Speed of the WebAssembly build against the native program, on the
// benchmark's inputs (bench/gen.py), in interleaved rounds: in each round
// every case runs once natively, once as a Node process (node sorvel.mjs) and
// once through the browser entry in a module loaded before the rounds (the
// page's case). Medians over the rounds; nothing is asserted.
//
//   node web/bench.mjs SORVEL DIST [ROUNDS]
//
// SORVEL is a native Release build, DIST the WebAssembly build (web/dist).
import { spawnSync } from 'node:child_process';
import fs from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import { fileURLToPath, pathToFileURL } from 'node:url';
import { performance } from 'node:perf_hooks';

const [native, dist, roundsArg = '5'] = process.argv.slice(2);
if (!native || !dist) {
  console.error('usage: node web/bench.mjs SORVEL DIST [ROUNDS]');
  process.exit(2);
}
const rounds = Number(roundsArg);
const root = path.resolve(path.dirname(fileURLToPath(import.meta.url)), '..');
const work = fs.mkdtempSync(path.join(os.tmpdir(), 'sorvel-web-bench-'));

const cases = [];
const gen = (kind, n, name) => {
  const file = path.join(work, `${name}.sor`);
  const r = spawnSync('python3', [path.join(root, 'bench/gen.py'), kind, String(n), '-o', file]);
  if (r.status !== 0) throw new Error(`bench/gen.py ${kind} ${n} failed: ${r.stderr}`);
  return file;
};
cases.push({ name: 'start-up', events: 1, file: gen('literal', 1, 'start-up'), args: ['-s'] });
for (const n of [100000, 1000000]) {
  const label = n >= 1000000 ? `${n / 1000000}M` : `${n / 1000}k`;
  for (const kind of ['literal', 'cloud'])
    cases.push({ name: `${kind} ${label}`, events: n, file: gen(kind, n, `${kind}-${label}`), args: ['-s'] });
}
cases.push({ name: 'midi 100k', events: 100000, file: gen('midi', 100000, 'midi-100k'), args: ['-s', '-m'],
             out: 'out.mid' });

const load0 = performance.now();
const { loadSorvel } = await import(pathToFileURL(path.resolve(dist, 'sorvel-web.mjs')).href);
const sorvel = await loadSorvel();
const loadMs = performance.now() - load0;

function timed(f) {
  const t0 = performance.now();
  const status = f();
  const ms = performance.now() - t0;
  if (status !== 0) throw new Error(`a run failed (exit status ${status})`);
  return ms;
}
const times = new Map(cases.map((c) => [c.name, { native: [], node: [], module: [] }]));
for (let r = 0; r < rounds; r++) {
  for (const c of cases) {
    const out = c.out ?? 'out.sco';
    const args = [...c.args, 'in.sor', out];
    fs.copyFileSync(c.file, path.join(work, 'in.sor'));
    const t = times.get(c.name);
    t.native.push(timed(() => spawnSync(path.resolve(native), args, { cwd: work, stdio: 'ignore' }).status));
    t.node.push(timed(() => spawnSync(process.execPath, [path.resolve(dist, 'sorvel.mjs'), ...args],
                                      { cwd: work, stdio: 'ignore' }).status));
    const text = fs.readFileSync(c.file);
    t.module.push(timed(() => sorvel.run({ args, files: { 'in.sor': text } }).status));
  }
}
fs.rmSync(work, { recursive: true, force: true });

const median = (xs) => {
  const s = [...xs].sort((a, b) => a - b);
  return s.length % 2 ? s[(s.length - 1) / 2] : (s[s.length / 2 - 1] + s[s.length / 2]) / 2;
};
const start = times.get('start-up');
const startNative = median(start.native), startNode = median(start.node), startModule = median(start.module);
console.log(`${os.cpus().length} cores, ${os.cpus()[0].model}; load average ${os.loadavg().map((x) => x.toFixed(2)).join(' ')}`);
console.log(`${rounds} interleaved rounds, medians in milliseconds`);
console.log(`module load (import and compile, once): ${loadMs.toFixed(0)} ms`);
console.log(`start-up (1 event): native ${startNative.toFixed(1)}, node process ${startNode.toFixed(1)}, ` +
            `loaded module ${startModule.toFixed(2)}`);
console.log('case          native   node process   loaded module   node/native   module/native   ' +
            'module/native less start-up');
for (const c of cases) {
  if (c.name === 'start-up') continue;
  const t = times.get(c.name);
  const n = median(t.native), p = median(t.node), m = median(t.module);
  const net = (m - startModule) / (n - startNative);
  console.log(`${c.name.padEnd(12)} ${n.toFixed(0).padStart(7)} ${p.toFixed(0).padStart(14)} ` +
              `${m.toFixed(0).padStart(15)} ${(p / n).toFixed(2).padStart(13)} ${(m / n).toFixed(2).padStart(15)} ` +
              `${net.toFixed(2).padStart(15)}`);
}
