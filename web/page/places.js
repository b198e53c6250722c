// Where a line of the run stands in the composer's files. The run reads its
// input with every include file spliced in; it says where each stretch of
// its lines comes from (`starts`: [run line, file, file line] in the order it
// said them, a later start at the same run line replacing an earlier one).
// A place in an include file is also traced back to the "#include" of the
// main input that brought it in, the place the composer can see.

// The start in force at `runLine` among starts[0 .. below).
function startAt(starts, runLine, below = starts.length) {
  let found = -1;
  for (let i = 0; i < below; i++) if (starts[i][0] <= runLine) found = i;
  return found;
}

// { file, line, via } for run line `runLine`: the file and its line, and
// when that file is not `main`, `via`: the line of `main` whose include
// brought it in (through any include files between). Null when the starts
// do not cover the line.
export function placeOfRunLine(starts, runLine, main) {
  let i = startAt(starts, runLine);
  if (i < 0) return null;
  const place = { file: starts[i][1], line: starts[i][2] + (runLine - starts[i][0]), via: null };
  // An include file began on the run line that held its "#include": that
  // line, read in the starts before it, is in the including file.
  while (i >= 0 && starts[i][1] !== main) {
    const began = starts[i][0];
    i = startAt(starts, began, i);
    if (i >= 0 && starts[i][1] === main) place.via = starts[i][2] + (began - starts[i][0]);
  }
  return place;
}
