// Results of the functions that are guaranteed in every bit.
import {Generator, hashOfNumbers, matrixElements, numbers, quadrilaterals} from './generator.mjs';
import {withMatrices} from './judge.mjs';

// ---- functions, as this library calls them ------------------------------------------------------

const matrix = (n) => (generator, kind) => matrixElements(generator, kind, n);

// Runs compute(make, result), which leaves its numbers in the matrix `result`; returns these.
export const leaving = (cv, compute) => withMatrices(cv, (make) => {
  const result = make(1, 1, 'CV_64F');
  compute(make, result);
  return result.data64F.slice();
});

const inverse = (n) => ({
  input: matrix(n),
  compute: (cv, A) =>
      leaving(cv, (make, result) => cv.invert(make(n, n, 'CV_64F', 1, A), result, cv.DECOMP_LU)),
});

const norm = (n) => ({
  input: (generator, kind) => numbers(generator, n, kind === 'huge' ? 1e150 : 1),
  compute: (cv, v) => withMatrices(cv, (make) => [cv.norm(make(n, 1, 'CV_64F', 1, v), cv.NORM_L2)]),
});

const kExact = {
  invert3: inverse(3),
  invert6: inverse(6),
  invert8: inverse(8),
  solve6: {
    input: (generator, kind) =>
      [...matrixElements(generator, kind, 6), ...numbers(generator, 6, 1)],
    compute: (cv, Ab) =>
      leaving(cv, (make, result) => {
        const b = make(6, 1, 'CV_64F', 1, Ab.slice(36));
        cv.solve(make(6, 6, 'CV_64F', 1, Ab.slice(0, 36)), b, result, cv.DECOMP_LU);
      }),
  },
  determinant3: {
    input: matrix(3),
    compute: (cv, A) => withMatrices(cv, (make) => [cv.determinant(make(3, 3, 'CV_64F', 1, A))]),
  },
  norm3: norm(3),
  norm4: norm(4),
  norm6: norm(6),
  scale6: {
    input: (generator) => numbers(generator, 7, 1),
    compute: (cv, v) =>
      leaving(cv, (make, result) => {
        make(6, 1, 'CV_64F', 1, v.slice(1)).convertTo(result, cv.CV_64F, v[0], 0);
      }),
  },
  narrow6: {
    input: (generator) => numbers(generator, 6, 1000),
    compute: (cv, v) =>
      withMatrices(cv, (make) => {
        const result = make(1, 1, 'CV_32F');
        make(6, 1, 'CV_64F', 1, v).convertTo(result, cv.CV_32F, 1, 0);
        return Float64Array.from(result.data32F);
      }),
  },
  squareRoot6: {
    input: (generator) => numbers(generator, 6, 1000).map(Math.abs),
    compute: (cv, v) => leaving(cv, (make, result) => cv.sqrt(make(6, 1, 'CV_64F', 1, v), result)),
  },
  perspective: {
    input: quadrilaterals,
    compute: (cv, corners) =>
      withMatrices(cv, (make, keep) => {
        const from = make(4, 1, 'CV_32F', 2, corners.slice(0, 8));
        const to = make(4, 1, 'CV_32F', 2, corners.slice(8));
        return keep(cv.getPerspectiveTransform(from, to, cv.DECOMP_LU)).data64F.slice();
      }),
  },
};

const kKinds = [
  ['invert3', 'homography plain singular near tiny huge'],
  ['invert6', 'dominant plain singular near'],
  ['invert8', 'dominant plain singular near'],
  ['solve6', 'dominant plain singular near'],
  ['determinant3', 'plain singular near tiny huge'],
  ['norm3', 'plain huge'],
  ['norm4', 'plain huge'],
  ['norm6', 'plain huge'],
  ['scale6', 'plain'],
  ['narrow6', 'plain'],
  ['squareRoot6', 'plain'],
  ['perspective', 'plain'],
];
const kCount = 400;

export function numberRecords(cv) {
  const lines = ['# function kind count seed hash'];
  for (const [name, kinds] of kKinds) {
    for (const kind of kinds.split(' ')) {
      const seed = lines.length;
      const generator = new Generator(seed);
      const all = [];
      for (let i = 0; i < kCount; ++i) {
        all.push(...kExact[name].compute(cv, kExact[name].input(generator, kind)));
      }
      lines.push([name, kind, kCount, seed, hashOfNumbers(all)].join(' '));
    }
  }
  return lines;
}

// ---- cases to read ------------------------------------------------------------------------------

// Every bit can be read back.
export const text = (numbers) =>
    Array.from(numbers, (x) => (Object.is(x, -0) ? '-0' : String(x))).join(' ');

function written(cv, name, kind, seed) {
  const input = kExact[name].input(new Generator(seed), kind);
  return `${name} | ${text(input)} | ${text(kExact[name].compute(cv, input))}`;
}

export function numberValues(cv) {
  const lines = ['# function | arguments | result'];
  for (const [name, kinds] of kKinds) {
    if (name.endsWith('6') || name.endsWith('8')) continue;  // long
    for (const kind of kinds.split(' ')) {
      for (let seed = 1; seed <= 3; ++seed) lines.push(written(cv, name, kind, seed));
    }
  }
  return lines;
}
