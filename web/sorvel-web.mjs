// Sorvel in a page: one call runs a whole Sorvel run on files held in memory,
// through the same driver as the command line.
//
//   import { loadSorvel } from './sorvel-web.mjs';
//   const sorvel = await loadSorvel();          // once: compiles the module
//   const result = sorvel.run({                 // as often as needed
//     args: ['-l', 'piece.log', 'piece.sor', 'piece.sco'],
//     files: { 'piece.sor': text, 'strings.inc': text },  // string or Uint8Array
//   });
//
// `args` are the command line's arguments after the program name; `files`
// the input and its include files, by name relative to the working directory.
// The result holds the exit status (0 or 1), the standard error and standard
// output streams (as text, and as bytes in stderrBytes and stdoutBytes) and,
// in `files`, every file the run wrote (score or MIDI file, log, expansion
// file), by name, as bytes. Each run starts in an empty working directory.
//
// With `roll: true` (or `roll: { width, maxNotes }`: as sorvel-roll's --width
// and --max-notes), the run also draws its piano roll as sorvel-roll does:
// `result.roll` is the SVG text when the run succeeds, else null, and
// `result.rollNotes` the number of notes it shows.
//
// With `hints: true`, the hints checker of sorvel-hints watches the run:
// `result.hints` is { findings, lines }: the findings as sorvel-hints --json
// writes them, and where the run's lines come from ([run line, file, line of
// the file] from each point on, in the order the run read them).
import createSorvelCore from './sorvel-core.mjs';

const WORK = '/work';
const STREAMS = '/streams';

const encoder = new TextEncoder();
const decoder = new TextDecoder();

function toBytes(content) {
  return typeof content === 'string' ? encoder.encode(content) : new Uint8Array(content);
}

function sameBytes(a, b) {
  if (a.length !== b.length) return false;
  for (let i = 0; i < a.length; i++) if (a[i] !== b[i]) return false;
  return true;
}

// Every file below dir, by path relative to it.
function listFiles(FS, dir, prefix = '') {
  const names = [];
  for (const entry of FS.readdir(dir)) {
    if (entry === '.' || entry === '..') continue;
    const path = `${dir}/${entry}`;
    if (FS.isDir(FS.stat(path).mode)) names.push(...listFiles(FS, path, `${prefix}${entry}/`));
    else names.push(prefix + entry);
  }
  return names;
}

function removeTree(FS, dir) {
  for (const entry of FS.readdir(dir)) {
    if (entry === '.' || entry === '..') continue;
    const path = `${dir}/${entry}`;
    if (FS.isDir(FS.lstat(path).mode)) {
      removeTree(FS, path);
      FS.rmdir(path);
    } else {
      FS.unlink(path);
    }
  }
}

function writeInput(FS, name, bytes) {
  const parts = name.split('/');
  let dir = WORK;
  for (const part of parts.slice(0, -1)) {
    dir = `${dir}/${part}`;
    if (!FS.analyzePath(dir).exists) FS.mkdir(dir);
  }
  FS.writeFile(`${WORK}/${name}`, bytes);
}

export async function loadSorvel() {
  const core = await createSorvelCore({ print() {}, printErr() {} });
  const FS = core.FS;
  // Files in memory grow by doubling: the file system's own rule (an eighth
  // at a time past 1 MB) copies a large score many times over as it grows.
  const MEMFS = FS.filesystems.MEMFS;
  const expand = MEMFS.expandFileStorage;
  MEMFS.expandFileStorage = (node, capacity) => {
    const held = node.contents ? node.contents.length : 0;
    expand(node, capacity > held ? Math.max(capacity, 2 * held) : capacity);
  };
  FS.mkdir(WORK);
  FS.mkdir(STREAMS);
  let broken = null;

  // C strings in the module's memory, freed by the returned function.
  function cStrings(strings) {
    const pointers = strings.map((s) => {
      const bytes = encoder.encode(s);
      const p = core._malloc(bytes.length + 1);
      core.HEAPU8.set(bytes, p);
      core.HEAPU8[p + bytes.length] = 0;
      return p;
    });
    const array = core._malloc(4 * (pointers.length + 1));
    const view = new Uint32Array(core.HEAPU8.buffer, array, pointers.length + 1);
    pointers.forEach((p, i) => { view[i] = p; });
    view[pointers.length] = 0;
    return { array, pointers, free() { pointers.forEach((p) => core._free(p)); core._free(array); } };
  }

  function run({ args = [], files = {}, roll = false, hints = false } = {}) {
    if (broken) throw new Error(`Sorvel's module stopped in an earlier run (${broken}); load it again`);
    removeTree(FS, WORK);
    FS.chdir(WORK);
    const given = new Map();
    for (const [name, content] of Object.entries(files)) {
      const bytes = toBytes(content);
      writeInput(FS, name, bytes);
      given.set(name, bytes);
    }
    const argv = cStrings(['sorvel', ...args]);
    const paths = cStrings([`${STREAMS}/stderr`, `${STREAMS}/stdout`, `${STREAMS}/roll.svg`,
                            `${STREAMS}/hints.json`]);
    const notes = core._malloc(4);
    for (const name of ['roll.svg', 'hints.json']) {
      if (FS.analyzePath(`${STREAMS}/${name}`).exists) FS.unlink(`${STREAMS}/${name}`);
    }
    let status;
    let rollNotes = 0;
    try {
      if (roll || hints) {
        const width = typeof roll === 'object' && roll.width ? roll.width : 1000;
        const most = typeof roll === 'object' && roll.maxNotes >= 0 ? roll.maxNotes : -1;
        status = core._sorvel_run_watched(argv.pointers.length, argv.array, paths.pointers[0],
                                          paths.pointers[1], roll ? paths.pointers[2] : 0,
                                          hints ? paths.pointers[3] : 0, width, most, notes);
        rollNotes = core.HEAP32[notes >> 2];
      } else {
        status = core._sorvel_run_in_memory(argv.pointers.length, argv.array, paths.pointers[0],
                                            paths.pointers[1]);
      }
    } catch (e) {
      broken = String(e);
      throw e;
    } finally {
      argv.free();
      paths.free();
      core._free(notes);
    }
    if (status === -2) throw new Error('Sorvel could not write the piano roll or the hints');
    if (status < 0) throw new Error('Sorvel could not capture its streams');
    const stderrBytes = FS.readFile(`${STREAMS}/stderr`);
    const stdoutBytes = FS.readFile(`${STREAMS}/stdout`);
    const written = {};
    for (const name of listFiles(FS, WORK)) {
      const bytes = FS.readFile(`${WORK}/${name}`);
      if (!given.has(name) || !sameBytes(given.get(name), bytes)) written[name] = bytes;
    }
    const result = {
      status,
      stderr: decoder.decode(stderrBytes),
      stdout: decoder.decode(stdoutBytes),
      stderrBytes,
      stdoutBytes,
      files: written,
    };
    if (roll) {
      result.roll = status === 0 ? decoder.decode(FS.readFile(`${STREAMS}/roll.svg`)) : null;
      result.rollNotes = status === 0 ? rollNotes : 0;
    }
    if (hints) result.hints = JSON.parse(decoder.decode(FS.readFile(`${STREAMS}/hints.json`)));
    return result;
  }

  return { run };
}
