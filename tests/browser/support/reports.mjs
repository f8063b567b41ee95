// The reports that the tests look at, made by the program from known cameras.
import { execFileSync } from "node:child_process";
import { readFileSync } from "node:fs";
import { join } from "node:path";
import { pathToFileURL } from "node:url";

import { program } from "./browser.mjs";
import { Camera, writeFrame, writePoints } from "./machine.mjs";

const board = { columns: 9, rows: 7, square: 30, corner: [0, 0] };
const middle = [120, 90];

const run = (...options) => execFileSync(program, options, { encoding: "utf8", stdio: ["ignore", "pipe", "pipe"] });

// Three views of a board with noise, the bed's with a picture. The middle one has a hostile name.
export function calibrationReport(folder) {
  const views = [
    new Camera({ about: middle, distance: 190, tilts: [0.2, -0.15] }),
    new Camera({ about: middle, distance: 230, tilts: [-0.4, 0.2] }),
    new Camera({ about: middle, distance: 210, tilts: [0.1, 0.45] }),
  ];
  const paths = ["bed.csv", "<img src=x onerror=alert(1)>&\"'.csv", "tilted.csv"].map((name) => join(folder, name));
  views.forEach((camera, i) => writePoints(paths[i], camera, board, { noise: 0.3 }));
  writeFrame(join(folder, "bed.pgm"), views[0], board);
  const report = join(folder, "report.html");
  run("calibrate", ...paths, "--image-size", "640x480", "-o", join(folder, "camera.ini"), "--json",
    join(folder, "report.json"), "--report", report, "--report-frame", join(folder, "bed.pgm"));
  return {
    address: pathToFileURL(report).href,
    html: readFileSync(report, "utf8"),
    json: JSON.parse(readFileSync(join(folder, "report.json"), "utf8")),
    residuals: readFileSync(join(folder, "residuals.csv"), "utf8"),
  };
}

// Two cameras side by side over one board.
export function stitchReport(folder) {
  const shared = { columns: 9, rows: 7, square: 50, corner: [50, 50] };
  const sides = { left: 200, right: 320 };
  const files = Object.entries(sides).map(([side, X]) => {
    const camera = new Camera({ width: 320, height: 240, focal: 120, about: [X, 200], distance: 260, tilts: [0.1, 0.05] });
    const path = (kind) => join(folder, `${side}.${kind}`);
    writePoints(path("csv"), camera, shared, { noise: 0.2 });
    writeFrame(path("pgm"), camera, shared);
    run("calibrate", path("csv"), "--image-size", "320x240", "--corrected-size", "640x480", "-o", path("ini"),
      "--residual-plot", path("png"), "--residual-table", join(folder, `${side}-residuals.csv`));
    return [path("pgm"), path("ini"), path("csv")].join(",");
  });
  const report = join(folder, "stitch.html");
  const out = run("stitch", "--left", files[0], "--right", files[1], "-o", join(folder, "bed.png"), "--dual",
    join(folder, "dual.ini"), "--report", report);
  return { address: pathToFileURL(report).href, html: readFileSync(report, "utf8"), out };
}
