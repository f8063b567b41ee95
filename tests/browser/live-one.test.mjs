// The whole way from an empty machine to saved files with one camera, as a person goes it.
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { mkdtempSync, readFileSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { after, before, test } from "node:test";

import { Bed, drawnPoints, pictureSpeed } from "./support/bed.mjs";
import { launchBrowser, program } from "./support/browser.mjs";
import { Live, Machine, showScene, trueCamera, truth, until } from "./support/live.mjs";
import { Person } from "./support/person.mjs";

const kGoodEnough = 0.5; // mm, what the page calls the calibration good for
const kRed = [255, 122, 107]; // of the crosshair

let folder;
let machine;
let live;
let browser;
let person;
let board;

before(async () => {
  folder = mkdtempSync(join(tmpdir(), "fisheye-live-"));
  [board] = truth("one", "board");
  machine = await Machine.start("one");
  live = await Live.start(machine.sources, { folder });
  browser = await launchBrowser();
  person = await Person.arrive(browser, live.address);
});

after(async () => {
  await browser?.close();
  await live?.stop();
  await machine?.stop();
  rmSync(folder, { recursive: true, force: true });
});

const source = async () => (await live.state()).sources[0];

test("the picture is judged in words", async () => {
  await person.reads(/Light\s+good\s+brightness \d+ of 255.*\s+Focus\s+sharp\s+edges are [\d.]+ pixels soft/);
  await person.looksRight("one-1-picture");
  await machine.scene("dark");
  await person.reads(/Light\s+too dark[\s\S]*Add light/);
  await machine.scene("blurred");
  await person.reads(/Focus\s+blurred[\s\S]*Turn the lens's focus ring/);
  await person.reads(/You can go on, but a better picture gives smaller errors\./);
  await machine.scene("empty");
  await person.reads(/Light\s+good[\s\S]*Focus\s+sharp/);
});

test("the bed is asked for, and what is no number is refused", async () => {
  await person.type("Width (mm)", "wide");
  await person.press("Use this bed");
  await person.reads(/Width: type a number/);
  await person.type("Width (mm)", 600);
  await person.type("Height (mm)", 400);
  await person.type("Good enough (mm)", kGoodEnough);
  await person.press("Use this bed");
  await person.reads(/Bed: 600 × 400 mm, good enough: 0\.50 mm/);
  await person.reloads();
  await person.reads(/Bed: 600 × 400 mm, good enough: 0\.50 mm/);
  await person.press("Go on to the target");
  await person.isAt("Target");
});

test("of a target that is another one, it is said what is seen instead", async () => {
  await machine.scene("board");
  await person.looksRight("one-2-choose");
  await person.card().getByLabel("Kind", { exact: true }).selectOption("chessboard");
  await person.type("Points in a row", 7);
  await person.press("Use this target");
  const [, said] = await person.reads(/Not found: ([^\n]+)\./);
  assert.ok(said.length > 10, said);
  await person.looksRight("one-2-other", [390]);
});

test("found points are drawn where they are", async () => {
  await person.page.locator("summary", { hasText: "Target:" }).click();
  await person.card().getByLabel("Kind", { exact: true }).selectOption("charuco");
  for (const [label, value] of Object.entries({
    "Points in a row": 13,
    "Rows of points": 8,
    "Distance of points (mm)": 40,
    "First point at X (mm)": 60,
    "First point at Y (mm)": 60,
  })) {
    await person.type(label, value);
  }
  await person.press("Use this target");
  await person.reads(/Found: 104 of 104 points/);
  const [size] = machine.description.cameras.map((camera) => camera.size);
  await until("all points on the screen", async () =>
    (await drawnPoints(person.page, 0, board.map(({ raw }) => raw), size)) > 0.97);
});

test("views are taken by the button and by themselves", async () => {
  await person.reads(/This view would give an expected bed error of [\d.]+ mm/);
  await person.press("Take this view");
  await person.reads(/View 1: 104 points, flat on the bed/);
  await person.reloads();
  await person.reads(/View 1: 104 points, flat on the bed/);
  const { page: other, context } = await Person.arrive(browser, live.address, { width: 390, scheme: "dark" });
  await other.getByText("View 1: 104 points, flat on the bed").waitFor();
  await person.card().getByLabel("Take views by itself when the target lies still and the view helps").check();
  await until("the other page shows the same", () => other.locator("#automatic").isChecked());
  for (const scene of ["tilted1", "tilted2"]) {
    const { views } = await source();
    await machine.scene(scene);
    await until(`a view of ${scene}`, async () => (await source()).views.length > views.length);
  }
  await person.card().getByLabel("Take views by itself when the target lies still and the view helps").uncheck();
  const { covered, views } = await source();
  await other.getByText(`View ${views.length}: 104 points`).waitFor();
  await context.close();
  await person.reads(new RegExp(`${views.length} views, spanning ${Math.round(100 * covered)} % of the picture \\(shaded: where points were\\)`));
  await person.reads(/That is enough: go on\./);
  await person.looksRight("one-2-target");
});

// The largest difference between where the page's calibration sees the board's points and where they are, mm.
async function largestError() {
  const errors = [];
  for (const { raw, bed } of board) {
    const found = (await live.convert(0, "raw", raw)).bed;
    errors.push(Math.hypot(found[0] - bed[0], found[1] - bed[1]));
  }
  return Math.max(...errors);
}

test("the calibration is as good as the page says", async (t) => {
  await person.press("Go on: calibrate");
  await person.isAt("Calibrate");
  await person.reads(/Good for 0\.5 mm work/i);
  const [, shown] = await person.reads(/on the bed \(95 %\)\s+([\d.]+) mm/);
  assert.equal(shown, (await source()).calibration.onBed.toFixed(2));
  const largest = await largestError();
  t.diagnostic(`the page says ${shown} mm on the bed; the largest error at a true point is ${largest.toFixed(3)} mm`);
  assert.ok(largest <= Math.max(2 * Number(shown), 0.05), `${largest} mm at a true point, ${shown} mm said`);
  assert.ok(Number(shown) <= kGoodEnough);
  await person.reads(/What would help most\s+[\s\S]*mm on the bed/);
  const map = person.page.locator("canvas.map");
  assert.match(await map.getAttribute("aria-label"), /^Map of errors\. The bed from X 0\.0, Y 0\.0 mm to X 600\.0, Y 400\.0 mm\./);
  await map.hover();
  await person.reads(/X \d+\.\d, Y \d+\.\d mm: up to [\d.]+ mm off/, person.page.locator("#stage"));
  await person.reloads();
  await person.reads(/Good for 0\.5 mm work/i);
  await person.looksRight("one-3-calibrate");
});

test("a further view is added", async () => {
  await person.press("Add a view");
  await person.isAt("Target");
  const { views } = await source();
  await showScene(machine, live, "tilted3", { searched: true });
  await person.press("Take this view");
  await person.reads(new RegExp(`View ${views.length + 1}: 104 points`));
  await person.goTo("Calibrate");
  await person.reads(/Views, target or bed have changed since\. Calibrate again\./);
  await person.press("Calibrate again");
  await until("the new calibration", async () => {
    const { status, outdated } = (await source()).calibration;
    return status === "done" && !outdated;
  });
  await person.press("Accept and go on");
  await person.isAt("Check");
});

test("places and lengths on the screen are the true ones", async (t) => {
  await machine.scene("picture");
  const bed = new Bed(person.page);
  await bed.showsPicture();
  await person.looksRight("one-4-check");
  await person.reloads();
  await bed.showsPicture();
  await person.button("Grid").click();
  await person.button("Zoom in").click();
  await person.button("Zoom in").click();
  const scale = await bed.scale();
  const places = [[200, 150], [400, 250]];
  const crosses = [];
  for (const place of places) {
    crosses.push(await until("a sharp cross", async () => {
      const at = await bed.cross(scale.of(place), scale.perMm);
      return at.every(Number.isFinite) && at;
    }));
    const told = await bed.readSettled(crosses.at(-1));
    const off = Math.hypot(told[0] - place[0], told[1] - place[1]);
    t.diagnostic(`the mark at ${place} is told to be at ${told}`);
    assert.ok(off < kGoodEnough, `the mark at ${place} is told to be at ${told}`);
  }
  await person.button("Ruler").click();
  await bed.click(crosses[0]);
  await bed.click(crosses[1]);
  const [, length] = await person.reads(/ruler ([\d.]+) mm/, person.page.locator(".position"));
  t.diagnostic(`marks that are 223.61 mm apart are ${length} mm apart by the ruler`);
  assert.ok(Math.abs(Number(length) - Math.hypot(200, 100)) < kGoodEnough, `${length} mm`);
  await person.type("X (mm)", 400);
  await person.type("Y (mm)", 250);
  await person.press("Show crosshair");
  const mark = await until("the crosshair", () => bed.drawn(kRed));
  const off = Math.hypot(mark[0] - crosses[1][0], mark[1] - crosses[1][1]) / scale.perMm;
  t.diagnostic(`the crosshair at 400, 250 is ${off.toFixed(2)} mm off the mark on the screen`);
  assert.ok(off < kGoodEnough, `${off} mm`);
});

test("the bed is moved and zoomed by the mouse", async () => {
  const bed = new Bed(person.page);
  const scale = await bed.scale();
  const before = await bed.readSettled([300, 200]);
  const { x, y } = await bed.box();
  await person.page.mouse.down();
  await person.page.mouse.move(x + 360, y + 240, { steps: 5 });
  await person.page.mouse.up();
  const moved = await bed.readSettled([360, 240]);
  assert.ok(Math.hypot(moved[0] - before[0], moved[1] - before[1]) < 0.2, `${before} became ${moved}`);
  await person.page.mouse.wheel(0, -400);
  const zoomed = await bed.readSettled([360, 240]);
  assert.ok(Math.hypot(zoomed[0] - before[0], zoomed[1] - before[1]) < 0.2, `${before} became ${zoomed}`);
  assert.ok((await bed.scale()).perMm > 1.3 * scale.perMm);
  await person.button("Show the bed").click();
  await person.type("X (mm)", 100000);
  await person.press("Show crosshair");
  await person.reads(/that place is not in the picture/i);
});

test("how fast pictures come is measured", async (t) => {
  const { age, shown, rate } = await pictureSpeed(person.page, "/frames/0/corrected.jpg?columns=1440", 30);
  t.diagnostic(`${rate.toFixed(1)} corrected pictures a second; ${age.toFixed(0)} ms old when sent, ${shown.toFixed(0)} ms when drawn`);
  assert.ok(rate > 1, `${rate} pictures a second`);
});

test("whether the camera has moved is checked with the target", async () => {
  await showScene(machine, live, "board");
  await person.press("Check with the target");
  const [said] = await person.reads(/moved by [\d.]+ mm[^\n]*/);
  assert.match(said, /within/);
});

test("the files are saved and can be downloaded", async () => {
  await person.press("Go on: keep it");
  await person.isAt("Keep");
  await person.press("Save");
  await person.reads(/Done: camera\.ini, points\.csv, report\.html written to/);
  await person.reloads();
  await person.reads(/Done: camera\.ini, points\.csv, report\.html written to/);
  await person.looksRight("one-5-keep");
  for (const name of ["camera.ini", "report.html", "points.csv"]) {
    const waiting = person.page.waitForEvent("download");
    await person.page.getByRole("button", { name: `(${name})` }).click();
    const download = await waiting;
    assert.equal(download.suggestedFilename(), name);
    const text = readFileSync(await download.path(), "utf8");
    assert.ok(text.length > 500, `${name}: ${text.length} characters`);
    if (name !== "report.html") {
      assert.equal(text, readFileSync(join(folder, name), "utf8"), name);
    }
  }
  assert.match(readFileSync(join(folder, "report.html"), "utf8"), /Calibration report/);
  // Independent of the server: the saved camera against the machine's true one, everywhere on the bed.
  const options = ["--compare", join(folder, "camera.ini"), "--truth-camera", trueCamera("one", folder)];
  execFileSync(program, ["simulate", ...options, "--bed", "0,0,600x400", "--tolerance", String(kGoodEnough)]);
});

test("everything can begin again, when asked twice", async () => {
  await person.press("Begin again");
  await person.isAt("Keep");
  await person.press("Press again: forget all views");
  await person.isAt("Picture");
  await until("all is forgotten", async () => {
    const { views, calibration } = await source();
    return views.length === 0 && calibration.status === "none";
  });
  assert.ok(readFileSync(join(folder, "camera.ini"), "utf8").length > 500);
});

test("no error and no refusal on the whole way", () => person.leave());
