// Serves the built page (web/dist/page/) on 127.0.0.1, as any static host
// would:   node web/page/serve.mjs [port] [folder]
import { createServer } from 'node:http';
import { readFile, stat } from 'node:fs/promises';
import { dirname, extname, join, normalize, resolve } from 'node:path';
import { fileURLToPath } from 'node:url';

const here = dirname(fileURLToPath(import.meta.url));
const port = Number(process.argv[2] || process.env.PORT || 8020);
const folder = resolve(process.argv[3] || join(here, '../dist/page'));
const types = {
  '.html': 'text/html; charset=utf-8', '.js': 'text/javascript', '.mjs': 'text/javascript',
  '.css': 'text/css', '.wasm': 'application/wasm', '.svg': 'image/svg+xml', '.png': 'image/png',
};

export function servePage(dir = folder) {
  return createServer(async (req, res) => {
    const path = decodeURIComponent(new URL(req.url, 'http://x').pathname);
    let file = normalize(join(dir, path));
    if (!file.startsWith(dir)) { res.writeHead(403).end(); return; }
    try {
      if ((await stat(file)).isDirectory()) file = join(file, 'index.html');
      const body = await readFile(file);
      res.writeHead(200, { 'content-type': types[extname(file)] || 'application/octet-stream' });
      res.end(body);
    } catch {
      res.writeHead(404).end('not found');
    }
  });
}

if (process.argv[1] === fileURLToPath(import.meta.url)) {
  servePage().listen(port, '127.0.0.1', () => {
    console.log(`Sorvel's page: http://127.0.0.1:${port}/  (Ctrl-C to stop)`);
  });
}
