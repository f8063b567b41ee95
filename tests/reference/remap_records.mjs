// Results of remap with fixed-point maps, linear interpolation and the borders that the library
// uses, and of threshold for a validity mask.
import {hashOf, remapInput} from './generator.mjs';
import {withMatrices} from './judge.mjs';

// ---- cases --------------------------------------------------------------------------------------

const kTinyFrames = [[1, 1], [1, 2], [2, 1], [1, 5], [5, 1], [2, 2], [3, 5], [7, 4]];
const kFrames = [[33, 9], [64, 48], [100, 37], [129, 65]];

// Frames, kinds of positions and sizes of maps; `every` gives its own size of map.
const kFields = [
  ...kTinyFrames.map((frame) => [frame, 'every', [1024, (frame[0] + 4) * (frame[1] + 4)]]),
  ...kFrames.map((frame) => [frame, 'near', [40, 30]]),
  ...kFrames.map((frame) => [frame, 'near', [211, 97]]),
  ...kFrames.map((frame) => [frame, 'line', [300, 20]]),
  ...[...kFrames, [32766, 2], [2, 32766]].map((frame) => [frame, 'edges', [131, 64]]),
  ...[[64, 48], [32766, 1]].map((frame) => [frame, 'any', [128, 64]]),
];

// constant: pixels outside are `fill`; transparent: the result was `fill` before; validity: the
// mask of a frame of zeros, `fill` outside, cut in half by threshold.
const kBorders = [
  ['constant', 255, [1, 3, 4]],
  ['constant', 100, [1, 3]],
  ['transparent', 0, [1, 3, 4]],
  ['transparent', 165, [1, 3, 4]],
  ['validity', 255, [1]],
];

function remapCases() {
  const cases = [];
  for (const [[width, height], positions, [mapWidth, mapHeight]] of kFields) {
    for (const [border, fill, channelCounts] of kBorders) {
      for (const channels of channelCounts) {
        const seed = cases.length + 1;
        const bytes = border === 'validity' ? 'zero' : seed % 3 === 0 ? 'extremes' : 'noise';
        cases.push(
            {border, fill, channels, width, height, bytes, positions, mapWidth, mapHeight, seed});
      }
    }
  }
  return cases;
}

// ---- what the image library makes of them -------------------------------------------------------

function remapped(cv, c, input) {
  return withMatrices(cv, (make) => {
    const source = make(c.height, c.width, 'CV_8U', c.channels, input.source);
    const map1 = make(c.mapHeight, c.mapWidth, 'CV_16S', 2, input.map1);
    const map2 = make(c.mapHeight, c.mapWidth, 'CV_16U', 1, input.map2);
    const result = make(c.mapHeight, c.mapWidth, 'CV_8U', c.channels);
    result.data.fill(c.fill);
    const border = c.border === 'transparent' ? cv.BORDER_TRANSPARENT : cv.BORDER_CONSTANT;
    const outside = new cv.Scalar(c.fill, c.fill, c.fill, c.fill);
    cv.remap(source, result, map1, map2, cv.INTER_LINEAR, border, outside);
    if (c.border === 'validity') cv.threshold(result, result, 127, 255, cv.THRESH_BINARY);
    return result.data.slice();
  });
}

export function remapRecords(cv) {
  const names =
      'border fill channels width height bytes positions mapWidth mapHeight seed'.split(' ');
  const lines = remapCases().map((c) => {
    const hash = hashOf(remapped(cv, c, remapInput(c)));
    return [...names.map((name) => c[name]), hash].join(' ');
  });
  return [`# ${[...names, 'hash'].join(' ')}`, ...lines];
}

// ---- cases to read ------------------------------------------------------------------------------

const kSmall = {
  width: 2,
  height: 2,
  channels: 1,
  mapWidth: 80,
  mapHeight: 1,
  pixels: [10, 200, 60, 255]
};
const kFractions = [[0, 0], [16, 0], [0, 16], [8, 24], [31, 31]];

export function remapValues(cv) {
  const positions = [];
  for (const sy of [-1, 0, 1, 2]) {
    for (const sx of [-1, 0, 1, 2]) {
      for (const [a, b] of kFractions) positions.push([sx, sy, a, b]);
    }
  }
  const input = {
    source: Uint8Array.from(kSmall.pixels),
    map1: Int16Array.from(positions.flatMap(([sx, sy]) => [sx, sy])),
    map2: Uint16Array.from(positions.map(([, , a, b]) => 32 * b + a)),
  };
  const of = (border, fill) => remapped(cv, {...kSmall, border, fill}, input);
  const constant = of('constant', 255);
  const transparent = of('transparent', 0);
  const otherFill = of('transparent', 165);
  return [
    '# The grey frame  10 200  at the positions (sx + a/32, sy + b/32), with pixels of 255 outside',
    '#                 60 255  and with a transparent border: - is a pixel that is not written.',
    '# sx sy a b constant transparent',
    ...positions.map((p, i) => {
      const written = transparent[i] === otherFill[i] ? transparent[i] : '-';
      return [...p, constant[i], written].join(' ');
    }),
  ];
}

// ---- the rule -----------------------------------------------------------------------------------

// A sample by the rule of plain_remap.h, in whole numbers. Where the last column or row lacks a
// neighbour, the mean of the pixels that exist, by weight, is what the usual formula gives when that
// column or row goes on.
function sampleByRule(c, source, sx, sy, fractions, channel) {
  const a = fractions & 31;
  const b = fractions >> 5;
  const isIn = (x, y) => x >= 0 && x < c.width && y >= 0 && y < c.height;
  const byteOf = (x, y) => source[(y * c.width + x) * c.channels + channel];
  const mix = (pixel) => {
    const top = (32 - a) * pixel(sx, sy) + a * pixel(sx + 1, sy);
    const bottom = (32 - a) * pixel(sx, sy + 1) + a * pixel(sx + 1, sy + 1);
    return ((32 - b) * top + b * bottom + 512) >> 10;
  };
  if (c.border !== 'transparent') return mix((x, y) => (isIn(x, y) ? byteOf(x, y) : c.fill));
  if (!isIn(sx, sy)) return c.fill;
  return mix((x, y) => byteOf(Math.min(x, c.width - 1), Math.min(y, c.height - 1)));
}

// Compares every byte of every case with the rule; returns how many there were and how many differ.
export function verifyRemap(cv) {
  let compared = 0;
  let different = 0;
  for (const c of remapCases()) {
    const input = remapInput(c);
    const found = remapped(cv, c, input);
    found.forEach((byte, i) => {
      const pixel = Math.floor(i / c.channels);
      const [sx, sy] = [input.map1[2 * pixel], input.map1[2 * pixel + 1]];
      let expected = sampleByRule(c, input.source, sx, sy, input.map2[pixel], i % c.channels);
      if (c.border === 'validity') expected = expected > 127 ? 255 : 0;
      ++compared;
      if (byte !== expected) ++different;
    });
  }
  return {compared, different};
}
