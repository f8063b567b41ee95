// Step 2: the target and the views of it.
import { actionButton, cameraName, element, fill, setAttribute, setClass, setText, show } from "./elements.js";
import { mm, percent } from "./numbers.js";
import { TargetForm } from "./target-form.js";

const kEnough = 6; // views after which to go on if nobody said how exact the bed must be

function foundText({ status, detection, steady }) {
  if (status !== "live") {
    return ["The picture is gone.", "bad"];
  }
  const { points, expected, seen, rate } = detection;
  if (detection.status === "found") {
    const speed = rate === null ? "" : `, ${rate.toFixed(1)} times a second`;
    return [`Found: ${points} of ${expected} points${speed}. ${steady ? "It lies still." : "It moves: hold it still."}`, "good"];
  }
  if (detection.status === "none") {
    return [`Not found${seen ? `: ${seen}` : ". Lay the target where the camera sees it"}.`, "warn"];
  }
  return ["Looking for the target.", ""];
}

// What a view would do to the expected error, from -> to.
function gainText({ gain, expectedError, expectedProblem, views, detection, steady }) {
  if (gain && detection.status === "found") {
    return gain.before === null
      ? `This view would give an expected bed error of ${mm(gain.after)}.`
      : `This view: expected bed error ${mm(gain.before)} → ${mm(gain.after)}.${gain.useful ? "" : " It adds little: tilt the target or move it."}`;
  }
  if (expectedProblem !== null) {
    return `No error can be expected yet: ${expectedProblem}.`;
  }
  if (detection.status === "found" && steady) {
    return "Working out what this view adds.";
  }
  return views.length > 0 ? `Expected bed error so far: ${mm(expectedError)}.` : "";
}

class CameraViews {
  constructor(app, index, several) {
    Object.assign(this, { app, index });
    this.found = element("p", { class: "found" });
    this.gain = element("p", { class: "gain" });
    this.list = element("ul", { class: "views" });
    this.covered = element("p", { class: "note" });
    this.error = element("p", { class: "error", role: "alert" });
    const heading = element("h3", {}, cameraName(index));
    show(heading, several);
    this.element = element("div", { class: "camera" }, heading, this.found, this.gain, this.covered, this.list, this.error);
    this.who = several ? ` of ${cameraName(index)}` : "";
  }

  update(source) {
    const [text, mood] = foundText(source);
    setText(this.found, text);
    setClass(this.found, `found ${mood ? `text-${mood}` : ""}`);
    setText(this.gain, gainText(source));
    show(this.gain, this.gain.textContent !== "");
    const count = source.views.length;
    setText(
      this.covered,
      count === 0
        ? "No views yet. First lay the target flat on the bed, at the place you typed."
        : `${count} ${count === 1 ? "view" : "views"}, spanning ${percent(source.covered)} of the picture (shaded: where points were). ` +
            "For the next, lift and tilt the target, towards the edges, too.",
    );
    fill(this.list, source.views, (views) => views.map((view) => this.row(view)));
  }

  async ask(action, view) {
    this.error.textContent = "";
    try {
      await this.app.act(action, { source: this.index, view: view.id });
      this.app.focusHeading();
    } catch (problem) {
      this.error.textContent = problem.message;
    }
  }

  row(view) {
    const remove = element("button", { type: "button", class: "small", onclick: () => this.ask("deleteView", view) }, "Delete");
    remove.setAttribute("aria-label", `Delete view ${view.id}${this.who}`);
    const parts = [element("span", {}, `View ${view.id}: ${view.points} points${view.onBed ? ", flat on the bed" : ""}`)];
    if (!view.onBed) {
      const flat = element("button", { type: "button", class: "small", onclick: () => this.ask("setBedView", view) }, "Is flat");
      flat.setAttribute("aria-label", `View ${view.id}${this.who} is the one that lies flat on the bed`);
      parts.push(flat);
    }
    return element("li", {}, ...parts, remove);
  }
}

const goodEnough = ({ tolerance }, { expectedError, views }) =>
  tolerance === null ? views.length >= kEnough : expectedError !== null && expectedError <= tolerance;

// Why it is in vain to wait until the target lies still; nothing if it is not. One that is not found for a moment is moved.
function whyNoView({ step }, sources) {
  if (step !== 2) {
    return "This step was left before the target lay still: no view was taken.";
  }
  return sources.every(({ status }) => status === "live") ? "" : "The picture is gone: no view was taken.";
}

function takeLabel({ shown }, count) {
  if (count === 1) {
    return "Take this view";
  }
  return shown === "both" ? "Take both views" : `Take ${cameraName(shown).toLowerCase()}'s view`;
}

export function targetStep(app, count) {
  const form = new TargetForm(app);
  const cameras = Array.from({ length: count }, (_, index) => new CameraViews(app, index, count > 1));
  const which = () => (app.shown === "both" || count === 1 ? {} : { source: app.shown });
  const meant = ({ sources }) => sources.filter((_, index) => app.shown === "both" || app.shown === index);
  let taking = false;
  // A view is measured in a still picture: pressed while it moves, the button takes the view as soon as it rests.
  const take = actionButton(
    "Take this view",
    async () => {
      taking = true;
      app.update();
      try {
        await app.until(
          (state) => meant(state).every(({ detection }) => detection.ready),
          "The picture moves: hold the target still, then take the view.",
          (state) => whyNoView(state, meant(state)),
        );
        await app.act("takeView", which());
      } finally {
        taking = false;
        app.update();
      }
    },
    { primary: true },
  );
  const calibrate = actionButton("Go on: calibrate", async () => {
    await app.act("calibrate"); // first: a refusal is said where the button is
    await app.act("setStep", { step: 3 });
  });
  const automatic = element("input", { type: "checkbox", id: "automatic" });
  const automaticError = element("p", { class: "error", role: "alert" });
  let setting = false;
  automatic.addEventListener("change", async () => {
    automaticError.textContent = "";
    setting = true;
    try {
      await app.act("setAutoTake", { on: automatic.checked });
    } catch (problem) {
      automatic.checked = !automatic.checked;
      automaticError.textContent = problem.message;
    }
    setting = false;
  });
  const advice = element("p", { class: "note" });
  const views = element(
    "div",
    {},
    ...cameras.map((camera) => camera.element),
    element(
      "p",
      { class: "check" },
      automatic,
      element("label", { for: "automatic" }, "Take views by itself when the target lies still and the view helps"),
    ),
    automaticError,
    advice,
    element("div", { class: "row" }, take.element, calibrate.element),
  );
  return {
    title: "Show the target",
    lead: "The camera learns from a pattern whose size is known. One view flat on the bed, then some lifted and tilted.",
    element: element("div", {}, form.element, views),
    update(state) {
      form.update(state);
      show(views, state.target !== null);
      cameras.forEach((camera, index) => {
        camera.update(state.sources[index]);
        show(camera.element, app.shown === "both" || app.shown === index);
      });
      if (automatic.checked !== state.autoTake && !setting) {
        automatic.checked = state.autoTake;
      }
      take.enable(meant(state).every(({ detection }) => detection.status === "found"));
      take.label(taking ? "Hold it still …" : takeLabel(app, count));
      const enough = state.sources.every((source) => goodEnough(state, source));
      const some = state.sources.every((source) => source.views.length > 0);
      calibrate.enable(some);
      take.primary(!enough);
      calibrate.primary(enough);
      setText(
        advice,
        enough
          ? "That is enough: go on."
          : some && state.tolerance !== null
            ? `Take views until the expected error is ${mm(state.tolerance)} or less.`
            : "",
      );
      show(advice, advice.textContent !== "");
      setAttribute(views, "data-enough", String(enough));
    },
  };
}
