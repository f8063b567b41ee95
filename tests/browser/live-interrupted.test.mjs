// What goes wrong beside the page: the program ends and begins again, the camera is unplugged. And people who use the
// keyboard only.
import assert from "node:assert/strict";
import { mkdtempSync, readdirSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { after, before, describe, test } from "node:test";

import { launchBrowser } from "./support/browser.mjs";
import { Live, Machine, showScene, until } from "./support/live.mjs";
import { Person } from "./support/person.mjs";

const kMostStops = 60; // of the tabulator on a page

let folder;
let machine;
let live;
let browser;

before(async () => {
  folder = mkdtempSync(join(tmpdir(), "fisheye-live-"));
  machine = await Machine.start("one", { rate: 8 });
  live = await Live.start(machine.sources, { folder });
  browser = await launchBrowser();
});

after(async () => {
  await browser?.close();
  await live?.stop();
  await machine?.stop();
  rmSync(folder, { recursive: true, force: true });
});

describe("a person with a keyboard only, on a narrow screen with little motion", () => {
  let person;

  before(async () => {
    person = await Person.arrive(browser, live.address, { width: 390 });
    await person.page.emulateMedia({ reducedMotion: "reduce" });
  });

  // Goes on with the tabulator until what is wanted has the focus, and sees that the focus can be seen.
  async function reach(what, matches, argument) {
    for (let stop = 0; stop < kMostStops; stop += 1) {
      await person.page.keyboard.press("Tab");
      if (await person.page.evaluate(matches, argument)) {
        const width = await person.page.evaluate(() => getComputedStyle(document.activeElement).outlineWidth);
        assert.notEqual(width, "0px", `${what} does not show that it has the focus`);
        return;
      }
    }
    assert.fail(`${what} is not reached by the tabulator`);
  }

  const hasText = (text) => document.activeElement.tagName === "BUTTON" && document.activeElement.textContent.trim() === text;

  async function press(text) {
    await until(`"${text}" is ready`, () => person.page.evaluate((name) => [...document.querySelectorAll("button")].some((button) =>
      button.checkVisibility() && button.textContent.trim() === name && button.getAttribute("aria-disabled") !== "true"), text));
    await reach(text, hasText, text);
    await person.page.keyboard.press("Enter");
  }

  const heading = () => person.page.evaluate(() => document.activeElement.id);

  test("goes the whole way", async () => {
    await press("Use this bed");
    await person.reads(/Bed: 600 × 400 mm/);
    await machine.scene("board");
    await press("Go on to the target");
    await person.isAt("Target");
    await until("the focus at the top of the step", async () => (await heading()) === "step-heading");
    await reach("the number of points", () => document.activeElement.matches("#card input"));
    await person.page.keyboard.press("Control+A");
    await person.page.keyboard.type("13");
    await person.page.keyboard.press("Enter");
    await person.reads(/Found: 104 of 104 points/);
    await press("Take this view");
    await person.reads(/View 1: 104 points/);
    await showScene(machine, live, "tilted1", { searched: true });
    await press("Take this view");
    await person.reads(/View 2: 104 points/);
    await press("Go on: calibrate");
    await person.reads(/Good for 0\.5 mm work/i);
    await press("Accept and go on");
    await person.isAt("Check");
  });

  test("measures", async () => {
    await machine.scene("picture");
    await press("Ruler");
    await reach("the bed", () => document.activeElement.matches(".view.bed"));
    const position = person.page.locator(".position");
    await person.reads(/X 300\.\d, Y 200\.\d mm|X 299\.\d, Y 199\.\d mm|X 300\.\d, Y 199\.\d mm|X 299\.\d, Y 200\.\d mm/, position);
    await person.page.keyboard.press("Enter");
    await person.page.keyboard.press("ArrowRight");
    await person.page.keyboard.press("ArrowRight");
    await person.page.keyboard.press("Enter");
    const [, length] = await person.reads(/ruler ([\d.]+) mm/, position);
    assert.ok(Number(length) > 50, length);
    await until("it is said aloud", async () => /ruler: [\d.]+ mm/.test(await person.page.locator("#news").textContent()));
    await person.page.keyboard.press("Escape");
    await until("the ruler is gone", async () => !/ruler/.test(await position.textContent()));
  });

  test("saves, and nothing has moved by itself", async () => {
    await press("Go on: keep it");
    await person.isAt("Keep");
    await press("Save");
    await person.reads(/Done: camera\.ini/);
    assert.deepEqual(readdirSync(folder).sort(), ["camera.ini", "points.csv", "report.html"]);
    const durations = await person.page.evaluate(() =>
      [...document.querySelectorAll("*")].flatMap((node) => {
        const { transitionDuration, animationDuration } = getComputedStyle(node);
        return [transitionDuration, animationDuration].flatMap((text) => text.split(",")).map(parseFloat);
      }));
    assert.ok(durations.length > 100 && durations.every((seconds) => seconds <= 0.001));
    await person.leave();
  });
});

describe("interruptions", () => {
  let person;

  before(async () => {
    person = await Person.arrive(browser, live.address);
  });

  test("the camera is unplugged and plugged in again", async () => {
    await person.goTo("Picture");
    await machine.post("/off");
    const stage = person.page.locator("#stage");
    await person.reads(/no stream can be opened there; next try in \d+ s/, stage);
    await person.reads(/Light\s+waiting\s+for the picture to come back/);
    await until("the state says so", async () => (await live.state()).sources[0].status === "lost");
    await person.looksRight("lost-source", [390]);
    await person.goTo("Check");
    await until("the bed says so", () => person.page.locator(".bed-stage .view-message").isVisible());
    await person.goTo("Picture");
    await machine.post("/on");
    await until("the picture is back", () => person.page.locator(".raw-stage .view-message").isHidden());
    await person.reads(/pictures a second/, stage);
    assert.equal((await live.state()).sources[0].views.length, 2);
    assert.deepEqual(person.failures, []);
    assert.deepEqual(person.errors, []);
  });

  test("the program ends and begins again, and so does the page", async () => {
    await live.kill();
    await person.page.locator("#lost").waitFor();
    assert.equal(await person.page.locator("#connection-text").textContent(), "not connected");
    await person.looksRight("lost-program", [390]);
    await person.goToWithoutAnswer("Target");
    await live.beginAgain();
    await until("connected again", async () => (await person.page.locator("#connection-text").textContent()) === "connected");
    await person.page.locator("#lost").waitFor({ state: "hidden" });
    // The new program knows nothing of what the old one had not saved.
    await person.isAt("Picture");
    await person.page.getByText("The program was started again.").first().waitFor();
    await person.reads(/Light\s+(good|too)/);
    await until("pictures come", async () => (await person.page.locator("figcaption").first().textContent()).includes("pictures a second"));
    // What the browser says about the time without an answer is all that may have gone wrong.
    for (const text of [...person.failures, ...person.errors]) {
      assert.match(text, /ERR_CONNECTION_REFUSED|ERR_CONNECTION_RESET|ERR_EMPTY_RESPONSE|ERR_INCOMPLETE_CHUNKED_ENCODING|ERR_CONTENT_LENGTH_MISMATCH/);
    }
    await person.context.close();
  });
});
