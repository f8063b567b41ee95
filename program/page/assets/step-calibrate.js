// Step 3: calibrating, what it reaches, and what would make it better.
import { actionButton, cameraName, element, fill, setAttribute, setClass, setText, show } from "./elements.js";
import { mm } from "./numbers.js";

class Result {
  constructor(index, several) {
    const heading = element("h3", {}, cameraName(index));
    show(heading, several);
    this.progress = element("progress", { max: 1, "aria-label": `Calibrating${several ? `, ${cameraName(index)}` : ""}` });
    this.step = element("p", { class: "note" });
    this.failed = element("p", { class: "notice bad" });
    this.verdict = element("p", { class: "verdict" });
    this.numbers = element("dl", { class: "readings" });
    this.outdated = element("p", { class: "notice warn" }, "Views, target or bed have changed since. Calibrate again.");
    this.warnings = element("ul", { class: "warnings" });
    this.remedies = element("div");
    const parts = [this.progress, this.step, this.failed, this.outdated, this.verdict, this.numbers, this.warnings, this.remedies];
    this.element = element("div", { class: "camera" }, heading, ...parts);
  }

  update({ calibration, views }) {
    const { status, progress, step, message, good, trusted, verdict, outdated, warnings, remedies } = calibration;
    const done = status === "done";
    show(this.progress, status === "running");
    if (this.progress.value !== progress) {
      this.progress.value = progress;
    }
    const count = `${views.length} ${views.length === 1 ? "view" : "views"}`;
    setText(this.step, status === "running" ? `Now: ${step}.` : status === "none" ? `${count} to calibrate from.` : "");
    show(this.step, this.step.textContent !== "");
    setText(this.failed, message ?? "");
    show(this.failed, status === "failed");
    show(this.outdated, done && outdated);
    setText(this.verdict, done ? (trusted ? verdict : `Not to be trusted: ${verdict}`) : "");
    setClass(this.verdict, `verdict ${good ? "text-good" : "text-warn"}`);
    show(this.verdict, done);
    show(this.numbers, done);
    if (done) {
      const { onBed, insideTarget, rms, points } = calibration;
      fill(this.numbers, { onBed, insideTarget, rms, points }, readings);
    }
    fill(this.warnings, warnings ?? [], (texts) => texts.map((text) => element("li", {}, text)));
    show(this.warnings, (warnings ?? []).length > 0);
    fill(this.remedies, remedies ?? [], remedyList);
    show(this.remedies, (remedies ?? []).length > 0);
  }
}

function readings({ onBed, insideTarget, rms, points }) {
  const reading = (name, value) => element("div", { class: "reading" }, element("dt", {}, name), element("dd", {}, value));
  return [
    reading("on the bed (95 %)", mm(onBed)),
    reading("inside the target", mm(insideTarget)),
    reading(`in the picture, ${points} points`, `${rms.toFixed(2)} px`),
  ];
}

function remedyList(remedies) {
  const row = ({ advice, onBed }) => element("li", {}, `${advice}${onBed === null ? "" : `: about ${mm(onBed)} on the bed`}`);
  return remedies.length === 0
    ? []
    : [element("h3", {}, "What would help most"), element("ol", { class: "remedies" }, ...remedies.map(row))];
}

export function calibrateStep(app, count) {
  const results = Array.from({ length: count }, (_, index) => new Result(index, count > 1));
  const calibrate = actionButton("Calibrate", () => app.act("calibrate"), { primary: true });
  const accept = actionButton("Accept and go on", async () => {
    await app.act("accept");
    await app.act("setStep", { step: 4 });
  });
  const more = actionButton("Add a view", () => app.act("setStep", { step: 2 }));
  return {
    title: "Calibrate",
    lead: "The program works out the lens and the camera's place, and how far off a place on the bed may be.",
    element: element(
      "div",
      {},
      ...results.map((result) => result.element),
      element("div", { class: "row" }, accept.element, calibrate.element, more.element),
    ),
    update(state) {
      results.forEach((result, index) => {
        result.update(state.sources[index]);
        show(result.element, app.shown === "both" || app.shown === index);
      });
      const all = state.sources.map(({ calibration }) => calibration);
      const running = all.some(({ status }) => status === "running");
      const done = all.every(({ status, outdated }) => status === "done" && !outdated);
      const views = state.sources.every((source) => source.views.length > 0);
      calibrate.enable(!running && views);
      calibrate.label(all.some(({ status }) => status === "done" || status === "failed") ? "Calibrate again" : "Calibrate");
      calibrate.primary(!done);
      accept.primary(done);
      accept.enable(done && all.every(({ trusted }) => trusted));
      show(accept.element, done);
      more.enable(!running);
      setAttribute(calibrate.button, "aria-busy", running ? "true" : "false");
    },
  };
}
