// Where Sorvel's error message points: "ERROR: Line N: ..." followed by the
// line as read and a caret under the column.
export function errorPlace(stderr) {
  const lines = stderr.split('\n');
  for (let i = 0; i < lines.length; i++) {
    const m = /^ERROR: Line (\d+): ?(.*)$/.exec(lines[i]);
    if (!m) continue;
    let column = 0;
    const caret = lines[i + 2] ?? '';
    if (/^\s*\^\s*$/.test(caret)) column = caret.indexOf('^');
    return { line: Number(m[1]), column, message: m[2] };
  }
  return null;
}
