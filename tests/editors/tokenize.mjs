// tokenize.mjs -- tokenizes Sorvel inputs with the TextMate engine that VS
// Code uses (vscode-textmate and vscode-oniguruma, pinned by
// package-lock.json beside this file) and the grammar of editors/vscode, and
// checks the scopes of representative tokens: comments of both kinds,
// g-block and i-block commands, p-field names and output specifiers, input
// types, dynamic data functions, rhythm codes and pitch names, macros and
// their calls, constants, #include, #if/#endif. It also checks that the Vim
// syntax file lists the same words as the grammar.
//
//   node tokenize.mjs SOURCE_DIR
//
// Exit status: 0 all good, 1 a failure, 77 (reported as skipped) when the
// npm packages are not installed (npm ci in this directory), unless the
// environment variable CI is set: CI must run the test.
import fs from 'node:fs';
import path from 'node:path';
import { createRequire } from 'node:module';
import { fileURLToPath } from 'node:url';

const here = path.dirname(fileURLToPath(import.meta.url));
const src = process.argv[2];
if (!src) {
  console.log('usage: node tokenize.mjs SOURCE_DIR');
  process.exit(2);
}
if (!fs.existsSync(path.join(here, 'node_modules', 'vscode-textmate'))) {
  console.log('vscode-textmate is not installed (run npm ci in tests/editors)');
  process.exit(process.env.CI ? 1 : 77);
}
const require = createRequire(import.meta.url);
const vsctm = require('vscode-textmate');
const oniguruma = require('vscode-oniguruma');

const wasm = fs.readFileSync(require.resolve('vscode-oniguruma/release/onig.wasm'));
await oniguruma.loadWASM(wasm.buffer.slice(wasm.byteOffset, wasm.byteOffset + wasm.byteLength));
// The extension's manifest names the grammar, its scope and the file type.
const manifest = JSON.parse(fs.readFileSync(path.join(src, 'editors/vscode/package.json'), 'utf8'));
const contributed = manifest.contributes.grammars[0];
const grammarPath = path.join(src, 'editors/vscode', contributed.path);
if (contributed.scopeName !== 'source.sorvel' || !fs.existsSync(grammarPath) ||
    !manifest.contributes.languages[0].extensions.includes('.sor')) {
  console.log('FAIL: editors/vscode/package.json does not contribute the grammar for .sor files');
  process.exit(1);
}
const registry = new vsctm.Registry({
  onigLib: Promise.resolve({
    createOnigScanner: (patterns) => new oniguruma.OnigScanner(patterns),
    createOnigString: (s) => new oniguruma.OnigString(s),
  }),
  loadGrammar: async (scope) =>
    scope === 'source.sorvel'
      ? vsctm.parseRawGrammar(fs.readFileSync(grammarPath, 'utf8'), grammarPath)
      : null,
});
const grammar = await registry.loadGrammar('source.sorvel');

// Every line of a file as a list of tokens { text, scopes }.
function tokenize(file) {
  const lines = fs.readFileSync(file, 'utf8').split('\n');
  let stack = vsctm.INITIAL;
  return lines.map((line) => {
    const r = grammar.tokenizeLine(line, stack);
    stack = r.ruleStack;
    return r.tokens.map((t) => ({ text: line.slice(t.startIndex, t.endIndex), scopes: t.scopes }));
  });
}

// [file, a text (or a RegExp) that picks the line: its first line holding it;
// a text in that line: its first occurrence not joined to letters or digits
// around it (where the text begins or ends with one); a scope that
// the token at its first character must have ("-" + scope: must not have)].
const expectations = [
  ['examples/first.sor', '; first.sor --', '; first.sor -- a first Sorvel input.', 'comment.line.semicolon.sorvel'],
  ['examples/first.sor', 'te(90)', 'te', 'support.function.command.sorvel'],
  ['examples/first.sor', 'i1 = 5 0 4 {', 'i1', 'entity.name.section.instrument.sorvel'],
  ['examples/first.sor', 'i1 = 5 0 4 {', '{', 'punctuation.section.block.begin.sorvel'],
  ['examples/first.sor', 'p2 rh 4', 'p2', 'variable.parameter.pfield.sorvel'],
  ['examples/first.sor', 'p2 rh 4', 'rh', 'storage.type.input.sorvel'],
  ['examples/first.sor', 'p2 rh 4', '4', 'constant.numeric.rhythm.sorvel'],
  ['examples/first.sor', 'p4 db 70', 'db', 'storage.type.input.sorvel'],
  ['examples/first.sor', 'p4 db 70', '70', 'constant.numeric.sorvel'],
  ['examples/first.sor', 'p5(op) no', 'op', 'storage.modifier.output.sorvel'],
  ['examples/first.sor', 'p5(op) no', 'no', 'storage.type.input.sorvel'],
  ['examples/first.sor', 'p5(op) no', 'c4', 'constant.other.pitch.sorvel'],
  ['examples/first.sor', 'p5(op) no', 'f', 'constant.other.pitch.sorvel'],
  ['examples/first.sor', 'p5(op) no', 'pitch', 'comment.line.semicolon.sorvel'],
  ['examples/first.sor', /^}/, '}', 'punctuation.section.block.end.sorvel'],
  ['examples/melody.sor', 'p2 rh 4. 8', '4.', 'constant.numeric.rhythm.sorvel'],
  ['examples/melody.sor', 'p4(in) db', 'in', 'storage.modifier.output.sorvel'],
  ['examples/chords.sor', 'p5(op) no <', '<', 'keyword.operator.loop.sorvel'],
  ['examples/chords.sor', 'p5(op) no <', ':', 'keyword.operator.fuse.sorvel'],
  ['examples/chords.sor', 'p5(op) no <', 'g3', 'constant.other.pitch.sorvel'],
  ['examples/chords.sor', 'p4(in) <', '9000', 'constant.numeric.sorvel'],
  ['examples/chordcloud.sor', 'rs(33)', 'rs', 'support.function.command.sorvel'],
  ['examples/chordcloud.sor', 'p5(hz) no s2', 'hz', 'storage.modifier.output.sorvel'],
  ['examples/chordcloud.sor', 'p5(hz) no s2', 's2', 'support.function.ddf.sorvel'],
  ['examples/chordcloud.sor', 'p5(hz) no s2', 'T', 'constant.language.duration.sorvel'],
  ['examples/chordcloud.sor', 'p5(hz) no s2', '*', 'keyword.operator.choice.sorvel'],
  ['examples/chordcloud.sor', 'p5(hz) no s2', 'e4', 'constant.other.pitch.sorvel'],
  ['examples/chordcloud.sor', '.4 x[c3', 'x', 'keyword.operator.choice.sorvel'],
  ['examples/chordcloud.sor', '.4 x[c3', 'b3', 'constant.other.pitch.sorvel'],
  ['examples/chordcloud.sor', 'p2 rh se', 'se', 'support.function.ddf.sorvel'],
  ['examples/chordcloud.sor', 'p2 rh se', '4.', 'constant.numeric.rhythm.sorvel'],
  ['examples/cloud.sor', 'p2 mo(T 1 e', 'mo', 'support.function.ddf.sorvel'],
  ['examples/cloud.sor', 'p2 mo(T 1 e', 'e', 'keyword.other.curve.sorvel'],
  ['examples/cloud.sor', 'p4 db ra(T 1 [t', 'ra', 'support.function.ddf.sorvel'],
  ['examples/cloud.sor', 'p4 db ra(T 1 [t', 't', 'keyword.other.distribution.sorvel'],
  ['examples/cloud.sor', 'p5(hz) nox mo', 'nox', 'storage.type.input.sorvel'],
  ['examples/cloud.sor', 'p5(hz) nox mo', 's', 'keyword.other.curve.sorvel'],
  ['examples/cloud.sor', 'p5(hz) nox mo', 'c7', 'constant.other.pitch.sorvel'],
  ['examples/derived.sor', 'p4 ex(T 1', 'ex', 'support.function.ddf.sorvel'],
  ['examples/derived.sor', 'p4 ex(T 1', 'p5', 'variable.parameter.pfield.sorvel'],
  ['examples/derived.sor', 'p6 ex(T 1 i[', 'i', 'keyword.operator.choice.sorvel'],
  ['examples/walk.sor', 'p5(op) no rw', 'rw', 'support.function.ddf.sorvel'],
  ['examples/variants.sor', '#include', '#include', 'keyword.control.directive.include.sorvel'],
  ['examples/variants.sor', '#include', 'instruments.inc', 'string.quoted.other.include.sorvel'],
  ['examples/variants.sor', '#const VARIANT', '#const', 'keyword.control.directive.const.sorvel'],
  ['examples/variants.sor', '#const VARIANT', 'VARIANT', 'entity.name.constant.sorvel'],
  ['examples/variants.sor', '#define MOTIF', '#define', 'keyword.control.directive.define.sorvel'],
  ['examples/variants.sor', '#define MOTIF', 'MOTIF', 'entity.name.function.macro.sorvel'],
  ['examples/variants.sor', '#define MOTIF', 'b', 'variable.parameter.macro.sorvel'],
  ['examples/variants.sor', '#define MOTIF', '$c', 'meta.function-call.macro.sorvel'],
  ['examples/variants.sor', '#define MOTIF', '$c', 'meta.macro.body.sorvel'],
  ['examples/variants.sor', '#if(~VARIANT)', '#if', 'keyword.control.directive.conditional.sorvel'],
  ['examples/variants.sor', '#if(~VARIANT)', 'VARIANT', 'variable.other.constant.sorvel'],
  ['examples/variants.sor', '#if(~[1 - VARIANT])', 'VARIANT', 'meta.equation.sorvel'],
  ['examples/variants.sor', '#if(~[1 - VARIANT])', '-', 'keyword.operator.arithmetic.sorvel'],
  ['examples/variants.sor', '#endif', '#endif', 'keyword.control.directive.conditional.sorvel'],
  ['examples/variants.sor', 'i$LEAD = 5 0 8 {', 'i', 'entity.name.section.instrument.sorvel'],
  ['examples/variants.sor', 'i$LEAD = 5 0 8 {', 'LEAD', 'entity.name.function.macro.call.sorvel'],
  ['examples/variants.sor', 'p3 ~LEAD_LEGATO', 'LEAD_LEGATO', 'variable.other.constant.sorvel'],
  ['examples/variants.sor', 'p5(op) no $MOTIF(c4', 'MOTIF', 'entity.name.function.macro.call.sorvel'],
  ['examples/variants.sor', 'p5(op) no $MOTIF(c4', 'c4', 'constant.other.pitch.sorvel'],
  ['examples/variants.sor', 'p5(op) no $MOTIF(c4', "'", 'keyword.operator.fuse.sorvel'],
  ['examples/instruments.inc', '#define LEAD', 'LEAD', 'entity.name.function.macro.sorvel'],
  ['examples/instruments.inc', '#define LEAD', '1', 'meta.macro.body.sorvel'],
  ['examples/instruments.inc', '#const LEAD_AMP', 'LEAD_AMP', 'entity.name.constant.sorvel'],
  ['tests/editors/more.sor', '/* a block', '/*', 'comment.block.sorvel'],
  ['tests/editors/more.sor', 'still inside', 'still inside */ and out again', 'comment.block.sorvel'],
  ['tests/editors/more.sor', 'p2 rs(3) 1', '1', '-comment.block.sorvel'],
  ['tests/editors/more.sor', '> f1 0', 'f1 0 4096 10 1 ; kept', 'string.unquoted.output.sorvel'],
  ['tests/editors/more.sor', '> f1 0', '>', 'keyword.operator.output.sorvel'],
  ['tests/editors/more.sor', 'SR(48000)', 'SR', 'support.function.command.sorvel'],
  ['tests/editors/more.sor', 'RD(.1)', 'RD', 'support.function.command.sorvel'],
  ['tests/editors/more.sor', '#undef M', '#undef', 'keyword.control.directive.undef.sorvel'],
  ['tests/editors/more.sor', 'i2 = 5 ~@4', '@4', 'variable.language.run-value.sorvel'],
  ['tests/editors/more.sor', 'p3 pf(.5) 1', 'pf', 'support.function.command.sorvel'],
  ['tests/editors/more.sor', 'p4(re2) dv(.1) 5 x3 z', 're2', 'storage.modifier.output.sorvel'],
  ['tests/editors/more.sor', 'p4(re2) dv(.1) 5 x3 z', 'dv', 'support.function.command.sorvel'],
  ['tests/editors/more.sor', 'p4(re2) dv(.1) 5 x3 z', 'x3', 'keyword.operator.repeat.sorvel'],
  ['tests/editors/more.sor', 'p4(re2) dv(.1) 5 x3 z', 'z', 'constant.language.last-value.sorvel'],
  ['tests/editors/more.sor', 'p5(bn4) nox', 'bn4', 'storage.modifier.output.sorvel'],
  ['tests/editors/more.sor', 'p5(bn4) nox', 'c+4', 'constant.other.pitch.sorvel'],
  ['tests/editors/more.sor', 'p5(bn4) nox', 'r', 'constant.other.pitch.rest.sorvel'],
  ['tests/editors/more.sor', 'p5(bn4) nox', 'ho', 'support.function.ddf.sorvel'],
  ['tests/editors/more.sor', 'p5(bn4) nox', 'ms', 'support.function.ddf.sorvel'],
  ['tests/editors/more.sor', 'p5(bn4) nox', 'v2', 'keyword.other.curve.sorvel'],
  ['tests/editors/more.sor', 'p5(bn4) nox', 'eb4', '-constant.other.pitch.sorvel'],
  ['tests/editors/more.sor', 'p5(bn4) nox', '~[?', 'meta.equation.sorvel'],
  ['tests/editors/more.sor', 'p5(bn4) nox', '?', 'constant.language.random.sorvel'],
  ['tests/editors/more.sor', 'p6 in 4', '4', '-constant.numeric.rhythm.sorvel'],
  ['tests/editors/more.sor', 'p6 in 4', 'in', 'storage.type.input.sorvel'],
  ['tests/editors/more.sor', 'p6 in 4', 'c4', '-constant.other.pitch.sorvel'],
];

let failed = 0;
const cache = new Map();
for (const [file, pick, text, scope] of expectations) {
  if (!cache.has(file)) cache.set(file, tokenize(path.join(src, file)));
  const lines = cache.get(file);
  const source = fs.readFileSync(path.join(src, file), 'utf8').split('\n');
  const n = source.findIndex((l) => (pick instanceof RegExp ? pick.test(l) : l.includes(pick)));
  const where = `${file}:${n + 1}`;
  if (n < 0) {
    console.log(`FAIL: ${file}: no line holds "${pick}"`);
    failed++;
    continue;
  }
  const word = /[A-Za-z0-9_]/;
  let col = source[n].indexOf(text);
  const joined = (c) =>
    (word.test(text[0]) && word.test(source[n][c - 1] ?? ' ')) ||
    (word.test(text[text.length - 1]) && word.test(source[n][c + text.length] ?? ' '));
  while (col >= 0 && joined(col)) {
    col = source[n].indexOf(text, col + 1);
  }
  let start = 0;
  const token = col < 0 ? undefined : lines[n].find((t) => (start += t.text.length) > col);
  const negated = scope.startsWith('-');
  const name = negated ? scope.slice(1) : scope;
  if (!token) {
    console.log(`FAIL: ${where}: no token "${text}" in: ${source[n]}`);
    console.log('      tokens: ' + lines[n].map((t) => JSON.stringify(t.text)).join(' '));
    failed++;
  } else if (token.scopes.includes(name) === negated) {
    console.log(`FAIL: ${where}: "${text}" ${negated ? 'has' : 'lacks'} ${name}: ${token.scopes.join(' ')}`);
    failed++;
  }
}

// Every example is tokenized, and no line may leave a block comment, macro
// body or other region open at its end where the file ends.
const examples = fs.readdirSync(path.join(src, 'examples')).filter((f) => /\.(sor|inc)$/.test(f));
for (const f of examples) {
  let stack = vsctm.INITIAL;
  for (const line of fs.readFileSync(path.join(src, 'examples', f), 'utf8').split('\n')) {
    stack = grammar.tokenizeLine(line, stack).ruleStack;
  }
  if (stack.depth > 1) {
    console.log(`FAIL: examples/${f}: a region is still open at the end of the file`);
    failed++;
  }
}

// The Vim syntax file lists the same words as the grammar.
const json = JSON.parse(fs.readFileSync(grammarPath, 'utf8'));
const vim = fs.readFileSync(path.join(src, 'editors/vim/syntax/sorvel.vim'), 'utf8');
const words = (regex) => {
  const m = /\(\?i:([^)]*)\)/.exec(regex);
  return m[1].split('|').flatMap((w) => {
    const digits = /^(\w+)\[0-7\]\?$/.exec(w);
    if (digits) return [digits[1], ...[0, 1, 2, 3, 4, 5, 6, 7].map((d) => digits[1] + d)];
    const x = /^(\w+)x\?$/.exec(w);
    if (x) return [x[1], x[1] + 'x'];
    return [w];
  });
};
const vimWords = (group) => {
  const found = [];
  for (const m of vim.matchAll(new RegExp(`^syn keyword ${group}\\s+(.*)$`, 'gm'))) {
    found.push(...m[1].split(/\s+/).filter((w) => w && w !== 'contained' && !w.includes('=')));
  }
  return found;
};
const lists = [
  ['dynamic data functions', json.repository.ddf.patterns[0].match, 'sorvelDdf'],
  ['commands', json.repository.commands.match, 'sorvelCommand'],
  ['input types', json.repository['input-type'].match, 'sorvelInputType'],
  ['output specifiers', json.repository.pfield.match, 'sorvelOutputType'],
];
for (const [what, regex, group] of lists) {
  const a = [...new Set(words(regex))].sort().join(' ');
  const b = [...new Set(vimWords(group))].sort().join(' ');
  if (a !== b) {
    console.log(`FAIL: ${what}: the grammar has [${a}], the Vim file (${group}) [${b}]`);
    failed++;
  }
}

if (failed) {
  console.log(`${failed} check(s) failed`);
  process.exit(1);
}
console.log(`ok: ${expectations.length} tokens of ${cache.size} files and ${examples.length} examples, the Vim word lists`);
