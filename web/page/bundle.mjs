// Builds the page into web/dist/page/ (run by web/build after the
// WebAssembly build): the editor, the worker running Sorvel, Csound's module
// (loaded on Play) and the repository's examples and orchestra, bundled so
// that the folder can be served from any static host and needs nothing else.
//   node web/page/bundle.mjs [dist]
import { readFileSync, readdirSync, mkdirSync, copyFileSync, rmSync } from 'node:fs';
import { dirname, join, resolve } from 'node:path';
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
await esbuild.build({
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
for (const file of ['index.html', 'style.css']) copyFileSync(join(here, file), join(out, file));
console.log(`web/page: built ${out}`);
