// Results of the functions that are not guaranteed in every bit.
import {Generator, numbers, tiltedGrid} from './generator.mjs';
import {withMatrices} from './judge.mjs';
import {leaving, text} from './number_records.mjs';

// The matrices of single rotations, and the vectors of these and of some that are not quite
// rotations.
function rotations(cv) {
  const generator = new Generator(7);
  const vectors = [[0, 0, 0], [0, 0, Math.PI], [1e-9, 0, 0], [Math.PI / 2, 0, 0], [0, -3, 0]];
  for (let i = 0; i < 12; ++i) vectors.push([...numbers(generator, 3, i < 6 ? 0.1 : 1.8)]);
  const lines = [];
  const rotate = (rows, columns, numbersIn) => leaving(
      cv, (make, result) => cv.Rodrigues(make(rows, columns, 'CV_64F', 1, numbersIn), result));
  for (const vector of vectors) {
    const R = rotate(3, 1, vector);
    const rough = R.map((x) => x + generator.number(1e-6));
    lines.push(`rotation | ${text(vector)} | ${text(R)}`);
    lines.push(`rotation | ${text(R)} | ${text(rotate(3, 3, R))}`);
    lines.push(`rotation | ${text(rough)} | ${text(rotate(3, 3, rough))}`);
  }
  return lines;
}

// Columns, rows, noise in pixels, every which point lies astray.
const kGrids = [
  [3, 3, 0, 0],
  [3, 3, 0.5, 0],
  [4, 3, 1, 0],
  [7, 7, 1, 0],
  [9, 6, 2, 0],
  [7, 7, 0.5, 12],
  [9, 6, 1, 10],
  [5, 5, 2.5, 0],
  [5, 5, 4, 0],
  [12, 9, 0.3, 7],
  [9, 1, 0.5, 0],
  [1, 1, 0, 0],
  [2, 2, 0.5, 0],
];

// Empty for points on a line.
function homography(cv, c) {
  const {level, tilted} = tiltedGrid(c);
  const count = c.columns * c.rows;
  return withMatrices(cv, (make, keep) => {
    const from = make(count, 1, 'CV_32F', 2, tilted);
    const to = make(count, 1, 'CV_32F', 2, level);
    return keep(cv.findHomography(from, to, cv.RANSAC, 3.0, make(1, 1, 'CV_8U'), 2000, 0.995))
        .data64F.slice();
  });
}

// Least squares by singular values: A is rows x 6.
function leastSquares(cv, rows, seed) {
  const generator = new Generator(seed);
  const A = numbers(generator, rows * 6, 1);
  const b = numbers(generator, rows, 1);
  return leaving(cv, (make, result) => {
    const right = make(rows, 1, 'CV_64F', 1, b);
    const method = cv.DECOMP_SVD | cv.DECOMP_NORMAL;
    cv.solve(make(rows, 6, 'CV_64F', 1, A), right, result, method);
  });
}

function homographies(cv) {
  const lines = [];
  for (const [columns, rows, noise, nth] of kGrids) {
    for (let seed = 1; seed <= 4; ++seed) {
      let result = 'raises';
      try {
        result = text(homography(cv, {columns, rows, noise, nth, seed}));
      } catch (thrown) {
        if (typeof thrown !== 'number') throw thrown;  // not the image library's
      }
      lines.push(`homography ${columns} ${rows} ${noise} ${nth} ${seed} | ${result}`);
    }
  }
  return lines;
}

function leastSquaresOfAllSizes(cv) {
  const lines = [];
  for (const rows of [6, 8, 18, 40, 98]) {
    for (let seed = 1; seed <= 3; ++seed) {
      lines.push(`leastSquares ${rows} ${seed} | ${text(leastSquares(cv, rows, seed))}`);
    }
  }
  return lines;
}

export function fitRecords(cv) {
  return [
    '# rotation | argument | result',
    ...rotations(cv),
    '# homography columns rows noise nth seed | result',
    ...homographies(cv),
    '# leastSquares rows seed | result',
    ...leastSquaresOfAllSizes(cv),
  ];
}
