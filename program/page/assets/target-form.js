// Choosing the target, or printing one.
import { actionButton, element, field, millimetres, numberIn, setText, show } from "./elements.js";
import { download } from "./connection.js";

const kKinds = [
  ["charuco", "Chessboard with markers (best)"],
  ["chessboard", "Chessboard"],
  ["circles", "Grid of circles"],
  ["asymmetricCircles", "Grid of circles, rows shifted"],
];
const kUsual = { kind: "charuco", columns: 13, rows: 8, spacing: 40 };

// The first point's place when the target lies in the middle of the bed.
function middle(bed, { columns, rows, spacing }) {
  return {
    originX: bed ? bed.x + (bed.width - (columns - 1) * spacing) / 2 : 0,
    originY: bed ? bed.y + (bed.height - (rows - 1) * spacing) / 2 : 0,
  };
}

export class TargetForm {
  constructor(app) {
    this.app = app;
    this.kind = element("select", { id: "kind" }, ...kKinds.map(([value, text]) => element("option", { value }, text)));
    const whole = { inputmode: "numeric", autocomplete: "off" };
    this.columns = field("Points in a row", whole, "Corners inside the board, or circles.");
    this.rows = field("Rows of points", whole);
    this.spacing = millimetres("Distance of points", "Measure it on the print: rulers are right, printers are not.");
    this.originX = millimetres("First point at X", "Where the target's top left point lies on the bed.");
    this.originY = millimetres("First point at Y");
    this.use = actionButton("Use this target", () => this.choose(), { primary: true });
    this.use.button.type = "submit";
    this.print = actionButton("Print it", () => this.download());
    this.note = element("p", { class: "note" }, "Print at 100 %, glue it flat on something stiff.");
    this.lost = element("p", { class: "note text-warn" }, "Another target forgets the views that were taken.");
    this.spacing.element.classList.add("wide");
    const fields = [this.columns, this.rows, this.spacing, this.originX, this.originY];
    const kindField = element("div", { class: "field wide" }, element("label", { for: "kind" }, "Kind"), this.kind);
    this.form = element(
      "form",
      { novalidate: true, onsubmit: (event) => event.preventDefault() },
      element("div", { class: "fields" }, kindField, ...fields.map((each) => each.element)),
      this.lost,
      element("div", { class: "row" }, this.use.element, this.print.element),
      this.note,
    );
    this.summary = element("summary");
    this.element = element("details", { class: "part" }, this.summary, this.form);
  }

  wish() {
    return {
      kind: this.kind.value,
      columns: numberIn(this.columns, "Points in a row"),
      rows: numberIn(this.rows, "Rows of points"),
      spacing: numberIn(this.spacing, "Distance of points"),
      originX: numberIn(this.originX, "First point at X"),
      originY: numberIn(this.originY, "First point at Y"),
    };
  }

  async choose() {
    await this.app.act("setTarget", this.wish());
    this.element.open = false;
    this.summary.focus(); // the button is gone
  }

  async download() {
    await download(`/download/target.svg?${new URLSearchParams(this.wish())}`, "target.svg");
  }

  update({ target, bed, markersAvailable, sources }) {
    setText(this.summary, target ? `Target: ${target.text}, ${target.spacing} mm apart` : "Choose your target");
    this.use.primary(target === null);
    show(this.lost, target !== null && sources.some(({ views }) => views.length > 0));
    for (const option of this.kind.options) {
      option.disabled = option.value === "charuco" && !markersAvailable;
    }
    const key = JSON.stringify([target, target ? null : bed]);
    if (key === this.shown) {
      return;
    }
    this.shown = key;
    const usual = markersAvailable ? kUsual : { ...kUsual, kind: "chessboard" };
    const values = target ?? { ...usual, ...middle(bed, usual) };
    for (const name of ["columns", "rows", "spacing", "originX", "originY"]) {
      this[name].input.value = values[name];
    }
    this.kind.value = values.kind;
    this.element.open = target === null;
  }
}
