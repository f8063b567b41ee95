// Inputs of the recorded cases, and the hash of results. generator.cpp has the same in C++; a
// change of either goes with a new kGeneratorVersion in both.

export const kGeneratorVersion = 1;

// A counter that advances by 2^32/golden ratio, mixed by the finaliser of MurmurHash3.
export class Generator {
  constructor(seed) {
    this.state = seed >>> 0;
  }

  next() {
    this.state = (this.state + 0x9e3779b9) >>> 0;
    let z = this.state;
    z = Math.imul(z ^ (z >>> 16), 0x85ebca6b);
    z = Math.imul(z ^ (z >>> 13), 0xc2b2ae35);
    return (z ^ (z >>> 16)) >>> 0;
  }

  // A whole number of 0 ... n - 1.
  below(n) {
    return this.next() % n;
  }

  between(low, high) {
    return low + this.below(high - low + 1);
  }

  // In [-reach, reach), a multiple of reach/2^31.
  number(reach) {
    return ((this.next() - 2147483648) / 2147483648) * reach;
  }
}

// 64-bit FNV-1a of bytes, as 16 hexadecimal digits. A prime of 2^40 + 0x1b3 is multiplied by in two
// halves of 32 bits.
export function hashOf(bytes) {
  let high = 0xcbf29ce4;
  let low = 0x84222325;
  for (const byte of bytes) {
    low = (low ^ byte) >>> 0;
    const product = low * 0x1b3;
    high = (Math.imul(high, 0x1b3) + Math.floor(product / 4294967296) + (low << 8)) >>> 0;
    low = product >>> 0;
  }
  return high.toString(16).padStart(8, '0') + low.toString(16).padStart(8, '0');
}

export function hashOfNumbers(numbers) {
  return hashOf(new Uint8Array(Float64Array.from(numbers).buffer));
}

// ---- pictures and maps --------------------------------------------------------------------------

// noise: all values; extremes: 0 and 255 only; zero.
export function pictureBytes(generator, kind, count) {
  const bytes = new Uint8Array(count);
  if (kind === 'zero') return bytes;
  for (let i = 0; i < count; ++i) {
    bytes[i] = kind === 'noise' ? generator.below(256) : 255 * generator.below(2);
  }
  return bytes;
}

function nearEdge(generator, side) {
  const first = generator.between(-3, 2);
  const last = side - 1 + generator.between(-3, 2);
  return generator.below(2) === 0 ? first : Math.min(last, 32767);
}

// Writes the whole parts and fractions of `count` positions, `width` a row:
//   every  each fraction of each whole position from two pixels outside to two pixels outside
//   near   anywhere from three pixels outside to three pixels outside
//   edges  within three pixels of the first or last column and row
//   any    any numbers of 16 bits
//   line   rows of evenly spaced positions, as maps of real lenses have nearly
const kFill = {
  every(generator, c, set) {
    let i = 0;
    for (let sy = -2; sy <= c.height + 1; ++sy) {
      for (let sx = -2; sx <= c.width + 1; ++sx) {
        for (let fractions = 0; fractions < 1024; ++fractions) set(i++, sx, sy, fractions);
      }
    }
  },
  near(generator, c, set) {
    for (let i = 0; i < c.mapWidth * c.mapHeight; ++i) {
      const sx = generator.between(-3, c.width + 2);
      const sy = generator.between(-3, c.height + 2);
      set(i, sx, sy, generator.below(1024));
    }
  },
  edges(generator, c, set) {
    for (let i = 0; i < c.mapWidth * c.mapHeight; ++i) {
      const sx = nearEdge(generator, c.width);
      const sy = nearEdge(generator, c.height);
      set(i, sx, sy, generator.below(1024));
    }
  },
  any(generator, c, set) {
    for (let i = 0; i < c.mapWidth * c.mapHeight; ++i) {
      const sx = generator.between(-32768, 32767);
      const sy = generator.between(-32768, 32767);
      set(i, sx, sy, generator.below(1024));
    }
  },
  line(generator, c, set) {
    for (let y = 0; y < c.mapHeight; ++y) {
      const u = 32 * generator.between(-8, c.width) + generator.below(32);
      const v = 32 * generator.between(-8, c.height) + generator.below(32);
      const du = generator.between(-40, 60);
      const dv = generator.between(-8, 8);
      for (let x = 0; x < c.mapWidth; ++x) {
        const pu = u + x * du;
        const pv = v + x * dv;
        set(y * c.mapWidth + x, pu >> 5, pv >> 5, (pv & 31) * 32 + (pu & 31));
      }
    }
  },
};

// The source and the maps of a case of remap.
export function remapInput(c) {
  const generator = new Generator(c.seed);
  const source = pictureBytes(generator, c.bytes, c.width * c.height * c.channels);
  const map1 = new Int16Array(2 * c.mapWidth * c.mapHeight);
  const map2 = new Uint16Array(c.mapWidth * c.mapHeight);
  kFill[c.positions](generator, c, (i, sx, sy, fractions) => {
    map1[2 * i] = sx;
    map1[2 * i + 1] = sy;
    map2[i] = fractions;
  });
  return {source, map1, map2};
}

// ---- matrices and points ------------------------------------------------------------------------

// n x n:
//   plain       any elements
//   dominant    a heavy diagonal
//   homography  3 x 3, near the identity
//   singular    small whole numbers, the last row a sum of multiples of the first two
//   near        the same but for a trace in the last element
//   tiny, huge  so small or large that products of three leave or nearly leave the range
export function matrixElements(generator, kind, n) {
  const elements = new Float64Array(n * n);
  for (let i = 0; i < n * n; ++i) {
    if (kind === 'singular' || kind === 'near') {
      const row = Math.floor(i / n);
      elements[i] =
          row < n - 1 ? generator.between(-9, 9) : elements[i % n] + 2 * elements[n + (i % n)];
    } else {
      elements[i] = generator.number({tiny: 1e-103, huge: 1e101}[kind] ?? 1);
    }
    if (kind === 'dominant' && i % (n + 1) === 0) elements[i] += 16;
    if (kind === 'homography') elements[i] *= [0.1, 0.1, 15, 0.1, 0.1, 15, 1e-4, 1e-4, 0][i];
    if (kind === 'homography' && i % 4 === 0) elements[i] += 1;
  }
  if (kind === 'near') elements[n * n - 1] += generator.number(1e-13);
  return elements;
}

export function numbers(generator, count, reach) {
  return Float64Array.from({length: count}, () => generator.number(reach));
}

// Corners of two quadrilaterals, x and y in turn, in 32-bit float.
export function quadrilaterals(generator) {
  const corners = [100, 100, 900, 100, 100, 700, 900, 700];
  return Float32Array.from([...corners, ...corners], (corner) => corner + generator.number(90));
}

// Points of a level grid and where they lie in a tilted view, with noise up to `noise` pixels and
// every `nth` point far off (0: none), in 32-bit float.
export function tiltedGrid(c) {
  const generator = new Generator(c.seed);
  const h = matrixElements(generator, 'homography', 3);
  const level = [];
  const tilted = [];
  for (let i = 0; i < c.columns * c.rows; ++i) {
    const x = 150 + 70 * (i % c.columns);
    const y = 90 + 70 * Math.floor(i / c.columns);
    const w = h[6] * x + h[7] * y + h[8];
    const astray = c.nth > 0 && i % c.nth === c.nth - 1 ? 80 : 0;
    level.push(x, y);
    tilted.push((h[0] * x + h[1] * y + h[2]) / w + generator.number(c.noise) + astray);
    tilted.push((h[3] * x + h[4] * y + h[5]) / w + generator.number(c.noise));
  }
  return {level: Float32Array.from(level), tilted: Float32Array.from(tilted)};
}
