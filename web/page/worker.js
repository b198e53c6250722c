// The page's Sorvel runs, away from the editor: each request runs the input
// with the chosen options (and the roll), and only the latest request waiting
// is run, so a burst of keystrokes costs one run.
//
// Everything the page shows is made ready here, so that the page's own
// thread only puts it in place: where each line of the score starts (the
// page decodes only the lines in sight), the first lines of the messages,
// where the error is, and the roll's picture. The score's bytes are handed
// over, not copied.
import { loadSorvel } from '../dist/sorvel-web.mjs';
import { errorPlace } from './messages.js';
import { lineStarts } from './score-view.js';
import { placeOfRunLine } from './places.js';

const ready = loadSorvel();
// Past this many notes the roll is a density image (sorvel-roll's
// --max-notes): a few hundred cells instead of one element per note.
const ROLL_MOST_NOTES = 2000;
// The messages panel shows this many lines at most.
const SHOWN_LINES = 500;

const encoder = new TextEncoder();
let latest = null;
let scheduled = false;

function argsFor(options) {
  const args = [];
  if (options.s) args.push('-s');
  if (options.t) args.push('-t');
  if (options.m) args.push('-m');
  return args;
}

// The first `most` lines of a text, and how many lines it has.
function firstLines(text, most) {
  let at = -1;
  let lines = 0;
  while (lines < most) {
    at = text.indexOf('\n', at + 1);
    if (at < 0) return { text, more: 0 };
    lines++;
  }
  let more = 0;
  for (let i = text.indexOf('\n', at + 1); i >= 0; i = text.indexOf('\n', i + 1)) more++;
  if (text.length > 0 && text[text.length - 1] !== '\n') more++;
  return { text: text.slice(0, at + 1), more };
}

function shown({ text, more }) {
  return more ? `${text}… and ${more} more lines\n` : text;
}

// The note list that -m prints among the messages.
function noteList(stderr) {
  return stderr.split('\n').filter((l) => /\t(?:ON|OFF)\t/.test(l)).join('\n');
}

// Where the run's error is in the composer's files: { line, column (from
// 0), message } in the input, and for an error in an include file, `file`,
// `fileLine` and `fileColumn` (from 1) with `line` the input's line whose
// "#include" brought the file in (0: not known). The messages number the
// run's lines (include files spliced in); the checker's finding for the
// error names its file, line and column, and the run's starts of files lead
// from an include file back to the "#include" of the input.
function errorIn(stderr, hints, main) {
  const printed = errorPlace(stderr);
  const own = hints && hints.findings.find((f) => f.severity === 'error');
  if (!own || !own.line) return printed;
  const message = printed ? printed.message : own.message;
  if (own.file === main) return { line: own.line, column: Math.max(0, (own.column || 1) - 1), message };
  const place = printed && placeOfRunLine(hints.lines, printed.line, main);
  return { line: place && place.file === own.file ? place.via ?? 0 : 0, column: 0, message,
           file: own.file, fileLine: own.line, fileColumn: own.column };
}

async function runLatest() {
  scheduled = false;
  const request = latest;
  latest = null;
  if (!request) return;
  const sorvel = await ready;
  const output = request.options.m ? 'piece.mid' : 'piece.sco';
  const files = { ...request.includes, 'piece.sor': request.input };
  const started = performance.now();
  let reply;
  const transfer = [];
  try {
    const result = sorvel.run({
      args: [...argsFor(request.options), 'piece.sor', output],
      files,
      roll: { width: 1000, maxNotes: ROLL_MOST_NOTES },
      hints: true,
    });
    const ranMs = performance.now() - started;
    const outBytes = result.status === 0 ? result.files[output] || null : null;
    // The score panel: the score, or with -m the note list.
    let score = null;
    let starts = null;
    if (result.status === 0) {
      score = request.options.m ? encoder.encode(noteList(result.stderr)) : outBytes || new Uint8Array();
      starts = lineStarts(score);
      transfer.push(starts.buffer);
      if (score !== outBytes) transfer.push(score.buffer);
    }
    if (outBytes) transfer.push(outBytes.buffer);
    reply = {
      id: request.id,
      status: result.status,
      messages: shown(firstLines(result.stderr + result.stdout, SHOWN_LINES)),
      error: result.status !== 0 ? errorIn(result.stderr, result.hints, 'piece.sor') : null,
      output,
      outBytes,
      score,
      starts,
      roll: result.roll,
      rollNotes: result.rollNotes,
      hints: result.hints ? result.hints.findings : null,
      ranMs,
      runMs: performance.now() - started,
    };
  } catch (e) {
    reply = { id: request.id, failed: String(e), runMs: performance.now() - started };
  }
  postMessage(reply, transfer);
}

onmessage = (event) => {
  latest = event.data;
  if (!scheduled) {
    scheduled = true;
    setTimeout(runLatest, 0);
  }
};
