// What a report does beyond showing itself: tables are sorted by a column, and the points of a drawing tell their
// numbers under the pointer and by keyboard. Without it everything is there, unsorted.
"use strict";

const keyOf = (row, column) => {
  const cell = row.cells[column];
  return cell.dataset.value === undefined ? cell.textContent : Number(cell.dataset.value);
};

const compare = (a, b) => {
  if (typeof a === "number" && typeof b === "number") {
    return a - b;
  }
  if (typeof a !== typeof b) {
    return typeof a === "number" ? -1 : 1;
  }
  return a.localeCompare(b);
};

const sortBy = (table, heading) => {
  const descending = heading.getAttribute("aria-sort") === "ascending";
  for (const other of table.tHead.rows[0].cells) {
    other.removeAttribute("aria-sort");
  }
  heading.setAttribute("aria-sort", descending ? "descending" : "ascending");
  const body = table.tBodies[0];
  const rows = [...body.rows];
  rows.sort((a, b) => compare(keyOf(a, heading.cellIndex), keyOf(b, heading.cellIndex)) * (descending ? -1 : 1));
  body.append(...rows);
};

for (const table of document.querySelectorAll("table.sortable")) {
  for (const heading of table.tHead.rows[0].cells) {
    const button = document.createElement("button");
    button.type = "button";
    button.textContent = heading.textContent;
    button.addEventListener("click", () => sortBy(table, heading));
    heading.replaceChildren(button);
  }
}

// Read aloud by the label of the point itself.
const tip = document.createElement("div");
tip.className = "tip";
tip.hidden = true;
tip.setAttribute("aria-hidden", "true");
document.body.append(tip);

const show = (point) => {
  tip.textContent = point.getAttribute("aria-label");
  tip.hidden = false;
  const place = point.querySelector(".dot").getBoundingClientRect();
  const left = Math.min(place.right + 12, document.documentElement.clientWidth - tip.offsetWidth - 8);
  tip.style.left = `${Math.max(8, left) + window.scrollX}px`;
  tip.style.top = `${place.bottom + 12 + window.scrollY}px`;
};

const hide = () => {
  tip.hidden = true;
};

const steps = { ArrowRight: 1, ArrowDown: 1, ArrowLeft: -1, ArrowUp: -1 };

for (const drawing of document.querySelectorAll("svg")) {
  const points = [...drawing.querySelectorAll(".point")];
  points.forEach((point, index) => {
    // One stop of the tabulator for a drawing; arrows go from point to point.
    point.setAttribute("tabindex", index === 0 ? "0" : "-1");
    point.querySelector("title").remove();
    point.addEventListener("pointerenter", () => show(point));
    point.addEventListener("pointerleave", hide);
    point.addEventListener("focus", () => show(point));
    point.addEventListener("blur", hide);
    point.addEventListener("keydown", (event) => {
      const last = points.length - 1;
      let next = index + (steps[event.key] ?? 0);
      next = event.key === "Home" ? 0 : event.key === "End" ? last : next;
      if (event.key === "Escape") {
        hide();
      }
      if (next !== index && next >= 0 && next <= last) {
        event.preventDefault();
        point.setAttribute("tabindex", "-1");
        points[next].setAttribute("tabindex", "0");
        points[next].focus();
      }
    });
  });
}
