// Play: Csound itself, in the page, renders the score through the orchestra
// to a WAV file in its own file system; the page then plays that file.
// Csound's module is large, so it is loaded only when first asked for.
let loading = null;

function loadCsound() {
  loading ??= import('@csound/browser/dist/csound.js').then((m) => m.Csound);
  return loading;
}

// Renders `score` with `orchestra`; resolves to the WAV's bytes and the
// messages Csound printed.
export async function renderWav(orchestra, score, { timeoutMs = 120000 } = {}) {
  const Csound = await loadCsound();
  const messages = [];
  const csound = await Csound({ useWorker: false });
  if (!csound) throw new Error('this browser has no Web Audio');
  csound.on('message', (m) => messages.push(m));
  const ended = new Promise((resolve, reject) => {
    const timer = setTimeout(() => reject(new Error('the render did not end')), timeoutMs);
    const done = () => { clearTimeout(timer); resolve(); };
    csound.on('renderEnded', done);
    csound.on('realtimePerformanceEnded', done);
  });
  await csound.setOption('-W');
  await csound.setOption('-o/out.wav');
  if ((await csound.compileOrc(orchestra)) !== 0) {
    await csound.cleanup();
    throw new Error(`the orchestra does not compile:\n${messages.join('\n')}`);
  }
  await csound.readScore(score);
  await csound.start();
  await ended;
  // Only once Csound is cleaned up is the WAV's header finished and its
  // last block written.
  await csound.cleanup();
  const wav = await csound.fs.readFile('/out.wav');
  return { wav: new Uint8Array(wav), messages };
}
