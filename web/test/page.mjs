// The page in headless Chromium: typing, the score against the native
// program byte for byte, the roll, an error's underline (in the input, and in
// an include file), a hint and its fix, the MIDI download, the examples menu,
// a share link and Play. Prints the re-render times of a 10,000-event and a
// 100,000-event piece (figures, not checks), and saves screenshots of the
// page in the artifacts folder.
//   node web/test/page.mjs <dist> <native sorvel> <artifacts folder>
// Exits 77 (skipped) when Chromium or the page's packages are missing, unless
// CI is set: there a missing tool is a failure.
import { execFileSync } from 'node:child_process';
import { existsSync, mkdtempSync, mkdirSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { cpus, loadavg, tmpdir } from 'node:os';
import { dirname, join, resolve } from 'node:path';
import { fileURLToPath } from 'node:url';

const here = dirname(fileURLToPath(import.meta.url));
const root = resolve(here, '../..');
const [distArg, nativeArg, artifactsArg] = process.argv.slice(2);
const dist = resolve(distArg || join(root, 'web/dist'));
const native = resolve(nativeArg || join(root, 'build/sorvel'));
const artifacts = resolve(artifactsArg || join(root, 'build/page-artifacts'));
const CHROMIUM = process.env.SORVEL_CHROMIUM || '/usr/bin/chromium';

function missing(what) {
  console.log(`page test: ${what}`);
  process.exit(process.env.CI ? 1 : 77);
}

if (!existsSync(CHROMIUM)) missing(`no Chromium at ${CHROMIUM} (Debian package chromium)`);
if (!existsSync(join(dist, 'page/index.html'))) missing(`no built page in ${dist}/page (web/build)`);
let chromium;
try {
  ({ chromium } = await import('playwright-core'));
} catch {
  missing('playwright-core is not installed (npm ci --prefix web)');
}
const { servePage } = await import('../page/serve.mjs');

let failures = 0;
function check(ok, what, detail = '') {
  console.log(`${ok ? 'ok  ' : 'FAIL'} ${what}${!ok && detail ? `\n     ${detail}` : ''}`);
  if (!ok) failures++;
}

// The native program's output for an input, under the page's file names.
const scratch = mkdtempSync(join(tmpdir(), 'sorvel-page-'));
function nativeRun(text, args = [], includes = {}) {
  for (const [name, body] of Object.entries(includes)) writeFileSync(join(scratch, name), body);
  writeFileSync(join(scratch, 'piece.sor'), text);
  const output = args.includes('-m') ? 'piece.mid' : 'piece.sco';
  rmSync(join(scratch, output), { force: true });
  try {
    execFileSync(native, [...args, 'piece.sor', output], { cwd: scratch, stdio: 'pipe' });
  } catch { /* status 1: the output is missing */ }
  return existsSync(join(scratch, output)) ? readFileSync(join(scratch, output)) : null;
}

const server = servePage(join(dist, 'page'));
await new Promise((ok) => server.listen(0, '127.0.0.1', ok));
const origin = `http://127.0.0.1:${server.address().port}`;
const profile = mkdtempSync(join(tmpdir(), 'sorvel-chromium-'));
const context = await chromium.launchPersistentContext(profile, {
  executablePath: CHROMIUM,
  headless: true,
  acceptDownloads: true,
  viewport: { width: 1400, height: 900 },
  args: ['--headless', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
         '--disable-background-networking', '--disable-component-update', '--disable-sync',
         '--autoplay-policy=no-user-gesture-required'],
});
// Nothing may come from anywhere but the page's own folder.
const outside = [];
await context.route('**/*', (route) => {
  const url = route.request().url();
  if (url.startsWith(origin) || url.startsWith('blob:') || url.startsWith('data:')) return route.continue();
  outside.push(url);
  return route.abort();
});

const page = context.pages()[0] || await context.newPage();
const pageErrors = [];
page.on('pageerror', (e) => pageErrors.push(String(e)));

// Waits for the page to show the run of the latest edit.
async function settled(timeout = 60000) {
  await page.waitForFunction(() => {
    const p = window.sorvelPage;
    return p && p.ready && !p.editing && p.last && p.last.id === p.sent && !document.querySelector('[data-testid="status"]').textContent.match(/editing|running/);
  }, null, { timeout });
  return page.evaluate(() => window.sorvelPage.last);
}

async function setInput(text) {
  await page.evaluate((t) => {
    const view = window.sorvelPage.input;
    view.dispatch({ changes: { from: 0, to: view.state.doc.length, insert: t } });
  }, text);
}

const panel = (id) => page.locator(`[data-testid="${id}"]`).evaluate((e) => e.textContent);

try {
  await page.goto(`${origin}/`);
  await settled();

  // --- Typing a piece: the score panel is the native score, byte for byte.
  const small = ['te(90)', 'i1 = 5 0 4 {', 'p2 rh 4', 'p3 1', 'p4 db 70', 'p5(op) no c4 d e f', '}', ''].join('\n');
  await page.locator('[data-testid="editor"] .cm-content').click();
  await page.keyboard.press('Control+A');
  await page.keyboard.press('Delete');
  await page.keyboard.type(small, { delay: 5 });
  await settled();
  check(await page.evaluate(() => window.sorvelPage.input.state.doc.toString()) === small, 'typed text is the input');
  const expected = nativeRun(small).toString('utf8');
  check(await panel('score') === expected, 'score panel equals the native score', JSON.stringify(await panel('score')).slice(0, 200));
  // Four quarter notes in four beats.
  const notes = await page.locator('[data-testid="roll"] rect.note').count();
  check(notes === 4, 'roll draws four notes', `got ${notes}`);
  // A keystroke taken back before its run: nothing runs again.
  const before = await page.evaluate(() => window.sorvelPage.sent);
  await page.keyboard.type('x');
  await page.keyboard.press('Backspace');
  await page.waitForFunction(() => !window.sorvelPage.editing, null, { timeout: 5000 });
  const after = await page.evaluate(() => ({ sent: window.sorvelPage.sent,
    status: document.querySelector('[data-testid="status"]').textContent }));
  check(after.sent === before && /^ran in/.test(after.status), 'an edit undone before its run does not run again',
        JSON.stringify(after));

  // --- An error: underlined at the line and column the caret points to.
  await setInput('i1 = 5 0 4 {\np2 rh 4\np3 nox foo\n}\n');
  await settled();
  const mark = page.locator('[data-testid="editor"] .cm-sorvel-error');
  check(await mark.count() === 1, 'one error underlined');
  if (await mark.count() === 1) {
    const at = await mark.evaluate((e) => ({ line: e.dataset.line, column: e.dataset.column,
      lineText: e.closest('.cm-line').textContent,
      before: (() => { const r = document.createRange(); r.setStart(e.closest('.cm-line'), 0); r.setEndBefore(e); return r.toString().length; })() }));
    // "p3 nox foo": the caret stands under the seventh column (the blank before "foo").
    check(at.line === '3' && at.column === '7' && at.lineText === 'p3 nox foo' && at.before === 6,
          'error underlined on line 3, column 7', JSON.stringify(at));
  }
  check(/ERROR: Line 3: P3 input must be "re" or "in"\./.test(await panel('messages')), 'messages show the error');

  // --- An error inside an include file: the "#include" is underlined, the
  // messages name the file and its line, and a link shows that line there.
  // The input's LEAD comes first, so instruments.inc's own definition of it
  // (its line 9) is the error.
  await setInput('#define LEAD #3#\n#include |instruments.inc|\n');
  await settled();
  const incMark = page.locator('[data-testid="editor"] .cm-sorvel-error');
  const inc = await incMark.evaluate((e) => ({ line: e.dataset.line, file: e.dataset.file, text: e.textContent,
                                               title: e.title })).catch(() => null);
  check(inc && inc.line === '2' && inc.file === 'instruments.inc' && inc.text === '#include |instruments.inc|',
        'an error in an include file underlines the #include', JSON.stringify(inc));
  const errorPlace = await panel('error-place');
  check(/instruments\.inc, line 9, column 17/.test(errorPlace) && /line 2/.test(errorPlace),
        'the messages name the include file, its line and column', errorPlace);
  await page.locator('[data-testid="error-place"] a').click();
  const shownInc = await page.locator('[data-testid="include-file"] .cm-sorvel-error').evaluate((e) => ({
    line: e.dataset.line, column: e.dataset.column, lineText: e.closest('.cm-line').textContent,
    visible: !e.closest('[data-testid="include-file"]').hidden })).catch((e) => String(e));
  check(shownInc.visible && shownInc.line === '9' && shownInc.lineText === '#define LEAD #1#',
        'the link shows the include file read-only with the error\'s line underlined', JSON.stringify(shownInc));
  const readOnly = await page.evaluate(() => document.querySelector('[data-testid="include-file"] .cm-content').contentEditable);
  check(readOnly === 'false', 'the include file cannot be edited', readOnly);
  await page.locator('.tab[data-tab="input"]').click();

  // --- A hint: underlined, its text on hover, its fix applied in one click.
  // "$NOTS" names no macro; the nearest defined one is NOTE.
  const hinted = '#define NOTE #p2 1#\n#define REST #p2 -1#\ni1 = 3 0 1 {\n $NOTS\n p3 1\n}\n';
  await setInput(hinted);
  await settled();
  const hintRow = await panel('hints');
  check(/line 4.*H10: the defined macro nearest to "NOTS" is "NOTE"/.test(hintRow), 'the hints panel lists the hint', hintRow);
  const range = page.locator('[data-testid="editor"] .cm-lintRange');
  const ranged = await range.evaluate((e) => ({ text: e.textContent, line: e.closest('.cm-line').textContent })).catch((e) => String(e));
  check(ranged.text === 'NOTS' && ranged.line === ' $NOTS', 'the hint underlines the name in the editor', JSON.stringify(ranged));
  await range.hover();
  const tip = page.locator('.cm-tooltip-lint');
  await tip.waitFor({ timeout: 5000 }).catch(() => {});
  const tipText = await tip.textContent().catch(() => '');
  mkdirSync(artifacts, { recursive: true });
  await page.screenshot({ path: join(artifacts, 'hint.png') });
  check(/the defined macro nearest to "NOTS" is "NOTE"/.test(tipText) && /Fix: NOTE/.test(tipText),
        'hovering shows the hint and its fix', tipText);
  await page.locator('.cm-tooltip-lint .cm-diagnosticAction').click();
  const fixed = await settled();
  const fixedText = await page.evaluate(() => window.sorvelPage.input.state.doc.toString());
  check(fixedText === hinted.replace('$NOTS', '$NOTE') && fixed.status === 0 && await panel('hints') === 'no hints',
        'the fix writes NOTE, and the piece runs without hints', JSON.stringify(fixedText));
  // The panel's button does the same.
  await setInput(hinted);
  await settled();
  await page.locator('[data-testid="hints"] [data-testid="fix"]').click();
  await settled();
  check(await page.evaluate(() => window.sorvelPage.input.state.doc.toString()) === hinted.replace('$NOTS', '$NOTE'),
        'the hints panel\'s fix button writes NOTE');

  // --- -m: the note list, and a download of the native MIDI file's bytes.
  await setInput(small);
  await settled();
  await page.locator('[data-testid="option-m"]').check();
  await settled();
  check(/\tON\tN:/.test(await panel('score')), '-m shows the note list');
  const [midi] = await Promise.all([page.waitForEvent('download'), page.locator('[data-testid="download-score"]').click()]);
  const midiBytes = readFileSync(await midi.path());
  const nativeMidi = nativeRun(small, ['-m']);
  check(midi.suggestedFilename() === 'piece.mid' && nativeMidi && Buffer.compare(midiBytes, nativeMidi) === 0,
        '-m download is the native MIDI file', `${midiBytes.length} bytes against ${nativeMidi?.length}`);
  await page.locator('[data-testid="option-m"]').uncheck();
  await settled();

  // --- An example from the menu, with its include files.
  const includes = { 'instruments.inc': readFileSync(join(root, 'examples/instruments.inc'), 'utf8') };
  for (const name of ['cloud', 'variants']) {
    await page.locator('[data-testid="examples"]').selectOption(name);
    await settled();
    const text = readFileSync(join(root, `examples/${name}.sor`), 'utf8');
    const score = nativeRun(text, [], includes).toString('utf8');
    check(await panel('score') === score, `example "${name}" from the menu gives the native score`);
  }
  await page.locator('[data-testid="examples"]').selectOption('cloud');
  await settled();
  const cloudNotes = await page.locator('[data-testid="roll"] rect.note').count();
  const cloudEvents = (await panel('score')).split('\n').filter((l) => /^i\d/.test(l)).length;
  check(cloudNotes > 100 && cloudNotes === cloudEvents, 'the cloud\'s roll draws each of its events', `${cloudNotes} notes, ${cloudEvents} events`);
  mkdirSync(artifacts, { recursive: true });
  await page.screenshot({ path: join(artifacts, 'page.png') });

  // --- Share: a link that opens the same piece.
  const shared = 'te(60)\ni1 = 5 0 2 {\np2 rh 4\np3 1\np4 db 60\np5(op) no a3 b\n}\n; é ü\n';
  await setInput(shared);
  await settled();
  await page.locator('[data-testid="share"]').click();
  await page.waitForFunction(() => !document.querySelector('[data-testid="share-link"]').hidden);
  const link = await page.locator('[data-testid="share-link"]').inputValue();
  const second = await context.newPage();
  await second.goto(link);
  await second.waitForFunction(() => window.sorvelPage && window.sorvelPage.ready);
  const restored = await second.evaluate(() => window.sorvelPage.input.state.doc.toString());
  check(restored === shared && link.startsWith(origin), 'a share link restores the input', `${link.length} chars`);
  await second.close();

  // --- Play: Csound in the page renders the first example to a WAV, with
  // the network cut off: the loaded page needs nothing more.
  await page.locator('[data-testid="examples"]').selectOption('first');
  await settled();
  await context.setOffline(true);
  await page.locator('[data-testid="play"]').click();
  await page.waitForFunction(() => window.sorvelPage.wav || /Csound:/.test(document.querySelector('[data-testid="status"]').textContent), null, { timeout: 180000 });
  const wav = await page.evaluate(() => {
    const b = window.sorvelPage.wav;
    if (!b) return { error: document.querySelector('[data-testid="status"]').textContent };
    const v = new DataView(b.buffer, b.byteOffset, b.byteLength);
    const tag = (o) => String.fromCharCode(b[o], b[o + 1], b[o + 2], b[o + 3]);
    let o = 12; let peak = 0; let frames = 0; let bits = 0; let channels = 0;
    while (o + 8 <= b.length) {
      const id = tag(o); const size = v.getUint32(o + 4, true);
      if (id === 'fmt ') { channels = v.getUint16(o + 10, true); bits = v.getUint16(o + 22, true); }
      if (id === 'data') {
        const n = Math.min(size, b.length - o - 8);
        for (let i = 0; i + 1 < n; i += 2) peak = Math.max(peak, Math.abs(v.getInt16(o + 8 + i, true)));
        frames = n / (bits / 8) / channels;
      }
      o += 8 + size + (size & 1);
    }
    return { riff: tag(0), wave: tag(8), bits, channels, frames, peak, bytes: b.length };
  });
  await context.setOffline(false);
  check(wav.riff === 'RIFF' && wav.wave === 'WAVE' && wav.bits === 16 && wav.peak > 100 && wav.frames > 44100,
        'Play, offline, renders a WAV that is not silent', JSON.stringify(wav));

  // --- Speed: re-render times (figures, not checks). Each re-render is one
  // keystroke that changes every note (the first pitch's octave); the time
  // runs from the end of its debounce to the frame that shows the new panels.
  await page.locator('[data-testid="option-s"]').check();
  const median = (xs) => [...xs].sort((a, b) => a - b)[Math.floor(xs.length / 2)];
  for (const [events, beats, rh] of [[10000, 2500, 16], [100000, 6250, 64]]) {
    const piece = `i1 = 5 0 ${beats} {\np2 rh ${rh}\np3 1\np4 db 70\np5(op) no c4 d e f\n}\n`;
    const octave = piece.indexOf('c4') + 1;
    await setInput(piece);
    await settled(120000);
    const key = (digit) => page.evaluate(([at, c]) => {
      const view = window.sorvelPage.input;
      view.dispatch({ changes: { from: at, to: at + 1, insert: c } });
    }, [octave, digit]);
    const times = [];
    for (let i = 0; i < 7; i++) {
      await key(String(3 + (i % 3)));
      times.push(await settled(120000));
    }
    // While the piece runs, the editor keeps taking keystrokes: one every
    // 150 ms (each starts a run after the debounce) for three seconds, with
    // the page's thread watched all along: the longest it was busy in one go
    // and the longest a keystroke took to be in the editor.
    const busy = await page.evaluate(async (at) => {
      const view = window.sorvelPage.input;
      const renders = window.sorvelPage.renders;
      // Tasks of the page's thread over 50 ms, as the browser counts them
      // (a stall without one is the machine's other work, not the page's).
      let longTask = 0;
      const watch = new PerformanceObserver((list) => {
        for (const e of list.getEntries()) longTask = Math.max(longTask, e.duration);
      });
      watch.observe({ type: 'longtask' });
      let longest = 0; let keyed = 0; let t = performance.now(); let next = t; let n = 0;
      const until = t + 3000;
      while (performance.now() < until) {
        await new Promise((r) => setTimeout(r, 0));
        const now = performance.now(); longest = Math.max(longest, now - t); t = now;
        if (now >= next) {
          view.dispatch({ changes: { from: at, to: at + 1, insert: String(3 + (n++ % 3)) } });
          keyed = Math.max(keyed, performance.now() - now);
          next = now + 150;
        }
      }
      await new Promise((r) => setTimeout(r, 100));
      watch.disconnect();
      return { longest, keyed, longTask, keys: n, renders: window.sorvelPage.renders - renders };
    }, octave);
    await settled(120000);
    const fmt = (k) => `median ${median(times.map((t) => t[k])).toFixed(0)} (${times.map((t) => t[k].toFixed(0)).join(', ')})`;
    const last = times[times.length - 1];
    console.log(`speed: ${events} events (a score of ${last.outBytes} bytes, ${last.rollNotes} notes in the roll; ` +
                `${cpus().length} cores, load average ${loadavg()[0].toFixed(1)}):\n` +
                `  Sorvel + roll in the worker: ${fmt('ranMs')} ms\n` +
                `  worker reply ready: ${fmt('runMs')} ms; in the page: ${fmt('arrivedMs')} ms; panels set: ${fmt('shownMs')} ms\n` +
                `  debounce end to the new panels painted: ${fmt('paintedMs')} ms\n` +
                `  ${busy.keys} keystrokes 150 ms apart (${busy.renders} runs shown meanwhile): longest stall of ` +
                `the page ${busy.longest.toFixed(0)} ms, longest keystroke ${busy.keyed.toFixed(1)} ms, ` +
                `longest task of the page ${busy.longTask ? `${busy.longTask.toFixed(0)} ms` : 'under 50 ms'}`);
    check(times.every((t) => t.status === 0), `${events}-event piece runs`);
  }

  // The large score scrolls to its end, with only the lines in sight (and
  // some around them) in the page; scrolled through, it is the native score.
  const end = await page.evaluate(async () => {
    const panel = document.querySelector('[data-testid="score"]');
    panel.scrollTop = panel.scrollHeight;
    await new Promise((r) => requestAnimationFrame(() => requestAnimationFrame(r)));
    const shown = panel.textContent.split('\n');
    return { last: shown[shown.length - 2], shown: shown.length - 1, whole: window.sorvelPage.scoreText(),
             input: window.sorvelPage.input.state.doc.toString() };
  });
  const bigScore = nativeRun(end.input, ['-s']).toString('utf8');
  const bigLines = bigScore.split('\n');
  check(end.whole === bigScore && end.last === bigLines[bigLines.length - 2] && end.shown < 1000,
        'a large score scrolls to its last line, only the lines in sight in the page',
        `${end.shown} lines in the page, last ${JSON.stringify(end.last)}`);

  check(outside.length === 0, 'nothing fetched from outside the page', outside.join(' '));
  check(pageErrors.length === 0, 'no errors in the page', pageErrors.join(' | '));
} catch (e) {
  check(false, 'the page test ran to the end', String(e && e.stack || e));
  try { mkdirSync(artifacts, { recursive: true }); await page.screenshot({ path: join(artifacts, 'failure.png') }); } catch { /* none */ }
} finally {
  await context.close();
  server.close();
  rmSync(profile, { recursive: true, force: true });
  rmSync(scratch, { recursive: true, force: true });
}
console.log(failures ? `page test: ${failures} failed` : 'page test: all passed');
process.exit(failures ? 1 : 0);
