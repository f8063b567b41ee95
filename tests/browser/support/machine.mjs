// An exactly known fisheye camera over a bed (Z = 0, mm): where it sees the points of a board and its picture.
//   theta_d = theta + k0 theta^2 + k1 theta^3,   (x, y) = c + f theta_d (direction in the picture)
import { writeFileSync } from "node:fs";

const turnAboutX = (angle) => {
  const [c, s] = [Math.cos(angle), Math.sin(angle)];
  return [1, 0, 0, 0, c, -s, 0, s, c];
};

const turnAboutY = (angle) => {
  const [c, s] = [Math.cos(angle), Math.sin(angle)];
  return [c, 0, s, 0, 1, 0, -s, 0, c];
};

const product = (a, b) =>
  [0, 1, 2].flatMap((i) => [0, 1, 2].map((j) => [0, 1, 2].reduce((sum, k) => sum + a[3 * i + k] * b[3 * k + j], 0)));

export class Camera {
  // `about` is the bed point on the optical axis, `distance` how far it is away, `tilts` angles about x and y.
  constructor({ width = 640, height = 480, focal = 200, about, distance, tilts = [0, 0] }) {
    Object.assign(this, { width, height, focal, centre: [width / 2 + 2, height / 2 - 3], k0: 0.01, k1: -0.05 });
    this.R = product(turnAboutY(tilts[1]), turnAboutX(tilts[0]));
    const turned = this.turned(...about, 0);
    this.T = [-turned[0], -turned[1], distance - turned[2]];
  }

  turned(X, Y, Z) {
    return [0, 3, 6].map((i) => this.R[i] * X + this.R[i + 1] * Y + this.R[i + 2] * Z);
  }

  project(X, Y) {
    const [x, y, z] = this.turned(X, Y, 0).map((value, i) => value + this.T[i]);
    const off = Math.hypot(x, y);
    const theta = Math.atan2(off, z);
    const radius = this.focal * theta * (1 + theta * (this.k0 + theta * this.k1));
    return off === 0 ? [...this.centre] : [this.centre[0] + (radius * x) / off, this.centre[1] + (radius * y) / off];
  }

  // The bed point at a pixel, by Newton's method; undefined if the ray does not meet the bed.
  bedAt(u, v) {
    const [dx, dy] = [u - this.centre[0], v - this.centre[1]];
    const radius = Math.hypot(dx, dy);
    let theta = radius / this.focal;
    for (let step = 0; step < 8; step += 1) {
      const value = theta * (1 + theta * (this.k0 + theta * this.k1)) - radius / this.focal;
      theta -= value / (1 + theta * (2 * this.k0 + 3 * theta * this.k1));
    }
    const sideways = radius === 0 ? 0 : Math.sin(theta) / radius;
    const ray = [dx * sideways, dy * sideways, Math.cos(theta)];
    const back = (vector) => [0, 1, 2].map((i) => this.R[i] * vector[0] + this.R[3 + i] * vector[1] + this.R[6 + i] * vector[2]);
    const [direction, origin] = [back(ray), back(this.T.map((value) => -value))];
    const far = -origin[2] / direction[2];
    return far > 0 ? [origin[0] + far * direction[0], origin[1] + far * direction[1]] : undefined;
  }
}

// The inner corners of a board with squares of `square` mm, first corner at `corner`; ids from 1, row by row.
export const boardPoints = ({ columns, rows, square, corner }) =>
  Array.from({ length: columns * rows }, (_, i) => ({
    id: i + 1,
    X: corner[0] + square * (i % columns),
    Y: corner[1] + square * Math.floor(i / columns),
  }));

// The points as the camera measures them, in the program's lists; noise of at most `noise` px, the same every time.
export function writePoints(path, camera, board, { noise = 0, heading = "PointId,Xw,Yw,ImagePtX,ImagePtY" } = {}) {
  let state = 12345;
  const random = () => {
    state = (Math.imul(state, 1103515245) + 12345) >>> 0;
    return (2 * (state / 2 ** 32) - 1) * noise;
  };
  const lines = boardPoints(board).map(({ id, X, Y }) => {
    const [x, y] = camera.project(X, Y);
    return [id, X, Y, (x + random()).toFixed(4), (y + random()).toFixed(4)].join(",");
  });
  writeFileSync(path, `${heading}\n${lines.join("\n")}\n`);
}

// The camera's grey picture of the board on a light bed (PGM), four samples a pixel.
export function writeFrame(path, camera, board) {
  const { width, height } = camera;
  const pixels = Buffer.alloc(width * height, 0);
  const brightness = (u, v) => {
    const bed = camera.bedAt(u, v);
    if (!bed) {
      return 40;
    }
    const [column, row] = [0, 1].map((i) => Math.floor((bed[i] - board.corner[i]) / board.square) + 1);
    const onBoard = column >= 0 && row >= 0 && column <= board.columns && row <= board.rows;
    return onBoard && (column + row) % 2 === 0 ? 30 : 225;
  };
  for (let v = 0; v < height; v += 1) {
    for (let u = 0; u < width; u += 1) {
      const sum = [-0.25, 0.25].flatMap((dv) => [-0.25, 0.25].map((du) => brightness(u + du, v + dv))).reduce((a, b) => a + b);
      pixels[v * width + u] = sum / 4;
    }
  }
  writeFileSync(path, Buffer.concat([Buffer.from(`P5\n${width} ${height}\n255\n`), pixels]));
}
