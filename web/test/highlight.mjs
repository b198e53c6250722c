// The page's highlighting against the editor grammar: every example is
// tokenized by the page's tokenizer (web/page/sorvel-mode.js) and by the
// TextMate grammar of editors/vscode, and at the first character of each of
// the grammar's tokens of the kinds below, both must say the same kind.
//   node web/test/highlight.mjs SOURCE_DIR
// Exits 77 (skipped) without the npm packages of web/ and tests/editors,
// unless CI is set.
import fs from 'node:fs';
import path from 'node:path';
import { createRequire } from 'node:module';

const src = path.resolve(process.argv[2] || '.');
const editors = path.join(src, 'tests/editors/node_modules');
const web = path.join(src, 'web/node_modules');
if (!fs.existsSync(path.join(editors, 'vscode-textmate')) || !fs.existsSync(path.join(web, '@codemirror/language'))) {
  console.log('highlight test: npm packages missing (npm ci in web and in tests/editors)');
  process.exit(process.env.CI ? 1 : 77);
}
const requireEditors = createRequire(path.join(editors, 'x.js'));
const vsctm = requireEditors('vscode-textmate');
const oniguruma = requireEditors('vscode-oniguruma');
const { EditorState } = await import(path.join(web, '@codemirror/state/dist/index.js'));
const { ensureSyntaxTree } = await import(path.join(web, '@codemirror/language/dist/index.js'));
const { highlightTree, tags: t, tagHighlighter } = await import(path.join(web, '@lezer/highlight/dist/index.js'));
const { sorvelLanguage } = await import(path.join(src, 'web/page/sorvel-mode.js'));

const wasm = fs.readFileSync(requireEditors.resolve('vscode-oniguruma/release/onig.wasm'));
await oniguruma.loadWASM(wasm.buffer.slice(wasm.byteOffset, wasm.byteOffset + wasm.byteLength));
const grammarPath = path.join(src, 'editors/vscode/syntaxes/sorvel.tmLanguage.json');
const registry = new vsctm.Registry({
  onigLib: Promise.resolve({
    createOnigScanner: (p) => new oniguruma.OnigScanner(p),
    createOnigString: (s) => new oniguruma.OnigString(s),
  }),
  loadGrammar: async () => vsctm.parseRawGrammar(fs.readFileSync(grammarPath, 'utf8'), grammarPath),
});
const grammar = await registry.loadGrammar('source.sorvel');

// The kinds compared, by the grammar's scope and by the page's tag.
function scopeKind(scopes) {
  const s = scopes[scopes.length - 1];
  if (scopes.some((x) => x.startsWith('comment.'))) return 'comment';
  if (s.startsWith('constant.numeric')) return 'number';
  if (s === 'constant.other.pitch.sorvel') return 'pitch';
  if (s.startsWith('storage.type.input')) return 'input type';
  if (s.startsWith('support.function.command')) return 'command';
  if (s.startsWith('variable.parameter.pfield')) return 'p-field';
  return null;
}
const kinds = tagHighlighter([
  { tag: t.comment, class: 'comment' },
  { tag: t.number, class: 'number' },
  { tag: t.special(t.string), class: 'pitch' },
  { tag: t.typeName, class: 'input type' },
  { tag: t.special(t.function(t.variableName)), class: 'command' },
  { tag: t.propertyName, class: 'p-field' },
]);

let checked = 0;
let failures = 0;
const examples = fs.readdirSync(path.join(src, 'examples')).filter((n) => /\.(sor|inc)$/.test(n));
for (const name of examples) {
  const text = fs.readFileSync(path.join(src, 'examples', name), 'utf8');
  const state = EditorState.create({ doc: text, extensions: [sorvelLanguage] });
  const tree = ensureSyntaxTree(state, state.doc.length, 5000);
  const pageKind = new Array(text.length).fill(null);
  highlightTree(tree, kinds, (from, to, cls) => { for (let i = from; i < to; i++) pageKind[i] = cls; });
  let stack = vsctm.INITIAL;
  let offset = 0;
  text.split('\n').forEach((line, n) => {
    const r = grammar.tokenizeLine(line, stack);
    stack = r.ruleStack;
    for (const token of r.tokens) {
      const want = scopeKind(token.scopes);
      const text2 = line.slice(token.startIndex, token.endIndex);
      if (!want || !text2.trim()) continue;
      const at = offset + token.startIndex + (text2.length - text2.trimStart().length);
      checked++;
      if (pageKind[at] !== want) {
        failures++;
        if (failures <= 20) console.log(`FAIL ${name}:${n + 1}: "${text2.trim()}" is ${want} in the grammar, ${pageKind[at]} in the page`);
      }
    }
    offset += line.length + 1;
  });
}
console.log(`${checked} tokens compared, ${failures} differ`);
process.exit(failures || checked === 0 ? 1 : 0);
