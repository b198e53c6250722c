// The hints of sorvel-hints in the page: each finding in the input underlined
// in the editor (its text on hover, its fix as a button there), and listed in
// the hints panel with its place and, when it has one, its fix.
//
// A finding is as sorvel-hints --json writes it: { file, line, column,
// end_column, severity, code, message, fix: { line, column, end_column,
// text } }, lines and columns from 1, columns counted in bytes of the line,
// end exclusive; line or column null when it has none.
import { setDiagnostics, forEachDiagnostic } from '@codemirror/lint';

const encoder = new TextEncoder();
// A run with more findings shows the first this many (an input that makes
// thousands of the same hint says so in the first few).
const MOST = 500;

// The position in `text` of the character that starts at byte `column`
// (from 1) of its UTF-8 form.
function charAt(text, column) {
  let bytes = 0;
  let i = 0;
  while (i < text.length && bytes < column - 1) {
    const code = text.codePointAt(i);
    bytes += encoder.encode(String.fromCodePoint(code)).length;
    i += code > 0xffff ? 2 : 1;
  }
  return i;
}

// The span [from, to) of the document that line, column and end column name;
// null when the line is not in the document.
function span(doc, line, column, end) {
  if (!line || line < 1 || line > doc.lines) return null;
  const l = doc.line(line);
  const from = l.from + charAt(l.text, column || 1);
  const to = l.from + charAt(l.text, end || column || 1);
  return { from, to: Math.max(to, from) };
}

// Replaces what a finding's fix covers by its text. `from` is where the
// finding stands now (the document may have changed since the run).
function fixer(diagnostic, fixFrom, fixTo, text) {
  return (view, from) => {
    const shift = from - diagnostic.at;
    view.dispatch({ changes: { from: fixFrom + shift, to: fixTo + shift, insert: text } });
  };
}

export class Hints {
  // `main`: the input's file name in the findings; `open(file, line,
  // column)`: shows a place in another file.
  constructor(view, panel, main, open) {
    this.view = view;
    this.panel = panel;
    this.main = main;
    this.open = open;
    this.shown = null;
  }

  // The findings of the latest run (null: the page's Sorvel has no checker).
  show(all) {
    const findings = all && all.slice(0, MOST);
    const key = JSON.stringify(findings);
    if (key === this.shown) return;
    this.shown = key;
    const { doc } = this.view.state;
    const diagnostics = [];
    const items = [];
    for (const f of findings || []) {
      const item = { finding: f, diagnostic: null };
      items.push(item);
      // The run's error is underlined as it prints it; the rest are lint.
      if (f.file !== this.main || f.severity === 'error') continue;
      const at = span(doc, f.line, f.column, f.end_column);
      if (!at) continue;
      if (at.to === at.from) at.to = Math.min(doc.line(f.line).to, at.from + 1);
      const d = {
        from: at.from, to: at.to, at: at.from,
        severity: f.severity === 'warning' ? 'warning' : 'info',
        source: f.code,
        message: f.message,
      };
      const fix = f.fix && span(doc, f.fix.line, f.fix.column, f.fix.end_column);
      if (fix) d.actions = [{ name: `Fix: ${f.fix.text}`, apply: fixer(d, fix.from, fix.to, f.fix.text) }];
      diagnostics.push(d);
      item.diagnostic = d;
    }
    this.view.dispatch(setDiagnostics(this.view.state, diagnostics));
    this.list(findings, items, all ? all.length - findings.length : 0);
  }

  list(findings, items, more) {
    if (!findings) {
      this.panel.textContent = '(this build of the page has no hints)';
      return;
    }
    if (!findings.length) {
      this.panel.textContent = 'no hints';
      return;
    }
    this.panel.replaceChildren(...items.map(({ finding: f, diagnostic: d }) => {
      const row = document.createElement('div');
      row.className = `hint ${f.severity}`;
      row.dataset.code = f.code;
      const where = document.createElement('a');
      where.className = 'place';
      where.textContent = `${f.file === this.main ? 'line' : f.file + ', line'} ${f.line ?? '–'}`;
      where.href = '#';
      where.addEventListener('click', (e) => { e.preventDefault(); this.go(f, d); });
      const text = document.createElement('span');
      text.textContent = ` ${f.code}: ${f.message}`;
      row.append(where, text);
      if (d && d.actions) {
        const button = document.createElement('button');
        button.dataset.testid = 'fix';
        button.textContent = d.actions[0].name;
        button.addEventListener('click', () => this.apply(d));
        row.append(' ', button);
      }
      return row;
    }));
    if (more) this.panel.append(`… and ${more} more`);
  }

  // Where a finding stands now, through the edits made since the run.
  now(d) {
    let at = null;
    forEachDiagnostic(this.view.state, (x, from, to) => { if (x === d) at = { from, to }; });
    return at;
  }

  go(f, d) {
    if (f.file !== this.main) {
      this.open(f.file, f.line, f.column);
      return;
    }
    const at = d ? this.now(d) : span(this.view.state.doc, f.line, f.column, f.column);
    if (!at) return;
    this.view.dispatch({ selection: { anchor: at.from }, scrollIntoView: true });
    this.view.focus();
  }

  apply(d) {
    const at = this.now(d);
    if (at) d.actions[0].apply(this.view, at.from, at.to);
  }
}
