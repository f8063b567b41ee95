// What is drawn over a raw picture: the found points with their ids and where earlier views had points.
// Colours are for pictures of any brightness: light on a dark edge.

const kDot = 2.5; // px
const kDigit = 7; // px that a digit of an id takes
const kApart = 6; // px between ids
const kLabel = "600 11px system-ui, sans-serif";

// points: { width, height (raw px), points: [[id, x, y], ...] }; width, height of the drawing.
export function drawPoints(context, { points, width: rawWidth, height: rawHeight }, width, height) {
  const placed = points.map(([id, x, y]) => ({
    id,
    x: ((x + 0.5) * width) / rawWidth,
    y: ((y + 0.5) * height) / rawHeight,
  }));
  context.lineWidth = 1.5;
  for (const { x, y } of placed) {
    context.beginPath();
    context.arc(x, y, kDot + 1.5, 0, 2 * Math.PI);
    context.fillStyle = "rgb(0 0 0 / 75%)";
    context.fill();
    context.beginPath();
    context.arc(x, y, kDot, 0, 2 * Math.PI);
    context.fillStyle = "#5ff0a0";
    context.fill();
  }
  context.font = kLabel;
  context.lineJoin = "round";
  const taken = [];
  for (const { id, x, y } of placed) {
    const box = { left: x + 5, top: y - 14, right: x + 5 + kApart + kDigit * String(id).length, bottom: y - 2 };
    if (taken.some((other) => overlap(box, other))) {
      continue;
    }
    taken.push(box);
    context.strokeStyle = "rgb(0 0 0 / 80%)";
    context.lineWidth = 3;
    context.strokeText(String(id), x + 5, y - 4);
    context.fillStyle = "#ffffff";
    context.fillText(String(id), x + 5, y - 4);
  }
}

// Where points are close together, only as many ids are written as there is room for.
const overlap = (a, b) => a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom;

// Cells with points of taken views are tinted, and the border of what they cover is drawn.
export function drawCoverage(context, { columns, rows, counts }, width, height) {
  const [w, h] = [width / columns, height / rows];
  const has = (column, row) =>
    column >= 0 && row >= 0 && column < columns && row < rows && counts[row * columns + column] > 0;
  context.fillStyle = "rgb(70 190 255 / 20%)";
  context.strokeStyle = "rgb(150 220 255 / 90%)";
  context.lineWidth = 1.5;
  context.beginPath();
  for (let row = 0; row < rows; row += 1) {
    for (let column = 0; column < columns; column += 1) {
      if (!has(column, row)) {
        continue;
      }
      const [x, y] = [column * w, row * h];
      context.fillRect(x, y, w, h);
      const side = (neighbour, x0, y0, x1, y1) => {
        if (!neighbour) {
          context.moveTo(x0, y0);
          context.lineTo(x1, y1);
        }
      };
      side(has(column, row - 1), x, y, x + w, y);
      side(has(column, row + 1), x, y + h, x + w, y + h);
      side(has(column - 1, row), x, y, x, y + h);
      side(has(column + 1, row), x + w, y, x + w, y + h);
    }
  }
  context.stroke();
}
