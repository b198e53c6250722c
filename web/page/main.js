// The page: the input and orchestra editors, Sorvel run on every edit in a
// worker, and the panels showing what the run printed, wrote and drew.
import { EditorState, StateEffect, StateField } from '@codemirror/state';
import { EditorView, Decoration, keymap, lineNumbers, drawSelection,
         highlightActiveLine } from '@codemirror/view';
import { defaultKeymap, history, historyKeymap } from '@codemirror/commands';
import { sorvelLanguage, sorvelHighlight } from './sorvel-mode.js';
import { examples, includes, orchestra } from './examples.gen.js';
import { packShare, unpackShare } from './share.js';
import { renderWav } from './play.js';
import { ScoreView } from './score-view.js';
import { Hints } from './hints.js';

const DEBOUNCE_MS = 120;
const $ = (id) => document.querySelector(`[data-testid="${id}"]`);

// --- The error underline -----------------------------------------------------
const setError = StateEffect.define();
const errorField = StateField.define({
  create: () => Decoration.none,
  update(marks, tr) {
    marks = marks.map(tr.changes);
    for (const e of tr.effects) if (e.is(setError)) marks = e.value;
    return marks;
  },
  provide: (f) => EditorView.decorations.from(f),
});

// The error's underline: under the word the caret points to, or, for an
// error in an include file, under the "#include" that brought it in.
function errorMarks(doc, place) {
  if (!place || place.line < 1 || place.line > doc.lines) return Decoration.none;
  const line = doc.line(place.line);
  let from = line.from + Math.min(place.column, line.length);
  let to = from;
  const directive = place.file ? /#include\s*\|[^|]*\|?/.exec(line.text) : null;
  if (directive) {
    from = line.from + directive.index;
    to = from + directive[0].length;
  }
  while (to < line.to && !/\s/.test(doc.sliceString(to, to + 1))) to++;
  if (to === from) {
    if (from < line.to) to = from + 1;
    else if (from > line.from) from -= 1;
    else return Decoration.none;
    if (to === from) to = from + 1;
  }
  const attributes = { 'data-line': String(place.line), 'data-column': String(place.column + 1),
                       title: place.message };
  if (place.file) {
    attributes['data-file'] = place.file;
    attributes.title = `${place.file}, line ${place.fileLine}: ${place.message}`;
  }
  const mark = Decoration.mark({ class: 'cm-sorvel-error', attributes });
  return Decoration.set([mark.range(from, to)]);
}

// --- The editors -------------------------------------------------------------
function makeEditor(parent, doc, language, onChange) {
  const extensions = [
    lineNumbers(), history(), drawSelection(), highlightActiveLine(),
    keymap.of([...defaultKeymap, ...historyKeymap]),
  ];
  if (onChange) extensions.push(EditorView.updateListener.of((u) => { if (u.docChanged) onChange(); }));
  else extensions.push(EditorState.readOnly.of(true), EditorView.editable.of(false));
  if (language) extensions.push(language, sorvelHighlight, errorField);
  return new EditorView({ state: EditorState.create({ doc, extensions }), parent });
}

const options = { s: false, t: false, m: false };
let input;
let orc;
let lastResult = null;
let requestId = 0;
let sentAt = new Map();
let timer = null;
let scoreView;
let hints;
const worker = new Worker(new URL('./worker.js', import.meta.url), { type: 'module' });

// What tests and the curious can read: the latest run's figures.
const page = { renders: 0, last: null, ready: false };
window.sorvelPage = page;

function schedule() {
  clearTimeout(timer);
  timer = setTimeout(send, DEBOUNCE_MS);
  page.editing = true;
  $('status').textContent = 'editing…';
}

// Sends the input to be run, unless the latest run was of the same input
// with the same options (an edit undone, an option set back): its panels
// stand.
let lastSent = null;
let ranStatus = '';
function send() {
  const text = input.state.doc.toString();
  const key = JSON.stringify(options);
  page.editing = false;
  if (lastSent && lastSent.text === text && lastSent.key === key && !sentAt.size) {
    $('status').textContent = ranStatus;
    return;
  }
  lastSent = { text, key };
  const id = ++requestId;
  page.sent = id;
  sentAt.set(id, performance.now());
  $('status').textContent = 'running…';
  worker.postMessage({ id, input: text, options: { ...options }, includes });
}

// A download link for `bytes`: the file is made when the link is clicked,
// so that a run whose score nobody downloads costs no copy of it.
const offered = new Map();
function download(testid, name, bytes, type) {
  const link = $(testid);
  if (!offered.has(testid)) {
    link.addEventListener('click', (e) => {
      const file = offered.get(testid);
      if (!file.bytes) { e.preventDefault(); return; }
      if (link.href) URL.revokeObjectURL(link.href);
      link.href = URL.createObjectURL(new Blob([file.bytes], { type: file.type }));
      link.download = file.name;
    });
  }
  offered.set(testid, { name, bytes, type });
  if (link.href) URL.revokeObjectURL(link.href);
  if (bytes) link.setAttribute('href', '#');
  else link.removeAttribute('href');
  link.classList.toggle('disabled', !bytes);
}

// Puts a panel's text in place, unless it already shows it; true when it
// changed.
function setText(testid, text) {
  const panel = $(testid);
  if (panel.textContent === text) return false;
  panel.textContent = text;
  return true;
}

// The roll's picture: one element per note, or a density image of a large
// run; left as it stands when the run drew the same picture.
let rollShown = null;
function showRoll(svg) {
  if (svg === rollShown) return;
  rollShown = svg;
  $('roll').innerHTML = svg;
}

// Resolves once what the page changed is on the screen: after the next frame.
function painted() {
  return new Promise((resolve) => requestAnimationFrame(() => setTimeout(resolve, 0)));
}

function show(result) {
  const started = sentAt.get(result.id);
  // (The worker runs only the latest of the requests waiting: the others
  // get no reply.)
  for (const id of sentAt.keys()) if (id <= result.id) sentAt.delete(id);
  if (result.id !== requestId) return;  // an older run: a newer one is coming
  lastResult = result;
  if (result.failed) {
    setText('messages', `Sorvel stopped: ${result.failed}`);
    $('status').textContent = 'Sorvel stopped: see the messages';
    return;
  }
  const arrivedMs = performance.now() - started;
  const newMessages = setText('messages', result.messages);
  $('messages').classList.toggle('failed', result.status !== 0);
  // A failed run's error is its last message: in sight; else from the top.
  if (newMessages) $('messages').scrollTop = result.status !== 0 ? $('messages').scrollHeight : 0;
  const marks = errorMarks(input.state.doc, result.error);
  if (marks.size || input.state.field(errorField).size) input.dispatch({ effects: setError.of(marks) });
  showErrorPlace(result.error);
  if (result.status === 0) {
    scoreView.show(result.score, result.starts);
    showRoll(result.roll || '');
  }
  hints.show(result.hints);
  $('score').classList.toggle('stale', result.status !== 0);
  $('roll').classList.toggle('stale', result.status !== 0);
  const ok = result.status === 0 ? result.outBytes : null;
  if (options.m) {
    download('download-score', 'piece.mid', ok, 'audio/midi');
  } else {
    download('download-score', 'piece.sco', ok, 'text/plain');
  }
  $('play').disabled = result.status !== 0 || options.m;
  const shownMs = performance.now() - started;  // the page's part: shownMs - arrivedMs
  // (A run that ended while the composer goes on typing shows what it
  // found, but the status stays "editing" until the next run is sent.)
  ranStatus = result.status === 0 ? `ran in ${result.runMs.toFixed(0)} ms` : 'error: see the messages';
  if (!page.editing) $('status').textContent = ranStatus;
  painted().then(() => {
    page.renders++;
    page.last = { id: result.id, status: result.status, ranMs: result.ranMs, runMs: result.runMs,
                  arrivedMs, shownMs, paintedMs: performance.now() - started,
                  outBytes: result.outBytes ? result.outBytes.length : 0, rollNotes: result.rollNotes };
  });
}

worker.onmessage = (e) => show(e.data);

// --- An include file, read-only ----------------------------------------------
let included = null;
function openInclude(file, line, column, message) {
  const text = includes[file];
  if (text === undefined) return;
  const tab = document.querySelector('.tab[data-tab="include"]');
  tab.textContent = `${file} (read-only)`;
  tab.hidden = false;
  if (!included || included.file !== file) {
    $('include-file').replaceChildren();
    included = { file, view: makeEditor($('include-file'), text, sorvelLanguage, null) };
  }
  showTab('include');
  const { view } = included;
  const place = line ? { line, column: Math.max(0, (column || 1) - 1), message: message || '' } : null;
  view.dispatch({ effects: setError.of(errorMarks(view.state.doc, place)) });
  if (place && line <= view.state.doc.lines) {
    view.dispatch({ effects: EditorView.scrollIntoView(view.state.doc.line(line).from, { y: 'center' }) });
  }
}

// Above the messages, for an error in an include file: where it is, and a
// link that shows it there.
function showErrorPlace(error) {
  const where = $('error-place');
  if (!error || !error.file) {
    where.hidden = true;
    // The include file's tab goes once it is neither needed nor in front.
    const tab = document.querySelector('.tab[data-tab="include"]');
    if (!tab.classList.contains('active')) tab.hidden = true;
    return;
  }
  where.hidden = false;
  const link = document.createElement('a');
  link.href = '#';
  link.textContent = `${error.file}, line ${error.fileLine}${error.fileColumn ? `, column ${error.fileColumn}` : ''}`;
  link.addEventListener('click', (e) => {
    e.preventDefault();
    openInclude(error.file, error.fileLine, error.fileColumn, error.message);
  });
  where.replaceChildren('The error is in the include file ', link,
                        error.line ? ` (brought in by line ${error.line})` : '', ':');
}

// --- Examples, tabs, options, share, play ------------------------------------
function setInput(text) {
  input.dispatch({ changes: { from: 0, to: input.state.doc.length, insert: text } });
}

function setOrchestra(text) {
  orc.dispatch({ changes: { from: 0, to: orc.state.doc.length, insert: text } });
}

function showTab(name) {
  for (const tab of document.querySelectorAll('.tab')) tab.classList.toggle('active', tab.dataset.tab === name);
  $('editor').hidden = name !== 'input';
  $('orchestra').hidden = name !== 'orchestra';
  $('include-file').hidden = name !== 'include';
}

async function share() {
  const packed = await packShare({ input: input.state.doc.toString(), orchestra: orc.state.doc.toString(),
                                   options });
  const url = `${location.origin}${location.pathname}#s=${packed}`;
  window.history.replaceState(null, '', url);
  $('share-link').value = url;
  $('share-link').hidden = false;
  try { await navigator.clipboard.writeText(url); } catch { /* the link is shown anyway */ }
}

async function play() {
  if (!lastResult || lastResult.status !== 0 || options.m) return;
  const button = $('play');
  button.disabled = true;
  $('status').textContent = 'rendering with Csound…';
  try {
    const score = new TextDecoder().decode(lastResult.outBytes);
    const { wav, messages } = await renderWav(orc.state.doc.toString(), score);
    page.wav = wav;
    download('download-wav', 'piece.wav', wav, 'audio/wav');
    const audio = $('audio');
    if (audio.src) URL.revokeObjectURL(audio.src);
    audio.src = URL.createObjectURL(new Blob([wav], { type: 'audio/wav' }));
    audio.hidden = false;
    $('status').textContent = `rendered ${wav.length} bytes of sound`;
    page.csoundMessages = messages;
    try { await audio.play(); } catch { /* a headless page may not sound */ }
  } catch (e) {
    $('status').textContent = `Csound: ${e.message || e}`;
  } finally {
    button.disabled = false;
  }
}

async function start() {
  let first = examples.find((e) => e.name === 'first.sor') || examples[0];
  let initial = { input: first.text, orchestra, options: {} };
  const hash = new URLSearchParams(location.hash.slice(1)).get('s');
  if (hash) {
    try { initial = await unpackShare(hash); } catch { /* a broken link opens the first example */ }
  }
  Object.assign(options, initial.options || {});
  input = makeEditor($('editor'), initial.input, sorvelLanguage, schedule);
  scoreView = new ScoreView($('score'));
  hints = new Hints(input, $('hints'), 'piece.sor', openInclude);
  orc = makeEditor($('orchestra'), initial.orchestra ?? orchestra, null, () => {});
  for (const key of ['s', 't', 'm']) {
    const box = $(`option-${key}`);
    box.checked = !!options[key];
    box.addEventListener('change', () => { options[key] = box.checked; send(); });
  }
  const menu = $('examples');
  for (const e of examples) menu.add(new Option(e.name.replace(/\.sor$/, ''), e.name));
  menu.value = hash ? '' : first.name;
  menu.addEventListener('change', () => {
    const e = examples.find((x) => x.name === menu.value);
    if (e) setInput(e.text);
  });
  for (const tab of document.querySelectorAll('.tab')) tab.addEventListener('click', () => showTab(tab.dataset.tab));
  $('share').addEventListener('click', share);
  $('play').addEventListener('click', play);
  showTab('input');
  page.ready = true;
  page.input = input;
  page.orchestra = orc;
  page.scoreText = () => scoreView.wholeText();
  send();
}

start();
