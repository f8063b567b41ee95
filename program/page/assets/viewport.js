// The part of a corrected view that is shown, and the ways between the screen, the view and the bed.
//   screen (CSS px) = (p - centre) scale + size / 2,   p = u + 1/2 (view px from the outer edge; u from pixel centres)
//   bed (mm):  X = a u + b v + c,   Y = d u + e v + f

const kLargest = 24; // CSS px for a pixel of the view
const kSmallest = 0.7; // of the scale that shows all
const kMargin = 0.95; // of the screen that the bed takes

export class Viewport {
  constructor() {
    this.size = { width: 1, height: 1 };
    this.view = null;
  }

  // Another view is shown as a whole, or where the bed is if it is known: { x, y, width, height } in mm.
  setView(view, bed = null) {
    const key = JSON.stringify([view, bed]);
    if (key !== this.key) {
      Object.assign(this, { key, view, bed, isWhole: false });
      this.fitBed();
    }
  }

  setSize({ width, height }) {
    // A hidden view has no size; it keeps the one it had.
    if (width === 0 || height === 0) {
      return;
    }
    if (width !== this.size.width || height !== this.size.height) {
      const { isWhole, isBed } = this;
      this.size = { width, height };
      if (isBed) {
        this.fitBed();
      } else if (isWhole) {
        this.fit();
      }
    }
  }

  get fitting() {
    return Math.min(this.size.width / this.view.width, this.size.height / this.view.height);
  }

  fit() {
    if (this.view) {
      this.scale = this.fitting;
      this.centre = [this.view.width / 2, this.view.height / 2];
      Object.assign(this, { isWhole: true, isBed: false });
    }
  }

  fitBed() {
    if (!this.view || !this.bed) {
      this.fit();
      return;
    }
    const { x, y, width, height } = this.bed;
    const corners = [[x, y], [x + width, y], [x, y + height], [x + width, y + height]].map((corner) => this.outerOf(corner));
    const range = (axis) => {
      const values = corners.map((corner) => corner[axis]);
      return [Math.max(0, Math.min(...values)), Math.min([this.view.width, this.view.height][axis], Math.max(...values))];
    };
    const [left, right] = range(0);
    const [top, bottom] = range(1);
    if (right - left < 1 || bottom - top < 1) {
      this.fit();
      return;
    }
    this.scale = kMargin * Math.min(this.size.width / (right - left), this.size.height / (bottom - top));
    this.centre = [(left + right) / 2, (top + bottom) / 2];
    Object.assign(this, { isWhole: false, isBed: true });
  }

  // Zooms so that what is at the place on the screen stays there.
  zoom(factor, at = [this.size.width / 2, this.size.height / 2]) {
    const scale = Math.min(kLargest, Math.max(kSmallest * this.fitting, this.scale * factor));
    const fixed = this.outerAt(at);
    this.scale = scale;
    this.moveTo([
      fixed[0] - (at[0] - this.size.width / 2) / scale,
      fixed[1] - (at[1] - this.size.height / 2) / scale,
    ]);
  }

  pan(dx, dy) {
    this.moveTo([this.centre[0] - dx / this.scale, this.centre[1] - dy / this.scale]);
  }

  moveTo([x, y]) {
    Object.assign(this, { isWhole: false, isBed: false });
    this.centre = [Math.min(this.view.width, Math.max(0, x)), Math.min(this.view.height, Math.max(0, y))];
  }

  outerAt([x, y]) {
    return [
      (x - this.size.width / 2) / this.scale + this.centre[0],
      (y - this.size.height / 2) / this.scale + this.centre[1],
    ];
  }

  screenOfOuter([x, y]) {
    return [
      (x - this.centre[0]) * this.scale + this.size.width / 2,
      (y - this.centre[1]) * this.scale + this.size.height / 2,
    ];
  }

  bedAt(screen) {
    const [u, v] = this.outerAt(screen).map((value) => value - 0.5);
    const [a, b, c, d, e, f] = this.view.toBed;
    return [a * u + b * v + c, d * u + e * v + f];
  }

  outerOf([X, Y]) {
    const [a, b, c, d, e, f] = this.view.toBed;
    const determinant = a * e - b * d;
    return [(e * (X - c) - b * (Y - f)) / determinant + 0.5, (a * (Y - f) - d * (X - c)) / determinant + 0.5];
  }

  screenOf(bed) {
    return this.screenOfOuter(this.outerOf(bed));
  }

  contains(bed) {
    const [x, y] = this.outerOf(bed);
    return x >= 0 && y >= 0 && x <= this.view.width && y <= this.view.height;
  }

  // Screen pixels for a millimetre.
  get pixelsPerMm() {
    const [a, b, , d, e] = this.view.toBed;
    return this.scale / Math.sqrt(Math.abs(a * e - b * d));
  }

  // What of the view is on the screen: left, top, width, height.
  get part() {
    const from = this.outerAt([0, 0]).map((value) => Math.max(0, Math.floor(value)));
    const to = this.outerAt([this.size.width, this.size.height]);
    const width = Math.min(this.view.width, Math.ceil(to[0])) - from[0];
    const height = Math.min(this.view.height, Math.ceil(to[1])) - from[1];
    return { left: from[0], top: from[1], width: Math.max(1, width), height: Math.max(1, height) };
  }
}
