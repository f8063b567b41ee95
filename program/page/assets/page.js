// The guided page: shows what the program says and asks it for what the person wants. All state that matters is the
// program's, so that a reload, another page and a broken connection change nothing.
import { BedStage } from "./bed-stage.js";
import { act, connect } from "./connection.js";
import { element, setAttribute, setClass, setText, show } from "./elements.js";
import { News } from "./news.js";
import { RawStage } from "./raw-stage.js";
import { calibrateStep } from "./step-calibrate.js";
import { checkStep } from "./step-check.js";
import { keepStep } from "./step-keep.js";
import { pictureStep } from "./step-picture.js";
import { targetStep } from "./step-target.js";

const find = (id) => document.getElementById(id);
const kPatience = 10000; // ms that something asked for is waited for
const kNames = ["Picture", "Target", "Calibrate", "Check", "Keep"];

const app = {
  state: null,
  shown: 0, // of two cameras, in steps 1 to 3
  alive: null,
  act,
  news: new News(find("news")),
  tell: (text) => app.news.tell(text),
  active: (stage) => app.alive === true && stage === app.stage,
  choose(value) {
    app.shown = value;
    app.update();
  },
  focusHeading: () => find("step-heading")?.focus(),
  update: () => app.state && update(app.state),
  // Resolves as soon as `test(state)` is true. Gives up with `text` for the person after a while, or at once with what
  // `inVain(state)` says if that is anything.
  until(test, text, inVain = () => "") {
    return new Promise((resolve, reject) => {
      const waiting = { test, inVain, resolve, giveUp: (why) => reject(new Error(why)) };
      waiting.timer = setTimeout(() => {
        app.waiting.delete(waiting);
        waiting.giveUp(text);
      }, kPatience);
      app.waiting.add(waiting);
      app.tryAgain();
    });
  },
  waiting: new Set(),
  tryAgain() {
    for (const waiting of app.waiting) {
      const why = waiting.inVain(app.state);
      if (why || waiting.test(app.state)) {
        clearTimeout(waiting.timer);
        app.waiting.delete(waiting);
        (why ? waiting.giveUp : waiting.resolve)(why);
      }
    }
  },
};

// What of the way is behind: a step is done when what it is for is there.
function doneSteps(state) {
  const every = (test) => state.sources.every(test);
  const accepted = every(({ calibration }) => calibration.accepted);
  return [
    every(({ width }) => width !== null) && state.step > 1,
    every(({ views }) => views.length > 0),
    accepted,
    accepted && (state.step > 4 || state.saved !== null),
    state.saved !== null,
  ];
}

function makeStepper() {
  const error = element("p", { class: "error", role: "alert" });
  const steps = kNames.map((name, index) => {
    const mark = element("span", { class: "step-mark", "aria-hidden": "true" }, String(index + 1));
    const said = element("span", { class: "aloud" });
    const button = element("button", { type: "button" }, mark, element("span", { class: "step-name" }, name), said);
    button.addEventListener("click", async () => {
      setText(error, "");
      try {
        await act("setStep", { step: index + 1 });
      } catch (problem) {
        setText(error, problem.message);
      }
    });
    return { mark, said, button, item: element("li", {}, button) };
  });
  find("stepper").replaceChildren(...steps.map(({ item }) => item));
  find("stepper").after(error);
  return (state) => {
    const done = doneSteps(state);
    steps.forEach(({ mark, said, button, item }, index) => {
      const isCurrent = state.step === index + 1;
      setText(mark, done[index] ? "✓" : String(index + 1));
      setText(said, done[index] ? ", done" : "");
      setClass(item, `${isCurrent ? "current" : ""} ${done[index] ? "done" : ""}`.trim());
      if (isCurrent) {
        setAttribute(button, "aria-current", "step");
      } else {
        button.removeAttribute("aria-current");
      }
    });
  };
}

function build(state) {
  const count = state.sources.length;
  app.shown = count > 1 ? "both" : 0;
  app.raw = new RawStage(app, count);
  app.bed = new BedStage(app, count);
  const bed = () => app.bed;
  app.steps = [
    pictureStep(app, count),
    targetStep(app, count),
    calibrateStep(app, count),
    checkStep(app, count, bed),
    keepStep(app),
  ];
  app.heading = element("h2", { id: "step-heading", tabindex: "-1" });
  app.lead = element("p", { class: "lead" });
  find("card").replaceChildren(app.heading, app.lead, ...app.steps.map((step) => step.element));
  find("stage").replaceChildren(app.raw.element, app.bed.element);
  app.updateStepper = makeStepper();
}

function update(state) {
  const step = app.steps[state.step - 1];
  app.stage = state.step >= 4 ? app.bed : app.raw;
  show(app.raw.element, app.stage === app.raw);
  show(app.bed.element, app.stage === app.bed);
  app.steps.forEach((each) => show(each.element, each === step));
  setText(app.heading, step.title);
  setText(app.lead, step.lead);
  app.updateStepper(state);
  step.update(state);
  (app.stage === app.raw ? app.bed : app.raw).stop();
  app.stage.update(state);
}

function takeState(state) {
  const before = app.state;
  app.state = state;
  if (!before || before.sources.length !== state.sources.length) {
    build(state);
  }
  if (before && before.instance !== state.instance) {
    app.raw.renew();
    app.bed.renew();
    show(find("anew"), true);
    app.tell(find("anew").textContent);
  } else if (before && before.step !== state.step) {
    show(find("anew"), false);
  }
  update(state);
  app.tryAgain();
  app.news.compare(before, state);
  if (before && before.step !== state.step) {
    document.title = `${kNames[state.step - 1]} – Set up a camera`;
    app.tell(`step ${state.step}: ${app.steps[state.step - 1].title}`);
    // Whoever pressed a button of the step before goes on at the top of this one.
    if (document.activeElement === document.body || find("card").contains(document.activeElement)) {
      app.heading.focus({ preventScroll: true });
    }
  }
}

function connected(alive, reason = null) {
  const again = alive && app.alive === false;
  const lost = !alive && app.alive !== false;
  app.alive = alive;
  setAttribute(find("connection"), "data-state", alive ? "good" : "bad");
  setText(find("connection-text"), alive ? "connected" : "not connected");
  show(find("lost"), !alive);
  if (!alive) {
    setText(
      find("lost"),
      reason ? `The program refuses this page: ${reason}.` : "The program does not answer. This page tries again every second.",
    );
  }
  if (lost) {
    app.tell("the program does not answer; trying again");
    app.raw?.stop();
    app.bed?.stop();
  } else if (again) {
    app.tell("connected again");
  }
}

// The token of the address is in a cookie by now.
if (location.search) {
  history.replaceState(null, "", location.pathname);
}
connect({ state: takeState, points: (points) => app.raw?.found(points), connected });
