// The page: the input and orchestra editors, Sorvel run on every edit in a
// worker, and the panels showing what the run printed, wrote and drew.
import { EditorState, StateEffect, StateField } from '@codemirror/state';
import { EditorView, Decoration, keymap, lineNumbers, drawSelection,
         highlightActiveLine } from '@codemirror/view';
import { defaultKeymap, history, historyKeymap } from '@codemirror/commands';
import { sorvelLanguage, sorvelHighlight } from './sorvel-mode.js';
import { examples, includes, orchestra } from './examples.gen.js';
import { errorPlace } from './messages.js';
import { packShare, unpackShare } from './share.js';
import { renderWav } from './play.js';

const DEBOUNCE_MS = 120;
// The score panel shows this many lines at most (Download score has them all).
const SCORE_LINES = 2000;
// A roll of more notes is shown as a picture, not as elements of the page.
const INLINE_ROLL_NOTES = 2000;
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

function errorMarks(doc, place) {
  if (!place || place.line < 1 || place.line > doc.lines) return Decoration.none;
  const line = doc.line(place.line);
  let from = line.from + Math.min(place.column, line.length);
  let to = from;
  while (to < line.to && !/\s/.test(doc.sliceString(to, to + 1))) to++;
  if (to === from) {
    if (from < line.to) to = from + 1;
    else if (from > line.from) from -= 1;
    else return Decoration.none;
    if (to === from) to = from + 1;
  }
  const mark = Decoration.mark({
    class: 'cm-sorvel-error',
    attributes: { 'data-line': String(place.line), 'data-column': String(place.column + 1),
                  title: place.message },
  });
  return Decoration.set([mark.range(from, to)]);
}

// --- The editors -------------------------------------------------------------
function makeEditor(parent, doc, language, onChange) {
  const extensions = [
    lineNumbers(), history(), drawSelection(), highlightActiveLine(),
    keymap.of([...defaultKeymap, ...historyKeymap]),
    EditorView.updateListener.of((u) => { if (u.docChanged) onChange(); }),
  ];
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
const worker = new Worker(new URL('./worker.js', import.meta.url), { type: 'module' });

// What tests and the curious can read: the latest run's figures.
const page = { renders: 0, last: null, ready: false };
window.sorvelPage = page;

function schedule() {
  clearTimeout(timer);
  timer = setTimeout(send, DEBOUNCE_MS);
  $('status').textContent = 'editing…';
}

function send() {
  const id = ++requestId;
  sentAt.set(id, performance.now());
  $('status').textContent = 'running…';
  worker.postMessage({ id, input: input.state.doc.toString(), options: { ...options }, includes });
}

function download(testid, name, bytes, type) {
  const link = $(testid);
  if (link.href) URL.revokeObjectURL(link.href);
  if (!bytes) {
    link.removeAttribute('href');
    link.classList.add('disabled');
    return;
  }
  link.href = URL.createObjectURL(new Blob([bytes], { type }));
  link.download = name;
  link.classList.remove('disabled');
}

// The note list that -m prints among the messages.
function noteList(stderr) {
  return stderr.split('\n').filter((l) => /\t(?:ON|OFF)\t/.test(l)).join('\n');
}

function firstLines(text, most) {
  let at = -1;
  for (let i = 0; i < most; i++) {
    at = text.indexOf('\n', at + 1);
    if (at < 0) return text;
  }
  if (at === text.length - 1) return text;
  let more = 0;
  for (let i = at; i >= 0; i = text.indexOf('\n', i + 1)) more++;
  return `${text.slice(0, at + 1)}… and ${more - 1} more lines\n`;
}

let rollUrl = null;
function showRoll(svg, notes) {
  const panel = $('roll');
  if (rollUrl) URL.revokeObjectURL(rollUrl);
  rollUrl = null;
  if (notes <= INLINE_ROLL_NOTES) {
    panel.innerHTML = svg;
    return;
  }
  rollUrl = URL.createObjectURL(new Blob([svg], { type: 'image/svg+xml' }));
  const img = new Image();
  img.alt = `piano roll of ${notes} notes`;
  img.dataset.notes = String(notes);
  img.decoding = 'async';
  img.src = rollUrl;
  panel.replaceChildren(img);
}

// The hints panel: each finding with its line, or why there are none.
function showHints(hints) {
  const panel = $('hints');
  if (!hints) {
    panel.textContent = '(hints appear here once sorvel-hints is built into the page)';
    return;
  }
  panel.replaceChildren(...hints.map((h) => {
    const item = document.createElement('div');
    item.textContent = `line ${h.line}: ${h.text}`;
    return item;
  }));
  if (!hints.length) panel.textContent = 'no hints';
}

function show(result) {
  const started = sentAt.get(result.id);
  sentAt.delete(result.id);
  if (result.id !== requestId) return;  // an older run: a newer one is coming
  lastResult = result;
  if (result.failed) {
    $('messages').textContent = `Sorvel stopped: ${result.failed}`;
    return;
  }
  $('messages').textContent = firstLines(result.stderr + result.stdout, SCORE_LINES);
  $('messages').classList.toggle('failed', result.status !== 0);
  const place = result.status !== 0 ? errorPlace(result.stderr) : null;
  input.dispatch({ effects: setError.of(errorMarks(input.state.doc, place)) });
  const decoder = new TextDecoder();
  if (result.status === 0) {
    const text = options.m ? noteList(result.stderr) : decoder.decode(result.outBytes || new Uint8Array());
    $('score').textContent = firstLines(text, SCORE_LINES);
    showRoll(result.roll || '', result.rollNotes);
  }
  showHints(result.hints);
  $('score').classList.toggle('stale', result.status !== 0);
  $('roll').classList.toggle('stale', result.status !== 0);
  const ok = result.status === 0 ? result.outBytes : null;
  if (options.m) {
    download('download-score', 'piece.mid', ok, 'audio/midi');
  } else {
    download('download-score', 'piece.sco', ok, 'text/plain');
  }
  $('play').disabled = result.status !== 0 || options.m;
  const shownMs = performance.now() - started;
  page.renders++;
  page.last = { id: result.id, status: result.status, runMs: result.runMs, shownMs,
                outBytes: result.outBytes ? result.outBytes.length : 0, rollNotes: result.rollNotes };
  $('status').textContent = result.status === 0
    ? `ran in ${result.runMs.toFixed(0)} ms` : 'error: see the messages';
}

worker.onmessage = (e) => show(e.data);

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
  send();
}

start();
