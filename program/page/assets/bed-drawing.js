// What is drawn over the corrected bed: the grid in mm, the ruler, the crosshair and how well two cameras agree.
import { length, niceBelow, niceStep } from "./numbers.js";

const kGridGap = 70; // px between lines at least
const kLongestArrow = 36; // px
const kFont = "600 12px system-ui, sans-serif";

function halo(context, draw) {
  context.strokeStyle = "rgb(0 0 0 / 70%)";
  context.lineWidth += 2;
  draw();
  context.stroke();
  context.lineWidth -= 2;
}

function line(context, from, to, colour, width = 1.5) {
  const draw = () => {
    context.beginPath();
    context.moveTo(...from);
    context.lineTo(...to);
  };
  context.lineWidth = width;
  halo(context, draw);
  context.strokeStyle = colour;
  draw();
  context.stroke();
}

function label(context, text, x, y, align = "left") {
  context.font = kFont;
  context.textAlign = align;
  context.lineJoin = "round";
  context.lineWidth = 4;
  context.strokeStyle = "rgb(0 0 0 / 80%)";
  context.strokeText(text, x, y);
  context.fillStyle = "#ffffff";
  context.fillText(text, x, y);
}

// Lines of equal X and of equal Y at round numbers; returns their distance, mm.
export function drawGrid(context, viewport) {
  const { width, height } = viewport.size;
  const corners = [[0, 0], [width, 0], [0, height], [width, height]].map((corner) => viewport.bedAt(corner));
  const step = niceStep(kGridGap / viewport.pixelsPerMm);
  for (const axis of [0, 1]) {
    const values = corners.map((corner) => corner[axis]);
    const [least, most] = [Math.min(...values), Math.max(...values)];
    const others = corners.map((corner) => corner[1 - axis]);
    const ends = [Math.min(...others), Math.max(...others)];
    for (let i = Math.ceil(least / step); i * step <= most; i += 1) {
      const at = (other) => viewport.screenOf(axis === 0 ? [i * step, other] : [other, i * step]);
      const [from, to] = ends.map(at);
      context.beginPath();
      context.moveTo(...from);
      context.lineTo(...to);
      context.lineWidth = 2.5;
      context.strokeStyle = "rgb(0 0 0 / 30%)";
      context.stroke();
      context.lineWidth = 1;
      context.strokeStyle = "rgb(255 255 255 / 75%)";
      context.stroke();
      labelLine(context, viewport, axis, from, to, `${axis === 0 ? "X" : "Y"} ${Number((i * step).toPrecision(12))}`);
    }
  }
  return step;
}

// X at the top edge, Y at the left one, where the line crosses it.
function labelLine(context, { size }, axis, from, to, text) {
  const inset = 16;
  const share = (axis === 0 ? inset - from[1] : 4 - from[0]) / (axis === 0 ? to[1] - from[1] : to[0] - from[0]);
  const [x, y] = [from[0] + share * (to[0] - from[0]), from[1] + share * (to[1] - from[1])];
  const isInside = axis === 0 ? x > 44 && x < size.width - 48 : y > 34 && y < size.height - 6;
  if (isInside) {
    label(context, text, x + 4, y - (axis === 0 ? 0 : 4));
  }
}

// ends: one or two places on the bed.
export function drawRuler(context, viewport, ends) {
  const placed = ends.map((end) => viewport.screenOf(end));
  if (placed.length === 2) {
    line(context, placed[0], placed[1], "#ffd84d", 2);
  }
  for (const [x, y] of placed) {
    line(context, [x - 7, y], [x + 7, y], "#ffd84d");
    line(context, [x, y - 7], [x, y + 7], "#ffd84d");
  }
  if (placed.length === 2) {
    const [x, y] = [0, 1].map((i) => (placed[0][i] + placed[1][i]) / 2);
    label(context, length(lengthOf(ends)), x, y - 10, "center");
  }
}

export const lengthOf = ([[x0, y0], [x1, y1]]) => Math.hypot(x1 - x0, y1 - y0);

export function drawCrosshair(context, viewport, bed, colour = "#ff7a6b") {
  const [x, y] = viewport.screenOf(bed);
  for (const sign of [-1, 1]) {
    line(context, [x + 5 * sign, y], [x + 40 * sign, y], colour, 3);
    line(context, [x, y + 5 * sign], [x, y + 40 * sign], colour, 3);
  }
  label(context, `${bed[0]}, ${bed[1]}`, x + 9, y - 9);
}

// The middle of the screen, for people who move by keyboard.
export function drawMiddle(context, { size }) {
  const [x, y] = [size.width / 2, size.height / 2];
  line(context, [x - 9, y], [x + 9, y], "#ffffff");
  line(context, [x, y - 9], [x, y + 9], "#ffffff");
}

// Arrows from where the left camera sees a point to where the right one does, enlarged. Returns the factor.
export function drawAgreement(context, viewport, { points, worst }) {
  const factor = niceBelow(kLongestArrow / Math.max(worst * viewport.pixelsPerMm, 1e-6));
  for (const { x, y, dx, dy } of points) {
    const from = viewport.screenOf([x, y]);
    const to = viewport.screenOf([x + factor * dx, y + factor * dy]);
    line(context, from, to, "#7ad7ff", 2);
    context.beginPath();
    context.arc(...from, 3, 0, 2 * Math.PI);
    context.fillStyle = "#7ad7ff";
    context.fill();
  }
  return factor;
}
