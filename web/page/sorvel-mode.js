// Sorvel's highlighting for CodeMirror: a line tokenizer giving the same
// classes as the editor grammar (editors/vscode/syntaxes/sorvel.tmLanguage.json)
// gives its scopes: comments, directives, block headers, p-fields with their
// types, input types, generators and commands, pitch names, numbers, macros.
import { StreamLanguage, HighlightStyle, syntaxHighlighting } from '@codemirror/language';
import { tags as t } from '@lezer/highlight';

const INPUT_TYPE = /^(?:re[0-7]?|in|rh|db|nox?|opx?)(?![\w])/i;
const GENERATOR = /^(?:ra|rw|mo|se|ms|ho|ex|s2)(?=\s*\()/i;
const COMMAND = /^(?:te|rs|sr|rd|dv|pf)(?=\s*\()/i;
const PFIELD = /^p\d+(?:\s*\(\s*(?:re[0-7]?|in|db|hz|op|od|tr|bn[0-7]?|xx)\s*\))?/i;
const PITCH = /^[a-gA-G][sfn+\-]*\d?(?![\w])/;
const CURVE = /^(?:[cfelsCFELS]|[vV]\d*\.?\d+)\*?(?=\s*\[)/;
const NUMBER = /^[-+]?(?:\d+\.?\d*|\.\d+)/;
const WORD = /^[A-Za-z]\w*/;

// Characters after which a word does not start a new token (as the
// grammar's look-behind (?<![\w$~@.]) says).
function boundary(stream) {
  const before = stream.pos > 0 ? stream.string[stream.pos - 1] : ' ';
  return !/[\w$~@.]/.test(before);
}

function token(stream, state) {
  if (state.comment > 0) {
    while (!stream.eol()) {
      if (stream.match('/*')) state.comment++;
      else if (stream.match('*/')) { if (--state.comment === 0) break; }
      else stream.next();
    }
    return 'comment';
  }
  if (stream.sol()) state.header = false;
  if (stream.eatSpace()) return null;
  if (stream.match('/*')) { state.comment = 1; return 'comment'; }
  if (stream.peek() === ';') { stream.skipToEnd(); return 'comment'; }
  if (stream.sol() || /^\s*$/.test(stream.string.slice(0, stream.pos))) {
    if (stream.match(/^>.*/)) return 'string';
    if (stream.match(/^#include\s*\|[^|]*\|/)) return 'meta';
    if (stream.match(/^#(?:define|undef|const|if|endif)/)) return 'keyword';
    if (stream.match(/^i-?\d*(?=\$|\s*=)/)) { state.header = true; return 'heading'; }
  }
  if (stream.match(/^#(?:define|undef|const|if|endif|include)/)) return 'keyword';
  if (stream.match(/^\$[A-Za-z]\w*/)) return 'macroName';
  if (stream.match(/^~@[1-4]?/) || stream.match(/^@[1-4]/)) return 'variableName.special';
  if (stream.match(/^~[A-Za-z]\w*/)) return 'tildeName';
  if (stream.match(/^[{}]/)) return 'brace';
  if (stream.match(/^[\[\]()]/)) return 'bracket';
  if (stream.eat('?')) return 'atom';
  if (boundary(stream)) {
    if (stream.match(PFIELD)) return 'propertyName';
    if (stream.match(INPUT_TYPE)) return 'typeName';
    if (stream.match(GENERATOR)) return 'generator';
    if (stream.match(COMMAND)) return 'command';
    if (stream.match(/^x\d+/)) return 'operator';
    if (stream.match(/^[rR](?![\w])/)) return 'atom';
    if (stream.match(/^[zZ](?![\w])/)) return 'atom';
    if (stream.match(CURVE)) return 'keyword';
    if (stream.match(PITCH)) return 'string.special';
  }
  if (stream.match(NUMBER)) return 'number';
  if (stream.match(/^[x*i](?=\[)/)) return 'operator';
  if (stream.match(/^[-+*/%=:'<>]/)) return 'operator';
  if (stream.match(WORD)) return 'variableName';
  stream.next();
  return null;
}

export const sorvelLanguage = StreamLanguage.define({
  name: 'sorvel',
  startState: () => ({ comment: 0, header: false }),
  copyState: (s) => ({ ...s }),
  token,
  tokenTable: {
    generator: t.function(t.variableName),
    command: t.special(t.function(t.variableName)),
    tildeName: t.constant(t.variableName),
  },
  languageData: { commentTokens: { line: ';', block: { open: '/*', close: '*/' } } },
});

// Colours after the usual light theme of the editors.
export const sorvelHighlight = syntaxHighlighting(HighlightStyle.define([
  { tag: t.comment, color: '#6a737d', fontStyle: 'italic' },
  { tag: [t.keyword, t.meta], color: '#8250df' },
  { tag: t.heading, color: '#0550ae', fontWeight: 'bold' },
  { tag: t.propertyName, color: '#953800' },
  { tag: t.typeName, color: '#116329' },
  { tag: [t.function(t.variableName), t.special(t.function(t.variableName))], color: '#0550ae' },
  { tag: t.number, color: '#0a3069' },
  { tag: t.special(t.string), color: '#a0111f' },
  { tag: t.string, color: '#57606a' },
  { tag: [t.atom, t.constant(t.variableName), t.special(t.variableName)], color: '#cf222e' },
  { tag: t.macroName, color: '#8250df' },
  { tag: t.operator, color: '#444' },
  { tag: [t.brace, t.bracket], color: '#555' },
]));
