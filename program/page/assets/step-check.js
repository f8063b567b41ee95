// Step 4: is it right? Measuring in the corrected picture, and whether the camera has moved since.
import { actionButton, cameraName, element, fill, millimetres, numberIn, setClass, setText, show } from "./elements.js";
import { mm, place } from "./numbers.js";

const kWorstShown = 8; // rows of the table

function crosshairForm(bed) {
  const x = millimetres("X");
  const y = millimetres("Y");
  const mark = actionButton("Show crosshair", () => bed().setMark([numberIn(x, "X"), numberIn(y, "Y")]));
  const hide = actionButton("Hide", () => bed().setMark(null));
  mark.button.type = "submit";
  return element(
    "form",
    { novalidate: true, onsubmit: (event) => event.preventDefault() },
    element("h3", {}, "Find a place"),
    element("p", { class: "note" }, "Type coordinates that you know: the crosshair should lie on the right place."),
    element("div", { class: "fields" }, x.element, y.element),
    element("div", { class: "row" }, mark.element, hide.element),
  );
}

function verifyText({ verify }) {
  if (verify === null) {
    return ["", ""];
  }
  if (verify.status === "running") {
    return ["Measuring.", ""];
  }
  return verify.status === "failed" ? [verify.message, "bad"] : [verify.text, verify.good ? "good" : "bad"];
}

function verifyPart(app, count) {
  const check = actionButton("Check with the target", () => app.act("verify"));
  const results = Array.from({ length: count }, () => element("p", { class: "notice" }));
  const intro = element("p", { class: "note" });
  return {
    element: element("div", { class: "part" }, element("h3", {}, "Has the camera moved?"), intro, check.element, ...results),
    update({ sources, target }) {
      const where = target ? ` with its first point at ${place([target.originX, target.originY])}` : "";
      setText(intro, `Lay the target flat on the bed${where}, as in the flat view.`);
      check.enable(sources.every(({ calibration, verify }) => calibration.status === "done" && verify?.status !== "running"));
      results.forEach((result, index) => {
        const [text, mood] = verifyText(sources[index]);
        setText(result, text && count > 1 ? `${cameraName(index)}: ${text}` : text);
        setClass(result, `notice ${mood}`);
        show(result, text !== "");
      });
    },
  };
}

function agreementTable(points) {
  const worst = [...points].sort((a, b) => b.apart - a.apart).slice(0, kWorstShown);
  const head = ["Point", "X", "Y", "Apart (mm)"].map((text) => element("th", { scope: "col", class: "number" }, text));
  const row = ({ id, x, y, apart }) =>
    element(
      "tr",
      {},
      element("th", { scope: "row", class: "number" }, String(id)),
      ...[x.toFixed(1), y.toFixed(1), apart.toFixed(2)].map((text) => element("td", { class: "number" }, text)),
    );
  return element(
    "table",
    {},
    element("caption", {}, `The ${worst.length} points that agree least`),
    element("thead", {}, element("tr", {}, ...head)),
    element("tbody", {}, ...worst.map(row)),
  );
}

function stitchPart(app, bed) {
  const join = actionButton("Join the two pictures", () => app.act("stitch"));
  const text = element("p", { class: "notice" });
  const warnings = element("ul", { class: "warnings" });
  const table = element("div");
  const look = actionButton("Show the joined bed", () => bed().choose("stitched"));
  const part = element("div", { class: "part" }, element("h3", {}, "Two cameras, one bed"), join.element, text, warnings, table, look.element);
  return {
    element: part,
    join,
    update({ stitch, sources }) {
      show(part, stitch !== null);
      if (stitch === null) {
        return;
      }
      const done = stitch.status === "done";
      const running = stitch.status === "running";
      join.enable(!running && sources.every(({ calibration }) => calibration.status === "done"));
      join.label(done ? "Join again" : "Join the two pictures");
      setText(text, done ? stitch.text : running ? "Joining." : (stitch.message ?? ""));
      setClass(text, `notice ${done ? (stitch.trusted ? "good" : "warn") : running ? "" : "bad"}`);
      show(text, text.textContent !== "");
      fill(warnings, stitch.warnings ?? [], (texts) => texts.map((each) => element("li", {}, each)));
      show(warnings, (stitch.warnings ?? []).length > 0);
      fill(table, done ? stitch.points : [], (points) => (points.length > 0 ? [agreementTable(points)] : []));
      show(look.element, done);
    },
  };
}

function expectedErrorText({ sources }) {
  const all = sources.map(({ calibration }) => calibration);
  if (all.some(({ onBed }) => onBed === null)) {
    return "";
  }
  const each = all.map(({ onBed }, index) => mm(onBed) + (all.length > 1 ? ` (${cameraName(index).toLowerCase()})` : ""));
  const doubt = all.every(({ trusted }) => trusted) ? "" : " Not to be trusted: see step 3.";
  return `Expected error at the worst place on the bed: at most ${each.join(" and ")}, with 95 % certainty.${doubt}`;
}

export function checkStep(app, count, bed) {
  const verify = verifyPart(app, count);
  const stitch = stitchPart(app, bed);
  const go = actionButton("Go on: keep it", () => app.act("setStep", { step: 5 }), { primary: true });
  const reached = element("p");
  return {
    title: "Check it",
    lead: "The bed as seen from straight above. Measure something that you know, with the ruler or the crosshair.",
    element: element("div", {}, reached, stitch.element, crosshairForm(bed), verify.element, go.element),
    update(state) {
      setText(reached, expectedErrorText(state));
      verify.update(state);
      stitch.update(state);
      const joined = state.stitch === null || state.stitch.status === "done";
      stitch.join.primary(!joined);
      go.primary(joined);
      go.enable(state.sources.every(({ calibration }) => calibration.status === "done"));
    },
  };
}
