// The map of how large errors on the bed may be, in mm, seen from above.
import { cameraName, element, setAttribute, setText } from "./elements.js";
import { mm, niceStep, percent, place } from "./numbers.js";

const kBands = 6; // colours at most
// From small to large errors: those that are good enough, or all if nobody said what is; and those that are not.
const kGood = ["#d3ecf3", "#a3d3e2", "#6fb3c9", "#3f91ad", "#1b6f8e", "#0a4d68"];
const kBad = ["#f6cd95", "#eca75f", "#dd8136", "#c45d1c", "#a1420f", "#7d2f08"];
const kUnseen = "#7d858d";
const kDot = 4; // px of the canvas
const kCell = 18; // px of the canvas for a step of the map

const length = (value) => String(Number(value.toPrecision(6)));

// Steps of a round number of mm up to the largest error; the tolerance is a border if it is among them.
function bandsOf(errors, tolerance) {
  const known = errors.filter((error) => error !== null);
  if (known.length === 0) {
    return [];
  }
  const worst = Math.max(...known, 1e-6);
  const step = niceStep(worst / (kBands - 1));
  const limits = Array.from({ length: Math.ceil(worst / step) }, (_, i) => (i + 1) * step);
  if (tolerance !== null && tolerance < worst && !limits.some((limit) => Math.abs(limit - tolerance) < 1e-6 * step)) {
    limits.push(tolerance);
  }
  limits.sort((a, b) => a - b);
  return limits.map((to, i) => {
    const good = tolerance === null || to <= tolerance * (1 + 1e-9);
    return { from: limits[i - 1] ?? 0, to, good, colour: (good ? kGood : kBad)[Math.min(i, kGood.length - 1)] };
  });
}

export class ErrorMap {
  constructor(index, several) {
    this.index = index;
    this.who = several ? ` as ${cameraName(index).toLowerCase()} sees it` : "";
    this.canvas = element("canvas", { class: "map", role: "img" });
    this.legend = element("ul", { class: "legend" });
    this.pointer = element("p", { class: "note pointer" }, "Point at the map to read an error.");
    this.caption = element("figcaption");
    this.element = element("figure", { class: "picture" }, this.canvas, this.legend, this.pointer, this.caption);
    this.canvas.addEventListener("pointermove", (event) => this.tell(event));
  }

  update(state) {
    const { map, target } = state.sources[this.index].calibration;
    const { tolerance } = state;
    const key = JSON.stringify([map, tolerance]);
    if (key === this.shown || !map) {
      return;
    }
    this.shown = key;
    this.map = map;
    this.bands = bandsOf(map.errors, tolerance);
    this.draw(target);
    this.describe(tolerance);
  }

  draw(target) {
    const { columns, rows, errors, x, y, width, height } = this.map;
    const scale = (kCell * (columns - 1)) / width;
    this.canvas.width = Math.round(width * scale);
    this.canvas.height = Math.round(height * scale);
    const context = this.canvas.getContext("2d");
    const [w, h] = [this.canvas.width / columns, this.canvas.height / rows];
    errors.forEach((error, i) => {
      context.fillStyle = error === null ? kUnseen : this.bands.find(({ to }) => error <= to).colour;
      const [column, row] = [i % columns, Math.floor(i / columns)];
      context.fillRect(Math.floor(column * w), Math.floor(row * h), Math.ceil(w), Math.ceil(h));
    });
    for (const [X, Y] of target) {
      context.beginPath();
      context.arc((X - x) * scale, (Y - y) * scale, kDot, 0, 2 * Math.PI);
      context.fillStyle = "#ffffff";
      context.fill();
      context.strokeStyle = "#14191f";
      context.stroke();
    }
  }

  describe(tolerance) {
    const { errors, x, y, width, height } = this.map;
    const seen = errors.filter((error) => error !== null);
    const text =
      `The bed${this.who} from ${place([x, y])} to ${place([x + width, y + height])}. ` +
      (seen.length > 0 ? this.worstText(seen, tolerance) : "No error is known at any place of it.");
    setText(this.caption, `${text} Dots are points of the target.`);
    setAttribute(this.canvas, "aria-label", `Map of errors. ${text}`);
    const entries = this.bands.map(({ from, to, colour, good }) => [
      `${length(from)} to ${length(to)} mm${good ? "" : ", too much"}`,
      colour,
    ]);
    if (seen.length < errors.length) {
      entries.push(["not seen", kUnseen]);
    }
    this.legend.replaceChildren(
      ...entries.map(([name, colour]) => {
        const swatch = element("span", { class: "swatch", "aria-hidden": "true" });
        swatch.style.background = colour;
        return element("li", {}, swatch, name);
      }),
    );
  }

  worstText(seen, tolerance) {
    const { errors } = this.map;
    const worst = Math.max(...seen);
    const within = seen.filter((error) => error <= (tolerance ?? worst)).length / errors.length;
    return (
      `The largest error is ${mm(worst)}, at ${place(this.placeOf(errors.indexOf(worst)))}` +
      `${tolerance === null ? "" : `; ${percent(within)} of the bed is within ${mm(tolerance)}`}.`
    );
  }

  placeOf(i) {
    const { columns, rows, x, y, width, height } = this.map;
    return [x + (width * (i % columns)) / (columns - 1), y + (height * Math.floor(i / columns)) / (rows - 1)];
  }

  tell(event) {
    const { columns, rows, errors } = this.map;
    const box = this.canvas.getBoundingClientRect();
    const at = (share, count) => Math.min(count - 1, Math.max(0, Math.floor(share * count)));
    const column = at((event.clientX - box.left) / box.width, columns);
    const row = at((event.clientY - box.top) / box.height, rows);
    const error = errors[row * columns + column];
    const where = place(this.placeOf(row * columns + column));
    setText(this.pointer, error === null ? `${where}: not seen` : `${where}: up to ${mm(error)} off`);
  }
}
