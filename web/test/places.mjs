// Where the page places a line of the run: the file and its line, and for an
// include file the input's line whose "#include" brought it in, through
// include files within include files.
//   node web/test/places.mjs
import { placeOfRunLine } from '../page/places.js';

let failures = 0;
function expect(got, want, what) {
  const ok = JSON.stringify(got) === JSON.stringify(want);
  if (!ok) {
    console.log(`FAIL ${what}\n     got ${JSON.stringify(got)}\n     want ${JSON.stringify(want)}`);
    failures++;
  }
}

// piece.sor includes a.inc on its line 4; a.inc (3 lines, the last without
// a newline) includes b.inc on its line 2; b.inc has 2 lines. Run lines:
// 1-3 piece 1-3; 4 a 1; 5 b 1, 6 b 2 (+ the rest of a's line 2); 7 a 3 (+ the
// rest of piece's line 4); 8 piece 5.
const nested = [[1, 'piece.sor', 1], [4, 'a.inc', 1], [5, 'b.inc', 1], [6, 'a.inc', 2],
                [7, 'piece.sor', 4], [8, 'piece.sor', 5]];
expect(placeOfRunLine(nested, 2, 'piece.sor'), { file: 'piece.sor', line: 2, via: null }, 'a line of the input');
expect(placeOfRunLine(nested, 4, 'piece.sor'), { file: 'a.inc', line: 1, via: 4 }, 'an include file\'s first line');
expect(placeOfRunLine(nested, 5, 'piece.sor'), { file: 'b.inc', line: 1, via: 4 }, 'an include within an include');
expect(placeOfRunLine(nested, 6, 'piece.sor'), { file: 'a.inc', line: 2, via: 4 },
       'a later start at the same run line is the one in force');
expect(placeOfRunLine(nested, 7, 'piece.sor'), { file: 'piece.sor', line: 4, via: null }, 'the input goes on');
expect(placeOfRunLine(nested, 12, 'piece.sor'), { file: 'piece.sor', line: 9, via: null }, 'past the last start');
expect(placeOfRunLine(nested, 0, 'piece.sor'), null, 'a line before every start');
// Two include files one after the other on lines 2 and 3 of the input.
const two = [[1, 'piece.sor', 1], [2, 'a.inc', 1], [4, 'piece.sor', 2], [5, 'b.inc', 1], [9, 'piece.sor', 3]];
expect(placeOfRunLine(two, 7, 'piece.sor'), { file: 'b.inc', line: 3, via: 3 }, 'the second of two include files');
expect(placeOfRunLine(two, 3, 'piece.sor'), { file: 'a.inc', line: 2, via: 2 }, 'the first of two include files');

console.log(failures ? `places test: ${failures} failed` : 'places test: all passed');
process.exit(failures ? 1 : 0);
