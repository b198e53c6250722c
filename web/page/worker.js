// The page's Sorvel runs, away from the editor: each request runs the input
// with the chosen options (and the roll), and only the latest request waiting
// is run, so a burst of keystrokes costs one run.
import { loadSorvel } from '../dist/sorvel-web.mjs';

const ready = loadSorvel();
// Past this many notes the roll is a density image: quick to draw and show.
const ROLL_MOST_NOTES = 20000;

function countNotes(svg) {
  let n = 0;
  for (let at = svg.indexOf('<rect class="note"'); at >= 0; at = svg.indexOf('<rect class="note"', at + 1)) n++;
  return n;
}
let latest = null;
let scheduled = false;

function argsFor(options) {
  const args = [];
  if (options.s) args.push('-s');
  if (options.t) args.push('-t');
  if (options.m) args.push('-m');
  return args;
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
  try {
    const result = sorvel.run({
      args: [...argsFor(request.options), 'piece.sor', output],
      files,
      roll: { width: 1000, maxNotes: ROLL_MOST_NOTES },
    });
    const outBytes = result.files[output] || null;
    reply = {
      id: request.id,
      status: result.status,
      stderr: result.stderr,
      stdout: result.stdout,
      output,
      outBytes,
      roll: result.roll,
      rollNotes: result.roll ? countNotes(result.roll) : 0,
      // The findings of sorvel-hints go here once the browser entry runs it:
      // [{ line, column, length, text, fix }].
      hints: null,
      runMs: performance.now() - started,
    };
  } catch (e) {
    reply = { id: request.id, failed: String(e), runMs: performance.now() - started };
  }
  postMessage(reply);
}

onmessage = (event) => {
  latest = event.data;
  if (!scheduled) {
    scheduled = true;
    setTimeout(runLatest, 0);
  }
};
