// Step 1: is the picture good enough, and how large and exact is the bed?
import { actionButton, cameraName, element, fill, millimetres, numberIn, setClass, setText, show } from "./elements.js";
import { mm, percent } from "./numbers.js";

const kAdvice = {
  "too dark": "Add light, or lengthen the exposure.",
  "too bright": "Take light away, or shorten the exposure.",
  "too little contrast": "Light the bed evenly and remove the lens's cap or film.",
  soft: "Turn the lens's focus ring until the number is smallest.",
  blurred: "Turn the lens's focus ring until the number is smallest.",
  "nothing to focus on": "Lay something with edges on the bed: the target, or a printed page.",
};

const kUsualBed = { x: 0, y: 0, width: 600, height: 400 };

// Readings of a camera: [what, word, number in words, good?, advice].
// Those of a picture that is gone are told no more.
function readingsOf(source) {
  const { exposure, focus } = source.status === "live" ? source : { exposure: null, focus: null };
  const nothing = source.status === "lost" ? ["waiting", "for the picture to come back"] : ["waiting", "for the first picture"];
  const light = exposure
    ? [
        "Light",
        exposure.word,
        `brightness ${Math.round(exposure.mean)} of 255; ${percent(exposure.dark)} black, ${percent(exposure.bright)} white`,
      ]
    : ["Light", ...nothing];
  const edges = focus && focus.blur !== null ? `edges are ${focus.blur.toFixed(1)} pixels soft` : "no edges are seen";
  const sharpness = focus ? ["Focus", focus.word, edges] : ["Focus", ...nothing];
  return [light, sharpness].map(([what, word, number]) => ({
    what,
    word,
    number,
    good: word === "good" || word === "sharp",
    advice: kAdvice[word] ?? "",
  }));
}

// The rows are made once; only their texts change, so that readings do not disturb a reader.
class Meter {
  constructor() {
    this.what = element("dt");
    this.word = element("dd", { class: "word" });
    this.number = element("dd", { class: "note" });
    this.advice = element("dd", { class: "advice" });
    this.element = element("div", { class: "meter" }, this.what, this.word, this.number, this.advice);
  }

  update({ what, word, number, good, advice }) {
    setText(this.what, what);
    setText(this.word, word);
    setClass(this.word, `word ${good ? "text-good" : word === "waiting" ? "" : "text-warn"}`);
    setText(this.number, number);
    setText(this.advice, advice);
    show(this.advice, advice !== "");
  }
}

function bedForm(app) {
  const width = millimetres("Width");
  const height = millimetres("Height");
  const x = millimetres("Left edge at X");
  const y = millimetres("Top edge at Y");
  const tolerance = millimetres("Good enough", "The largest error that your work bears.");
  const button = actionButton("Use this bed", async () => {
    const bed = {
      x: numberIn(x, "Left edge"),
      y: numberIn(y, "Top edge"),
      width: numberIn(width, "Width"),
      height: numberIn(height, "Height"),
    };
    const wish = numberIn(tolerance, "Good enough");
    typed = true;
    await app.act("setTolerance", { tolerance: wish });
    await app.act("setBed", bed);
    typed = false;
    details.open = false;
    summary.focus(); // the button is gone
  });
  const form = element(
    "form",
    { novalidate: true, onsubmit: (event) => event.preventDefault() },
    element("div", { class: "fields" }, width.element, height.element, x.element, y.element, tolerance.element),
    button.element,
  );
  button.button.type = "submit";
  const summary = element("summary");
  const details = element("details", { class: "part" }, summary, form);
  let shown = null;
  let typed = false; // and not all of it taken yet: it stays, also if a half of it is refused
  form.addEventListener("input", () => {
    typed = true;
  });
  return {
    element: details,
    update({ bed, tolerance: wish }) {
      setText(
        summary,
        bed
          ? `Bed: ${bed.width} × ${bed.height} mm, good enough: ${wish === null ? "not said" : mm(wish)}`
          : "Bed: say how large it is and how exact it must be",
      );
      const key = JSON.stringify([bed, wish]);
      if (key !== shown) {
        shown = key;
        details.open = bed === null || (typed && details.open);
        if (!typed) {
          for (const [name, { input }] of Object.entries({ x, y, width, height })) {
            input.value = (bed ?? kUsualBed)[name];
          }
          tolerance.input.value = wish ?? 0.5;
        }
      }
    },
  };
}

function coveredText({ calibration, covered, views }) {
  if (calibration.seen) {
    const { unseen, text } = calibration.seen;
    return `The camera sees ${percent(1 - unseen)} of the bed${text ? `: ${text}` : "."}`;
  }
  if (calibration.status === "done") {
    return "Say how large the bed is to learn how much of it is seen.";
  }
  return views.length > 0
    ? `The views span ${percent(covered)} of the picture so far.`
    : "How much of the bed is seen is known after calibrating. For now: the whole bed should be in the picture.";
}

export function pictureStep(app, count) {
  const cameras = Array.from({ length: count }, (_, index) => {
    const meters = [new Meter(), new Meter()];
    const covered = element("p", { class: "note" });
    const heading = element("h3", {}, cameraName(index));
    show(heading, count > 1);
    const list = element("dl", { class: "meters" }, ...meters.map((meter) => meter.element));
    return { meters, covered, element: element("div", { class: "camera" }, heading, list, covered) };
  });
  const bed = bedForm(app);
  const go = actionButton("Go on to the target", () => app.act("setStep", { step: 2 }), { primary: true });
  const why = element("p", { class: "note" });
  return {
    title: "Is the picture good?",
    lead: "Clear the bed, switch the machine's light on and look at the picture: the whole bed, bright and sharp.",
    element: element("div", {}, ...cameras.map((camera) => camera.element), bed.element, why, go.element),
    update(state) {
      cameras.forEach((camera, index) => {
        const readings = readingsOf(state.sources[index]);
        camera.meters.forEach((meter, i) => meter.update(readings[i]));
        setText(camera.covered, coveredText(state.sources[index]));
      });
      bed.update(state);
      const live = state.sources.every(({ width, status }) => width !== null && status === "live");
      const good = state.sources.every((source) => readingsOf(source).every((reading) => reading.good));
      go.enable(live);
      fill(why, [live, good], () => [
        live ? (good ? "" : "You can go on, but a better picture gives smaller errors.") : "Waiting for a picture.",
      ]);
      show(why, !(live && good));
    },
  };
}
