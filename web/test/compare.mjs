// The randomized native/WebAssembly comparison: generates inputs that use
// every distribution, curve shape, input type and output conversion, runs
// each through the native program and through the browser entry (all in one
// loaded module), and compares the exit status, both streams and every file
// written, byte for byte.
//
//   node web/test/compare.mjs SORVEL DIST [RUNS [SEED]]
//
// SORVEL is the native program, DIST the WebAssembly build (web/dist). The
// inputs of the runs that differ are kept in a directory named in the
// report. Exit status 0 when no run differs, 1 otherwise.
import { spawn } from 'node:child_process';
import fs from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import { pathToFileURL } from 'node:url';

const [native, dist, runsArg = '10000', seedArg = '1'] = process.argv.slice(2);
if (!native || !dist) {
  console.error('usage: node compare.mjs SORVEL DIST [RUNS [SEED]]');
  process.exit(2);
}
const RUNS = Number(runsArg);
const { loadSorvel } = await import(pathToFileURL(path.resolve(dist, 'sorvel-web.mjs')).href);

// ------------------------------------------------------------ the inputs
// A small generator of its own (xorshift32), so that a seed names the same
// inputs everywhere.
function generator(seed) {
  let x = (seed >>> 0) || 1;
  const next = () => {
    x ^= x << 13; x >>>= 0;
    x ^= x >>> 17;
    x ^= x << 5; x >>>= 0;
    return x / 4294967296;
  };
  const int = (lo, hi) => lo + Math.floor(next() * (hi - lo + 1));
  const pick = (list) => list[int(0, list.length - 1)];
  const num = (lo, hi, decimals = 3) => (lo + next() * (hi - lo)).toFixed(decimals);
  return { next, int, pick, num };
}

const DISTRIBUTIONS = ['f', 'l', 'h', 't', 'g', 'x', 'b', ''];
const NOTES = ['c', 'cs', 'd', 'ef', 'e', 'f', 'fs', 'g', 'af', 'a', 'bf', 'b'];

function makeInput(g) {
  const curve = () => g.pick(['f', 'e', 'l', 's', 'c', `v${g.num(0.1, 4, 2)}`]);
  const beats = () => g.pick(['T', 'T', String(g.int(1, 8)), String(-g.int(2, 12))]);
  const weights = (n) => {
    if (n === 1) return ['1'];
    if (n === 2) { const w = g.int(1, 9); return [`.${w}`, `.${10 - w}`]; }
    return ['.25', '.25', '.5'];
  };
  // A value source for a p-field of the given kind, in the "re" input type.
  const range = (lo, hi) => `[${g.pick(DISTRIBUTIONS)} ${g.num(lo, hi)} ${g.num(lo, hi)}]`;
  let wide = false;  // long blocks and large values: the last bits of a curve show
  const ddf = (lo0, hi0) => {
    const lo = wide ? lo0 * 200 : lo0, hi = wide ? hi0 * 200 : hi0;
    switch (g.int(0, 7)) {
      case 0: case 1: {
        const n = g.int(1, 3);
        const w = weights(n);
        return `ra(${beats()} ${w.map((x) => `${x} ${g.next() < 0.8 ? range(lo, hi) : g.num(lo, hi)}`).join(' ')})`;
      }
      case 2: case 3: {
        const end = () => (g.next() < 0.3 ? range(lo, hi) : g.num(lo, hi));
        const span = beats();
        // A beat-related move only where the block and the span count beats.
        const star = !byEvents && !span.startsWith('-') && g.next() < 0.3 ? '*' : '';
        return `mo(${span} 1 ${curve()}${star} ${end()} ${end()})`;
      }
      case 4: {
        const low = Number(g.num(lo, (lo + hi) / 2)), high = Number(g.num((lo + hi) / 2 + 0.01, hi));
        const start = (low + (high - low) * g.next()).toFixed(3);
        return `rw(${beats()} 1 [${low.toFixed(3)} ${high.toFixed(3)}] ${g.num(0.05, 1, 2)} ${start})`;
      }
      case 5: {
        const set = () => `[${Array.from({ length: g.int(1, 5) }, () => g.num(lo, hi)).join(' ')}]`;
        return g.next() < 0.5 ? `se(${beats()} 1 ${g.pick(['', '*', 'x'])}${set()})`
                              : `ms(${beats()} 1 ${curve()} ${set()} ${set()})`;
      }
      case 6:
        return `ho(${g.pick(['T', String(-g.int(1, 6))])} ${g.num(lo, hi)})`;
      default:
        return `${g.num(lo, hi)} ${g.num(lo, hi)}`;
    }
  };
  let byEvents = false;  // the block being written is counted in events
  const lines = [];
  lines.push(`RS(${g.int(0, 65535)})`);
  if (g.next() < 0.4) lines.push(`RD(${g.num(0, 0.3, 2)})`);
  if (g.next() < 0.4) lines.push(`SR(${g.pick([22050, 44100, 48000, 96000])})`);
  if (g.next() < 0.5) {
    let at = 0;
    for (let k = g.int(1, 3); k > 0; k--) {
      const len = g.int(1, 6);
      lines.push(`te(${at} ${at + len} ${g.int(30, 200)} ${g.int(30, 200)} ${curve()})`);
      at += len + g.int(0, 2);
    }
  }
  const blocks = g.int(1, 3);
  for (let b = 0; b < blocks; b++) {
    const np = g.int(5, 10);
    wide = g.next() < 0.1;
    const events = wide ? g.int(200, 1500) : g.int(5, 120);
    byEvents = g.next() < 0.6;
    const header = byEvents ? `-${events}` : String(g.int(2, 30));
    lines.push(`i${g.int(1, 9)} = ${np} ${g.int(0, 4)} ${header} {`);
    const wideBlock = wide;
    wide = false;  // rhythms and durations stay modest
    const p2 = g.pick(['1', '.25 .5', 'rh 8 16 8.', ddf(0.05, 1), `mo(T 1 ${curve()} .1 .6)`]);
    lines.push(`  p2${g.next() < 0.3 ? `(re${g.int(0, 7)})` : ''} ${p2}`);
    lines.push(`  p3${g.next() < 0.3 ? `(re${g.int(0, 7)})` : ''} ${g.pick(['1', ddf(0.01, 3), '.5 1.5'])}`);
    wide = wideBlock;
    for (let p = 4; p <= np; p++) {
      const out = g.pick(['re', `re${g.int(0, 7)}`, 'in', 'db', 'hz', 'op', 'od', 'tr', 'bn', `bn${g.int(0, 7)}`, 'xx', '']);
      let source;
      if (['hz', 'op', 'od', 'bn'].includes(out.slice(0, 2)) || g.next() < 0.15) {
        source = g.next() < 0.25
          ? `no ${Array.from({ length: g.int(1, 4) }, () => `${g.pick(NOTES)}${g.int(1, 8)}`).join(' ')}`
          : ddf(12, 110);
      } else if (out === 'db') {
        source = g.next() < 0.3 ? `db ${g.num(0, 96, 1)} ${g.num(0, 96, 1)}` : ddf(1, 32000);
      } else if (out === 'tr') {
        source = ddf(-36, 36);
      } else if (p > 4 && g.next() < 0.2) {
        source = `ex(${beats()} 1 [p${g.int(2, p - 1)} ${g.pick(['+', '-', '*', '/'])} ${g.num(0.5, 3)}])`;
      } else {
        source = ddf(-1000, 1000);
      }
      lines.push(`  p${p}${out ? `(${out})` : ''} ${source}`);
    }
    lines.push('}');
  }
  return lines.join('\n') + '\n';
}

function makeRun(g) {
  let text = makeInput(g);
  // Now and then a broken input, for the error paths.
  if (g.next() < 0.05) {
    const at = g.int(0, text.length - 1);
    text = text.slice(0, at) + g.pick(['', '(', ']', 'x', '-', '~', '$', '#']) + text.slice(at + 1);
  }
  const midi = g.next() < 0.15;
  const args = [];
  if (g.next() < 0.3) args.push('-l', 'run.log');
  if (g.next() < 0.2) args.push('-x', 'run.x');
  if (g.next() < 0.2) args.push('-t');
  if (g.next() < 0.1) args.push('-s');
  if (midi) args.push('-m');
  args.push('in.sor', midi ? 'out.mid' : 'out.sco');
  return { args, files: { 'in.sor': text } };
}

// ------------------------------------------------------------ the runs
function runNative(dir, run) {
  return new Promise((resolve) => {
    for (const [name, text] of Object.entries(run.files)) fs.writeFileSync(path.join(dir, name), text);
    const child = spawn(path.resolve(native), run.args, { cwd: dir, stdio: ['ignore', 'pipe', 'pipe'] });
    const out = [], err = [];
    child.stdout.on('data', (d) => out.push(d));
    child.stderr.on('data', (d) => err.push(d));
    child.on('error', (e) => { throw new Error(`cannot run ${native}: ${e.message}`); });
    child.on('close', (status) => {
      const files = {};
      for (const name of fs.readdirSync(dir)) {
        const bytes = fs.readFileSync(path.join(dir, name));
        if (!(name in run.files) || !bytes.equals(Buffer.from(run.files[name]))) files[name] = bytes;
        fs.unlinkSync(path.join(dir, name));
      }
      resolve({ status, stdout: Buffer.concat(out), stderr: Buffer.concat(err), files });
    });
  });
}

function difference(a, b) {
  if (a.status !== b.status) return `exit status ${a.status} / ${b.status}`;
  if (!a.stderr.equals(Buffer.from(b.stderrBytes))) return 'standard error';
  if (!a.stdout.equals(Buffer.from(b.stdoutBytes))) return 'standard output';
  const names = new Set([...Object.keys(a.files), ...Object.keys(b.files)]);
  for (const name of names) {
    if (!a.files[name] || !b.files[name]) return `file ${name} written by one only`;
    if (!a.files[name].equals(Buffer.from(b.files[name]))) return `file ${name}`;
  }
  return null;
}

const sorvel = await loadSorvel();
const g = generator(Number(seedArg));
const work = fs.mkdtempSync(path.join(os.tmpdir(), 'sorvel-compare-'));
const kept = path.join(work, 'differing');
const lanes = 2;  // native runs in flight while the module works
let differ = 0, succeeded = 0, bytes = 0;
const started = Date.now();
const queue = Array.from({ length: RUNS }, (_, i) => ({ index: i, run: makeRun(g) }));
async function lane(k) {
  const dir = path.join(work, `lane${k}`);
  fs.mkdirSync(dir);
  for (let item = queue.shift(); item; item = queue.shift()) {
    const nat = await runNative(dir, item.run);
    const web = sorvel.run(item.run);
    if (nat.status === 0) succeeded++;
    bytes += nat.stderr.length + Object.values(nat.files).reduce((s, f) => s + f.length, 0);
    const why = difference(nat, web);
    if (why) {
      differ++;
      fs.mkdirSync(kept, { recursive: true });
      fs.writeFileSync(path.join(kept, `run${item.index}.sor`), item.run.files['in.sor']);
      fs.writeFileSync(path.join(kept, `run${item.index}.args`), item.run.args.join(' ') + '\n');
      if (differ <= 10) console.log(`run ${item.index} differs: ${why}`);
    }
  }
}
await Promise.all(Array.from({ length: lanes }, (_, k) => lane(k)));
const seconds = ((Date.now() - started) / 1000).toFixed(1);
console.log(`${RUNS} runs (seed ${seedArg}, ${succeeded} ended with status 0, ${bytes} bytes compared) ` +
            `in ${seconds} s: ${differ} differ`);
if (differ) console.log(`inputs of the runs that differ: ${kept}`);
else fs.rmSync(work, { recursive: true, force: true });
process.exit(differ ? 1 : 0);
