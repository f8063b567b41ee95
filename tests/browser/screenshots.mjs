// Makes the pictures of docs/setup.md anew, from the simulated machines:
//
//   cd tests/browser && npm ci && node screenshots.mjs ../../docs/images
//
// Needs Chromium and the built program (FISHEYE_CALIBRATION_PROGRAM if it is not in build/release). Look at what comes
// out before keeping it.
import assert from "node:assert/strict";
import { mkdirSync, mkdtempSync, readFileSync, rmSync, statSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";

import { Bed } from "./support/bed.mjs";
import { launchBrowser } from "./support/browser.mjs";
import { Live, Machine, machineFile, showScene, until } from "./support/live.mjs";
import { Person } from "./support/person.mjs";

const kWidth = 1120;
const kLeast = 720; // px of height
const kMost = 300_000; // bytes of a picture

const [target] = process.argv.slice(2);
if (!target) {
  console.error("usage: node screenshots.mjs OUTPUT_DIR");
  process.exit(2);
}
mkdirSync(target, { recursive: true });

// The page down to the end of what is on it, without the pointer on anything.
async function picture({ page }, name) {
  await page.mouse.move(0, 0);
  await page.evaluate(() => {
    document.activeElement?.blur();
    scrollTo(0, 0);
  });
  const end = await page.evaluate(() =>
    Math.max(...[...document.querySelectorAll("#card, #stage")].map((node) => node.getBoundingClientRect().bottom)));
  const path = join(target, `${name}.png`);
  await page.screenshot({ path, clip: { x: 0, y: 0, width: kWidth, height: Math.max(kLeast, Math.ceil(end) + 24) }, fullPage: true });
  const { size } = statSync(path);
  console.log(`${path}: ${size} bytes`);
  assert.ok(size <= kMost, `${path} is too large`);
}

// The machine with cameras that do not make noise, which would make the pictures several times larger.
async function calmMachine(name, folder) {
  const description = JSON.parse(readFileSync(machineFile(name), "utf8"));
  for (const { effects } of Object.values(description.scenes)) {
    if (effects?.noise) {
      effects.noise = 0;
    }
  }
  const path = join(folder, `${name}.json`);
  writeFileSync(path, JSON.stringify(description));
  return Machine.start(path);
}

const counted = async (live, count) =>
  until(`${count} views`, async () => (await live.state()).sources.every(({ views }) => views.length >= count));

const gained = async (live) =>
  until("what the view adds", async () => (await live.state()).sources.every(({ gain }) => gain !== null));

async function views(person, machine, live, scenes, button) {
  let count = 0;
  for (const scene of scenes) {
    await showScene(machine, live, scene, { searched: true });
    await gained(live);
    await person.press(button);
    count += 1;
    await counted(live, count);
  }
}

async function measured(person) {
  const bed = new Bed(person.page);
  await bed.showsPicture();
  const scale = await bed.scale();
  await person.button("Ruler").click();
  for (const place of [[150, 100], [450, 300]]) {
    await bed.click(scale.of(place));
  }
  await person.type("X (mm)", 450);
  await person.type("Y (mm)", 100);
  await person.press("Show crosshair");
  await person.reads(/ruler/, person.page.locator(".position"));
}

async function oneCamera(browser, folder) {
  const machine = await calmMachine("one", folder);
  // As a person would type it: the name of a folder that lies where the program runs.
  mkdirSync(join(folder, "cutter"));
  const live = await Live.start(machine.sources, { folder: "cutter", cwd: folder });
  const person = await Person.arrive(browser, live.address, { width: kWidth });
  try {
    await person.reads(/Light\s+good[\s\S]+Focus\s+sharp/);
    await picture(person, "setup-1-picture");
    await person.press("Use this bed");
    await person.press("Go on to the target");
    await showScene(machine, live, "board");
    await person.press("Use this target");
    await views(person, machine, live, ["board", "tilted1", "tilted2"], "Take this view");
    await showScene(machine, live, "tilted3", { searched: true });
    await gained(live);
    await person.reads(/This view: expected bed error/);
    await picture(person, "setup-2-target");
    await person.press("Go on: calibrate");
    await person.reads(/Good for 0\.5 mm work/i);
    await picture(person, "setup-3-calibrate");
    await person.press("Accept and go on");
    await showScene(machine, live, "picture");
    await measured(person);
    await picture(person, "setup-4-check");
    await person.press("Go on: keep it");
    await person.press("Save");
    await person.reads(/Done: camera\.ini/);
    await picture(person, "setup-5-keep");
    await person.leave();
  } finally {
    await live.stop();
    await machine.stop();
  }
}

async function twoCameras(browser, folder) {
  const machine = await calmMachine("two", folder);
  const live = await Live.start(machine.sources, { folder });
  const person = await Person.arrive(browser, live.address, { width: kWidth });
  try {
    await person.type("Width (mm)", 1000);
    await person.press("Use this bed");
    await person.press("Go on to the target");
    await showScene(machine, live, "board");
    await person.type("Points in a row", 23);
    await person.type("First point at X (mm)", 60);
    await person.type("First point at Y (mm)", 60);
    await person.press("Use this target");
    await views(person, machine, live, ["board", "tilted1", "tilted2", "tilted3"], "Take both views");
    await person.press("Go on: calibrate");
    await person.press("Accept and go on");
    await person.isAt("Check");
    await showScene(machine, live, "board");
    await person.press("Join the two pictures");
    await person.press("Show the joined bed");
    await new Bed(person.page).showsPicture();
    await picture(person, "setup-two-cameras");
    await person.leave();
  } finally {
    await live.stop();
    await machine.stop();
  }
}

const folder = mkdtempSync(join(tmpdir(), "fisheye-pictures-"));
const browser = await launchBrowser();
try {
  await oneCamera(browser, folder);
  await twoCameras(browser, folder);
} finally {
  await browser.close();
  rmSync(folder, { recursive: true, force: true });
}
