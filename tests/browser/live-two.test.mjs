// The whole way with two cameras over one bed, up to the file that joins them.
import assert from "node:assert/strict";
import { mkdtempSync, readdirSync, readFileSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { after, before, test } from "node:test";

import { Bed } from "./support/bed.mjs";
import { launchBrowser } from "./support/browser.mjs";
import { Live, Machine, showScene, truth, until } from "./support/live.mjs";
import { Person } from "./support/person.mjs";

const kGoodEnough = 0.5; // mm
const kFiles = ["camera1.ini", "camera2.ini", "dual.html", "dual.ini", "points1.csv", "points2.csv", "report1.html", "report2.html"];

let folder;
let machine;
let live;
let browser;
let person;

before(async () => {
  folder = mkdtempSync(join(tmpdir(), "fisheye-live-"));
  machine = await Machine.start("two", { rate: 8 });
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

const views = async () => (await live.state()).sources.map((source) => source.views.length);

test("both pictures are judged and the bed is told", async () => {
  await person.reads(/Camera 1\s+Light\s+good[\s\S]+Camera 2\s+Light\s+good/);
  await person.type("Width (mm)", 1000);
  await person.press("Use this bed");
  await person.reads(/Bed: 1000 × 400 mm/);
  await person.looksRight("two-1-picture", [390]);
  await machine.scene("board");
  await person.press("Go on to the target");
  await person.isAt("Target");
});

test("one target serves both", async () => {
  await person.type("Points in a row", 23);
  await person.type("First point at X (mm)", 60);
  await person.type("First point at Y (mm)", 60);
  await person.press("Use this target");
  await person.reads(/Camera 1\s+Found: 1\d\d of 184 points[\s\S]+Camera 2\s+Found: 1\d\d of 184 points/);
  await person.press("Take both views");
  await until("the first views", async () => String(await views()) === "1,1");
  await showScene(machine, live, "tilted1", { searched: true });
  await person.press("Take both views");
  await until("the second views", async () => String(await views()) === "2,2");
  await person.looksRight("two-2-target");
  await showScene(machine, live, "tilted3", { searched: true });
  await person.button("Camera 2").click();
  await person.press("Take camera 2's view");
  await until("a view of one camera", async () => String(await views()) === "2,3");
  await person.button("Both").click();
  await person.press("Take both views");
  await until("further views", async () => String(await views()) === "3,4");
});

test("both are calibrated, as well as the page says", async (t) => {
  await machine.scene("board");
  await person.press("Go on: calibrate");
  await person.isAt("Calibrate");
  await person.reads(/Camera 1[\s\S]+on the bed \(95 %\)[\s\S]+Camera 2[\s\S]+on the bed \(95 %\)/);
  const { sources } = await live.state();
  const cameras = truth("two", "board");
  for (const [index, points] of cameras.entries()) {
    const errors = [];
    for (const { raw, bed } of points.filter((_, i) => i % 5 === 0)) {
      const found = (await live.convert(index, "raw", raw)).bed;
      errors.push(Math.hypot(found[0] - bed[0], found[1] - bed[1]));
    }
    const { onBed } = sources[index].calibration;
    const largest = Math.max(...errors);
    t.diagnostic(`camera ${index + 1}: ${onBed.toFixed(2)} mm said, ${largest.toFixed(3)} mm at the worst of ${errors.length} true points`);
    assert.ok(largest <= Math.max(2 * onBed, 0.05) && largest < kGoodEnough, `${largest} mm, ${onBed} mm said`);
  }
  await person.looksRight("two-3-calibrate");
  await person.press("Accept and go on");
  await person.isAt("Check");
});

test("the pictures are joined and agree", async () => {
  await person.press("Join the two pictures");
  const [, rms, worst] = await person.reads(/cameras agree to ([\d.]+) mm [\s\S]* to ([\d.]+) mm at the worst/i);
  assert.ok(Number(rms) < kGoodEnough && Number(rms) <= Number(worst));
  const shown = await person.page.$$eval("#card table tbody tr", (rows) => rows.map((row) => Number(row.cells[3].textContent)));
  assert.deepEqual(shown, [...shown].sort((a, b) => b - a));
  assert.ok(Math.abs(shown[0] - Number(worst)) <= 0.006, `${shown[0]} and ${worst}`);
  await person.press("Show the joined bed");
  await new Bed(person.page).showsPicture();
  await person.looksRight("two-4-check");
});

test("places on the joined bed are the true ones", async (t) => {
  await showScene(machine, live, "picture");
  await person.reloads();
  await person.button("Joined").click();
  const bed = new Bed(person.page);
  await bed.showsPicture();
  await person.button("Grid").click();
  const scale = await bed.scale();
  for (const place of [[150, 150], [500, 200], [850, 250]]) {
    const at = await until("a cross", async () => {
      const cross = await bed.cross(scale.of(place), scale.perMm);
      return cross.every(Number.isFinite) && cross;
    });
    const told = await bed.readSettled(at);
    t.diagnostic(`the mark at ${place} is told to be at ${told}`);
    assert.ok(Math.hypot(told[0] - place[0], told[1] - place[1]) < kGoodEnough, `${place}: ${told}`);
  }
});

test("everything is saved", async () => {
  await person.press("Go on: keep it");
  await person.isAt("Keep");
  await person.press("Save");
  await person.reads(/Done: [\s\S]*dual\.ini[\s\S]* written to/);
  assert.deepEqual(readdirSync(folder).sort(), kFiles);
  const waiting = person.page.waitForEvent("download");
  await person.page.getByRole("button", { name: "(dual.ini)" }).click();
  const download = await waiting;
  assert.equal(download.suggestedFilename(), "dual.ini");
  assert.equal(readFileSync(await download.path(), "utf8"), readFileSync(join(folder, "dual.ini"), "utf8"));
  await person.looksRight("two-5-keep", [1440]);
});

test("no error and no refusal on the whole way", () => person.leave());
