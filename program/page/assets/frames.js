// Live pictures. A frame is asked for only when the one before has arrived, and is asked for before that one is
// decoded: one on the way and one in work are all there ever are.

const kPause = 1000; // ms after something went wrong
const kColumnStep = 160; // px, in which the size asked for changes
const kMostColumns = 1920;

const sleep = (time) => new Promise((resolve) => setTimeout(resolve, time));

const numbersOf = (text) => text?.split(",").map(Number) ?? null;

export class FrameLoop {
  // `request()` returns { path, query } or null if there is nothing to ask for now; `draw(frame)` is given
  // { bitmap, path, number, width, height, part } and owns the bitmap. `refused(text)`: why there is no picture.
  constructor({ request, draw, refused = () => {} }) {
    Object.assign(this, { request, draw, refused });
    this.after = 0;
    this.wishes = 0;
    this.running = false;
    this.work = Promise.resolve();
  }

  start() {
    if (!this.running) {
      this.running = true;
      this.after = 0;
      this.cancel = new AbortController();
      this.run(this.cancel.signal);
    }
  }

  stop() {
    if (this.running) {
      this.running = false;
      this.cancel.abort();
    }
  }

  // After a restart of the program, or when another part is to be seen at once.
  renew() {
    this.after = 0;
    this.wishes += 1;
  }

  async run(signal) {
    while (!signal.aborted) {
      const wish = document.hidden ? null : this.request();
      if (!wish) {
        await sleep(100);
        continue;
      }
      try {
        await this.next(wish, signal);
      } catch {
        if (!signal.aborted) {
          await sleep(kPause);
        }
      }
    }
  }

  async next({ path, query = {} }, signal) {
    const { wishes } = this;
    const search = new URLSearchParams({ after: this.after, ...query });
    const response = await fetch(`${path}?${search}`, { signal });
    if (response.status === 204) {
      return;
    }
    if (!response.ok) {
      const { error } = await response.json();
      if (response.status === 409) {
        this.refused(error.text);
      }
      throw new Error(error.text);
    }
    const blob = await response.blob();
    const number = (name) => Number(response.headers.get(name));
    const frame = {
      path,
      number: number("X-Frame"),
      width: number("X-Width"),
      height: number("X-Height"),
      part: numbersOf(response.headers.get("X-Part")),
    };
    this.after = wishes === this.wishes ? frame.number : 0;
    await this.work;
    this.work = this.show(blob, frame, signal);
  }

  async show(blob, frame, signal) {
    try {
      const bitmap = await createImageBitmap(blob);
      if (signal.aborted) {
        bitmap.close();
      } else {
        this.draw({ ...frame, bitmap });
      }
    } catch {
      // A picture that was cut off; the next one follows.
    }
  }
}

const ratioOf = () => Math.min(window.devicePixelRatio || 1, 2);

// Columns to ask for a picture that is `width` CSS pixels wide: in steps, so that few sizes are made.
export const columnsFor = (width) => Math.min(kMostColumns, Math.max(1, Math.ceil((width * ratioOf()) / kColumnStep)) * kColumnStep);

// Fits a canvas's pixels to its size on the screen. Returns { width, height, ratio } in CSS pixels.
export function fitCanvas(canvas) {
  const ratio = ratioOf();
  const { clientWidth: width, clientHeight: height } = canvas;
  const [columns, rows] = [Math.round(width * ratio), Math.round(height * ratio)];
  if (canvas.width !== columns || canvas.height !== rows) {
    canvas.width = columns;
    canvas.height = rows;
  }
  return { width, height, ratio };
}
