// The corrected bed on the screen: what it shows where, read off the pixels and off the text below it.
import { until } from "./live.mjs";

const kArm = [2.5, 6]; // mm from the middle of a cross between which its arms are looked at
const kReach = 3; // mm to each side of an arm

export class Bed {
  constructor(page) {
    this.page = page;
    this.view = page.locator(".view.bed");
  }

  async box() {
    await this.view.scrollIntoViewIfNeeded();
    return this.view.boundingBox();
  }

  // The bed coordinates that the page tells for a place of the view (CSS px from its corner).
  async read([x, y]) {
    const box = await this.box();
    await this.page.mouse.move(box.x + x, box.y + y);
    return until("a place under the pointer", async () => {
      const found = /X (-?[\d.]+), Y (-?[\d.]+) mm/.exec(await this.page.locator(".position").textContent());
      return found && [Number(found[1]), Number(found[2])];
    });
  }

  async click([x, y]) {
    const box = await this.box();
    await this.page.mouse.click(box.x + x, box.y + y);
  }

  // Where bed coordinates are in the view, from what the page tells at two corners; the view is not turned.
  async scale() {
    const { width, height } = await this.box();
    const [a, b] = [[20, 20], [width - 20, height - 20]];
    const from = await this.readSettled(a);
    const to = await this.readSettled(b);
    const factors = [0, 1].map((i) => (b[i] - a[i]) / (to[i] - from[i]));
    return {
      perMm: factors[0],
      of: (bed) => [0, 1].map((i) => a[i] + (bed[i] - from[i]) * factors[i]),
    };
  }

  // The text follows the pointer with the next frame of the screen: read until it says the same twice.
  async readSettled(at) {
    let last = null;
    return until("the place under the pointer", async () => {
      const now = await this.read(at);
      await this.page.evaluate(() => new Promise((resolve) => requestAnimationFrame(() => requestAnimationFrame(resolve))));
      const same = last && last[0] === now[0] && last[1] === now[1];
      last = now;
      return same && now;
    });
  }

  // The middle of the dark cross near a place of the view, from the pixels on the screen: the arm below it tells x, the
  // arm to the left y (numbers stand at the other side).
  cross([x, y], perMm) {
    return this.page.evaluate(
      ({ x, y, arm, reach }) => {
        const { data, width, ratio } = window.pixelsOf(".view.bed canvas");
        const grey = (column, row) => data[4 * (row * width + column)];
        const [cx, cy, from, to, half] = [x, y, arm[0], arm[1], reach].map((value) => value * ratio);
        const middle = (centre, value) => {
          const places = [];
          for (let i = Math.round(centre - half); i <= Math.round(centre + half); i += 1) {
            places.push([i, value(i)]);
          }
          const level = places.map(([, v]) => v).sort((a, b) => b - a)[Math.floor(places.length / 2)];
          const dark = places.map(([i, v]) => [i, Math.max(0, level - v - 3)]);
          const sum = dark.reduce((total, [, v]) => total + v, 0);
          return sum > 0 ? dark.reduce((total, [i, v]) => total + i * v, 0) / sum + 0.5 : NaN;
        };
        const mean = (least, most, value) => {
          let sum = 0;
          let count = 0;
          for (let i = Math.round(least); i <= Math.round(most); i += 1) {
            sum += value(i);
            count += 1;
          }
          return sum / count;
        };
        return [
          middle(cx, (column) => mean(cy + from, cy + to, (row) => grey(column, row))) / ratio,
          middle(cy, (row) => mean(cx - to, cx - from, (column) => grey(column, row))) / ratio,
        ];
      },
      { x, y, arm: kArm.map((mm) => mm * perMm), reach: kReach * perMm },
    );
  }

  // The middle of what is drawn in a colour: [red, green, blue].
  drawn(colour) {
    return this.page.evaluate((wanted) => {
      const { data, width, ratio } = window.pixelsOf(".view.bed canvas");
      let [count, sumX, sumY] = [0, 0, 0];
      for (let i = 0; i < data.length; i += 4) {
        if (wanted.every((value, k) => Math.abs(data[i + k] - value) < 12)) {
          count += 1;
          sumX += (i / 4) % width;
          sumY += Math.floor(i / 4 / width);
        }
      }
      return count === 0 ? null : [(sumX / count + 0.5) / ratio, (sumY / count + 0.5) / ratio];
    }, colour);
  }

  // Waits until a picture of the lit bed is drawn.
  async showsPicture() {
    await this.page.evaluate(() => new Promise((resolve) => requestAnimationFrame(() => requestAnimationFrame(resolve))));
    await until("no message over the bed", () => this.page.locator(".bed-stage .view-message").isHidden());
    await until("a picture of the bed", () =>
      this.page.evaluate(() => {
        const { data, width, height } = window.pixelsOf(".view.bed canvas");
        const at = 4 * (Math.floor(height / 2) * width + Math.floor(width / 4));
        const row = data.slice(at, at + 2 * width);
        return row.filter((value, i) => i % 4 !== 3 && value > 30).length > row.length / 2;
      }));
  }
}

// Shares of points of the raw picture at which its overlay shows a found point.
export function drawnPoints(page, index, raw, size) {
  return page.evaluate(
    ({ index: at, points, width, height }) => {
      const { data, width: columns, height: rows } = window.pixelsOf(".raw-stage canvas.overlay", at);
      return points.filter(([x, y]) => {
        const column = Math.floor(((x + 0.5) / width) * columns);
        const row = Math.floor(((y + 0.5) / height) * rows);
        const i = 4 * (row * columns + column);
        return data[i + 1] > 180 && data[i] < 140 && data[i + 3] > 200;
      }).length / points.length;
    },
    { index, points: raw, width: size[0], height: size[1] },
  );
}

// How fast `count` pictures come, one asked for after the other as the page does: how old they are when they are sent
// and when they are on the screen (ms), and how many a second.
export function pictureSpeed(page, path, count) {
  return page.evaluate(
    async ({ path: address, count: most }) => {
      const canvas = document.createElement("canvas");
      const [ages, shown] = [[], []];
      const begin = performance.now();
      for (let after = 0; ages.length < most; ) {
        const response = await fetch(`${address}&after=${after}`);
        if (response.status === 204) {
          continue;
        }
        const sent = performance.now();
        after = Number(response.headers.get("X-Frame"));
        const bitmap = await createImageBitmap(await response.blob());
        canvas.width = bitmap.width;
        canvas.height = bitmap.height;
        canvas.getContext("2d").drawImage(bitmap, 0, 0);
        ages.push(Number(response.headers.get("X-Age")));
        shown.push(ages.at(-1) + performance.now() - sent);
      }
      const median = (values) => values.sort((a, b) => a - b)[Math.floor(values.length / 2)];
      return { age: median(ages), shown: median(shown), rate: (1000 * most) / (performance.now() - begin) };
    },
    { path, count },
  );
}
