// A piece in the page's address: the input, orchestra and options as JSON,
// deflated and written in base64url.
async function through(bytes, stream) {
  const out = new Response(new Blob([bytes]).stream().pipeThrough(stream));
  return new Uint8Array(await out.arrayBuffer());
}

function toBase64url(bytes) {
  let s = '';
  for (let i = 0; i < bytes.length; i += 0x8000) s += String.fromCharCode(...bytes.subarray(i, i + 0x8000));
  return btoa(s).replace(/\+/g, '-').replace(/\//g, '_').replace(/=+$/, '');
}

function fromBase64url(text) {
  const s = atob(text.replace(/-/g, '+').replace(/_/g, '/'));
  return Uint8Array.from(s, (c) => c.charCodeAt(0));
}

export async function packShare(piece) {
  const json = new TextEncoder().encode(JSON.stringify(piece));
  return toBase64url(await through(json, new CompressionStream('deflate-raw')));
}

export async function unpackShare(text) {
  const json = await through(fromBase64url(text), new DecompressionStream('deflate-raw'));
  return JSON.parse(new TextDecoder().decode(json));
}
