// Sorvel's command line under Node, the same as the native program:
//
//   node sorvel.mjs [options] infile outfile
//
// The WebAssembly program (sorvel-cli.cjs beside this file) reads and writes
// the host's files from the working directory and exits with Sorvel's status.
import { createRequire } from 'node:module';

createRequire(import.meta.url)('./sorvel-cli.cjs');
