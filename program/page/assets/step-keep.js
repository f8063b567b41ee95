// Step 5: files.
import { actionButton, cameraName, capitalised, element, fill, setText, show } from "./elements.js";
import { download } from "./connection.js";
import { mm } from "./numbers.js";

function downloadsOf(state) {
  const several = state.sources.length > 1;
  const files = state.sources.flatMap(({ calibration }, source) => {
    if (calibration.status !== "done") {
      return [];
    }
    const suffix = several ? String(source + 1) : "";
    const who = several ? `${cameraName(source)}: ` : "";
    const file = (path, name, what) => ({ path: `/download/${path}?source=${source}`, name, label: `${who}${what} (${name})` });
    return [
      file("report.html", `report${suffix}.html`, "Report to read and print"),
      file("camera.ini", `camera${suffix}.ini`, "Parameters of the camera"),
      file("points.csv", `points${suffix}.csv`, "Measured points"),
    ];
  });
  if (state.stitch?.status === "done") {
    files.push({ path: "/download/dual.html", name: "dual.html", label: "Both cameras: report of how they join (dual.html)" });
    files.push({ path: "/download/dual.ini", name: "dual.ini", label: "Both cameras: how they join (dual.ini)" });
  }
  return files;
}

const allTrusted = ({ sources, stitch }) =>
  sources.every(({ calibration }) => calibration.status !== "done" || calibration.trusted) && stitch?.trusted !== false;

function reachedText({ sources }) {
  return sources
    .map(({ calibration }, index) => {
      const who = sources.length > 1 ? `${cameraName(index)}: ` : "";
      if (calibration.status !== "done") {
        return `${who}Not calibrated yet.`;
      }
      const told = calibration.trusted ? capitalised(calibration.verdict) : `Not to be trusted: ${calibration.verdict}`;
      const since = calibration.outdated ? " Views, target or bed have changed since." : "";
      return `${who}${told}, errors up to ${mm(calibration.onBed)} on the bed (95 %).${since}`;
    })
    .join(" ");
}

export function keepStep(app) {
  const reached = element("p");
  const save = actionButton("Save", () => app.act("save"), { primary: true });
  const where = element("p", { class: "note" });
  const saved = element("p", { class: "notice good" });
  const list = element("ul", { class: "downloads" });
  const doubtful = element("p", { class: "notice warn" }, "Not all of these files are to be trusted: see steps 3 and 4.");
  const again = actionButton("Begin again", async () => {
    if (confirmed()) {
      // The bed is not shown any more before it is forgotten: no picture is asked for that is not there.
      await app.act("setStep", { step: 1 });
      await app.until(({ step }) => step === 1, "The program does not go back to the first step; try again.");
      await app.act("reset");
    }
  });
  // Asked twice, in the page: the first press says what would be lost.
  let asked = 0;
  const confirmed = () => {
    const now = Date.now();
    const twice = now - asked < 8000;
    asked = twice ? 0 : now;
    again.label(twice ? "Begin again" : "Press again: forget all views");
    return twice;
  };
  return {
    title: "Keep it",
    lead: "Save the calibration where your software looks for it. The report shows what was reached, for later.",
    element: element(
      "div",
      {},
      reached,
      saved,
      where,
      save.element,
      element("h3", { class: "rest" }, "Download"),
      doubtful,
      list,
      element("div", { class: "row rest" }, again.element),
    ),
    update(state) {
      setText(reached, reachedText(state));
      show(doubtful, !allTrusted(state));
      const accepted = state.sources.every(({ calibration }) => calibration.accepted);
      const done = state.sources.some(({ calibration }) => calibration.status === "done");
      save.enable(state.folder !== null && accepted);
      setText(
        where,
        state.folder === null
          ? "The program was started without --output, so there is no folder to save to: download the files instead."
          : accepted
            ? `The files go to the folder ${state.folder} on the machine where the program runs.`
            : "Accept the calibration in step 3 first.",
      );
      setText(saved, state.saved ? `Done: ${state.saved.text}.` : "");
      show(saved, state.saved !== null);
      fill(list, downloadsOf(state), (files) =>
        files.map(({ path, name, label }) => {
          const { element: button, button: node } = actionButton(label, () => download(path, name));
          node.classList.add("link");
          return element("li", {}, button);
        }),
      );
      show(list, done);
    },
  };
}
