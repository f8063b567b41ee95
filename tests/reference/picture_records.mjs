// Results of warpPerspective for colour pictures, as in straightening, and of threshold for grey
// ones.
import {Generator, hashOf, matrixElements, pictureBytes} from './generator.mjs';
import {withMatrices} from './judge.mjs';

// Matrices, sizes of the picture, sizes of the result. `plain` ones send points to infinity.
const kWarps = [
  ['homography', [64, 48], [90, 70]],
  ['homography', [200, 150], [257, 131]],
  ['homography', [1, 1], [40, 33]],
  ['homography', [31, 200], [310, 200]],
  ['plain', [64, 48], [90, 70]],
  ['near', [64, 48], [90, 70]],
  ['singular', [64, 48], [90, 70]],
];
const kSeeds = 4;
const kLargest = ['homography', [320, 240], [5184, 5184]];

function straightened(cv, kind, [width, height], [toWidth, toHeight], seed) {
  const generator = new Generator(seed);
  const picture = pictureBytes(generator, 'noise', width * height * 3);
  const M = matrixElements(generator, kind, 3);
  return withMatrices(cv, (make) => {
    const result = make(1, 1, 'CV_8U');
    const size = new cv.Size(toWidth, toHeight);
    const source = make(height, width, 'CV_8U', 3, picture);
    const matrix = make(3, 3, 'CV_64F', 1, M);
    cv.warpPerspective(
        source, result, matrix, size, cv.INTER_LINEAR, cv.BORDER_CONSTANT, new cv.Scalar());
    return hashOf(result.data);
  });
}

function warpLines(cv) {
  const lines = [];
  const record = (kind, from, to, seed) => lines.push(
      ['warp', kind, ...from, ...to, seed, straightened(cv, kind, from, to, seed)].join(' '));
  for (const [kind, from, to] of kWarps) {
    for (let seed = 1; seed <= kSeeds; ++seed) record(kind, from, to, seed);
  }
  record(...kLargest, 1);
  return lines;
}

function cut(cv, width, height, seed) {
  const bytes = pictureBytes(new Generator(seed), 'noise', width * height);
  return withMatrices(cv, (make) => {
    const result = make(height, width, 'CV_8U', 1, bytes);
    cv.threshold(result, result, 127, 255, cv.THRESH_BINARY);
    return ['threshold', width, height, seed, hashOf(result.data)].join(' ');
  });
}

export function pictureRecords(cv) {
  return [
    '# warp matrix width height resultWidth resultHeight seed hash',
    ...warpLines(cv),
    '# threshold width height seed hash',
    cut(cv, 1, 1, 1),
    cut(cv, 300, 40, 2),
    cut(cv, 77, 31, 3),
  ];
}
