// The VS Code task of editors/vscode/tasks.json: its problem matcher's
// regexp, run by JavaScript's own engine as VS Code runs it, must read every
// line sorvel-hints prints, and read the same file, line, column, severity
// and message as the JSON form says.
//
//   node tasks.mjs SORVEL_HINTS SOURCE_DIR
import { execFileSync } from 'node:child_process';
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';

const [hints, source] = process.argv.slice(2);
const tasks = JSON.parse(readFileSync(join(source, 'editors/vscode/tasks.json'), 'utf8'));
const task = tasks.tasks.find((t) => t.command === 'sorvel-hints');
const p = task.problemMatcher.pattern;
const regexp = new RegExp(p.regexp);

const inputs = {
  'hints.sor': '#defien A #1#\n#cnost B 2\ni1 = 3 0 1 {\n p2 $A\n p3 ~B\n}\n',
  'macro.sor': '#define NOTE #1#\ni1 = 3 0 1 {\n p2 $NOTS\n p3 1\n}\n',
  'warning.sor': 'i1 = 3 0 1 {\n\tp2 1 1\n p3 1\n}\n',
  'blank.sor': 'i1 = 4 0 1 {\n p2 1\n p3 1\n p4\n}\n',
  'noline.sor': 'i1 = 3 0 1 {\n p2 1\n',
  'a: b.sor': '#defien A #1#\n',  // a colon and a blank in the file's name
};

function run(args, cwd) {
  try {
    return execFileSync(hints, args, { cwd, encoding: 'utf8' });
  } catch (e) {
    return e.stdout;  // statuses 1 and 2 are findings too
  }
}

const work = mkdtempSync(join(tmpdir(), 'tasks-'));
let failed = 0;
let lines = 0;
try {
  for (const [name, text] of Object.entries(inputs)) writeFileSync(join(work, name), text);
  for (const name of Object.keys(inputs)) {
    const text = run([name], work).split('\n').filter((l) => l !== '');
    const json = JSON.parse(run(['--json', name], work));
    if (text.length !== json.length || text.length === 0) {
      console.log(`${name}: ${text.length} lines, ${json.length} findings`);
      failed++;
      continue;
    }
    text.forEach((line, i) => {
      const m = regexp.exec(line);
      const f = json[i];
      const got = m && {
        file: m[p.file],
        line: m[p.line] === undefined ? null : Number(m[p.line]),
        column: m[p.column] === undefined ? null : Number(m[p.column]),
        severity: m[p.severity],
        message: m[p.message],
      };
      const want = { file: f.file, line: f.line, column: f.column, severity: f.severity,
                     message: f.message };
      if (JSON.stringify(got) !== JSON.stringify(want)) {
        console.log(`${name}: the matcher reads\n  ${line}\nas ${JSON.stringify(got)}\n` +
                    `want ${JSON.stringify(want)}`);
        failed++;
      }
      lines++;
    });
  }
} finally {
  rmSync(work, { recursive: true, force: true });
}
console.log(failed ? `${failed} lines misread` : `ok: the problem matcher reads all ${lines} lines`);
process.exit(failed ? 1 : 0);
