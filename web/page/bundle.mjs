// Builds the page into web/dist/page/ (run by web/build after the
// WebAssembly build): the editor, the worker running Sorvel, Csound's module
// (loaded on Play) and the repository's examples and orchestra, bundled so
// that the folder can be served from any static host and needs nothing else.
//   node web/page/bundle.mjs [dist]
import { readFileSync, readdirSync, mkdirSync, copyFileSync, rmSync, writeFileSync } from 'node:fs';
import { basename, dirname, join, resolve } from 'node:path';
import { fileURLToPath } from 'node:url';
import * as esbuild from 'esbuild';

const here = dirname(fileURLToPath(import.meta.url));
const root = resolve(here, '../..');
const dist = resolve(process.argv[2] || join(root, 'web/dist'));
const out = join(dist, 'page');

// The examples: every .sor of examples/ for the menu, every other file an
// input may include, and the orchestra for the second tab.
function examplesModule() {
  const dir = join(root, 'examples');
  const names = readdirSync(dir).sort();
  const examples = names.filter((n) => n.endsWith('.sor'))
    .map((name) => ({ name, text: readFileSync(join(dir, name), 'utf8') }));
  const includes = {};
  for (const name of names.filter((n) => n.endsWith('.inc'))) includes[name] = readFileSync(join(dir, name), 'utf8');
  const orchestra = readFileSync(join(dir, 'examples.orc'), 'utf8');
  return `export const examples = ${JSON.stringify(examples)};\n` +
    `export const includes = ${JSON.stringify(includes)};\n` +
    `export const orchestra = ${JSON.stringify(orchestra)};\n`;
}

const generated = {
  name: 'examples',
  setup(build) {
    build.onResolve({ filter: /examples\.gen\.js$/ }, () => ({ path: 'examples', namespace: 'examples' }));
    build.onLoad({ filter: /.*/, namespace: 'examples' }, () => ({ contents: examplesModule(), loader: 'js' }));
    build.onResolve({ filter: /dist\/sorvel-web\.mjs$/ }, () => ({ path: join(dist, 'sorvel-web.mjs') }));
  },
};

rmSync(out, { recursive: true, force: true });
mkdirSync(out, { recursive: true });
const built = await esbuild.build({
  metafile: true,
  entryPoints: [join(here, 'main.js'), join(here, 'worker.js')],
  outdir: out,
  bundle: true,
  splitting: true,
  format: 'esm',
  target: 'es2022',
  minify: true,
  sourcemap: false,
  legalComments: 'none',
  logLevel: 'warning',
  plugins: [generated],
});
copyFileSync(join(here, 'style.css'), join(out, 'style.css'));
// Csound's module is fetched with the page (and run only on Play), so that
// Play works offline once the page is loaded.
const csoundChunk = Object.entries(built.metafile.outputs)
  .find(([, o]) => Object.keys(o.inputs).some((i) => i.includes('@csound/browser')))?.[0];
let html = readFileSync(join(here, 'index.html'), 'utf8');
if (csoundChunk) {
  html = html.replace('</head>', `<link rel="modulepreload" href="${basename(csoundChunk)}">\n</head>`);
}
writeFileSync(join(out, 'index.html'), html);
console.log(`web/page: built ${out}`);
