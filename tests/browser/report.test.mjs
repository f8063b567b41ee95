// The reports in a browser, as a person uses them.
import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { mkdirSync, mkdtempSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { after, before, describe, test } from "node:test";

import { axeViolations, launchBrowser, looks, openPage, screenshots, takeScreenshot } from "./support/browser.mjs";
import { calibrationReport, stitchReport } from "./support/reports.mjs";

let browser;
let folder;
const reports = {};

before(async () => {
  folder = mkdtempSync(join(tmpdir(), "fisheye-report-"));
  reports.calibration = calibrationReport(folder);
  reports.stitch = stitchReport(folder);
  browser = await launchBrowser();
});

after(async () => {
  await browser?.close();
  rmSync(folder, { recursive: true, force: true });
});

// Runs `steps` with the opened page, and ends with: no error, no request but that for the file.
async function onPage(name, options, steps) {
  const { page, context, errors, requests } = await openPage(browser, reports[name].address, options);
  try {
    await steps(page);
    assert.deepEqual(errors, []);
    assert.deepEqual(requests, [reports[name].address]);
  } finally {
    await context.close();
  }
}

const columnOf = (page, table, column) =>
  page.$$eval(`table[data-table="${table}"] tbody tr`, (rows, at) => rows.map((row) => Number(row.cells[at].dataset.value)), column);

const ascending = (values) => [...values].sort((a, b) => a - b);

for (const name of ["calibration", "stitch"]) {
  describe(`the ${name} report`, () => {
    for (const { width, scheme } of looks) {
      test(`is accessible and fits, ${width} px, ${scheme}`, async () => {
        await onPage(name, { width, scheme }, async (page) => {
          assert.deepEqual(await axeViolations(page), []);
          const overflow = await page.evaluate(() => document.documentElement.scrollWidth - document.documentElement.clientWidth);
          assert.equal(overflow, 0, "the page scrolls sideways");
          await takeScreenshot(page, `report-${name}-${width}-${scheme}`);
        });
      });
    }

    test("is one file under 3 MB that names no other place", () => {
      const { html } = reports[name];
      assert.ok(Buffer.byteLength(html) < 3_000_000, `${Buffer.byteLength(html)} bytes`);
      assert.doesNotMatch(html.replaceAll(/xmlns(:\w+)?="[^"]*"/g, ""), /https?:\/\//);
      assert.match(html, /<meta http-equiv="Content-Security-Policy" content="default-src &#39;none&#39;;/);
    });

    test("shows everything with scripts off", async () => {
      await onPage(name, { javaScript: false }, async (page) => {
        assert.equal(await page.locator("h1").textContent(), name === "stitch" ? "Stitch report" : "Calibration report");
        const points = await page.locator(".point").count();
        assert.ok(points >= 30, `${points} points`);
        assert.equal(await page.locator(".point > title").count(), points);
        assert.equal(await page.locator("th button").count(), 0);
      });
    });

    test("prints on pages of A4", async () => {
      for (const scheme of ["light", "dark"]) {
        await onPage(name, { scheme }, async (page) => {
          mkdirSync(screenshots, { recursive: true });
          const path = join(screenshots, `report-${name}-${scheme}.pdf`);
          writeFileSync(path, await page.pdf({ preferCSSPageSize: true, printBackground: false }));
          const facts = execFileSync("pdfinfo", [path], { encoding: "utf8" });
          assert.match(facts, /Page size: +59[45]\.\d+ x 84[12]\.\d+ pts \(A4\)/);
          const pages = Number(/Pages: +(\d+)/.exec(facts)[1]);
          assert.ok(pages >= 2 && pages <= (name === "stitch" ? 6 : 14), `${pages} pages`);
        });
      }
    });

    test("has a heading for every section, a caption for every table and a name for every drawing", async () => {
      await onPage(name, {}, async (page) => {
        assert.equal(await page.locator("h1").count(), 1);
        const sections = await page.locator("section").count();
        assert.equal(await page.locator("section > h2").count(), sections);
        assert.equal(await page.locator("nav a").count(), sections);
        assert.equal(await page.locator("table:not(:has(caption))").count(), 0);
        assert.equal(await page.locator("figure > svg:not([aria-label])").count(), 0);
        assert.equal(await page.locator("figure:not(:has(figcaption))").count(), 0);
      });
    });
  });
}

describe("tables", () => {
  test("are sorted by a click, and the other way by a second one", async () => {
    await onPage("calibration", {}, async (page) => {
      const button = page.locator('table[data-table="points-1"] th button', { hasText: "length" });
      const heading = page.locator('table[data-table="points-1"] th', { hasText: "length" });
      const unsorted = await columnOf(page, "points-1", 7);
      assert.equal(unsorted.length, 63);
      assert.notDeepEqual(unsorted, ascending(unsorted));
      await button.click();
      assert.equal(await heading.getAttribute("aria-sort"), "ascending");
      assert.deepEqual(await columnOf(page, "points-1", 7), ascending(unsorted));
      await button.click();
      assert.equal(await heading.getAttribute("aria-sort"), "descending");
      assert.deepEqual(await columnOf(page, "points-1", 7), ascending(unsorted).reverse());
      assert.equal(await page.locator('table[data-table="points-1"] th[aria-sort]').count(), 1);
    });
  });

  test("are sorted by keyboard", async () => {
    await onPage("stitch", {}, async (page) => {
      const button = page.locator('table[data-table="agreement"] th button', { hasText: "apart" });
      await button.focus();
      await page.keyboard.press("Enter");
      const sorted = await columnOf(page, "agreement", 3);
      assert.deepEqual(sorted, ascending(sorted));
      await page.keyboard.press("Space");
      assert.deepEqual(await columnOf(page, "agreement", 3), ascending(sorted).reverse());
    });
  });
});

describe("points of drawings", () => {
  test("tell their numbers under the pointer", async () => {
    await onPage("calibration", {}, async (page) => {
      const point = page.locator('#residuals-1 .point[data-id="13"]');
      await point.locator(".dot").hover({ force: true });
      const tip = page.locator(".tip");
      assert.ok(await tip.isVisible());
      const text = await tip.textContent();
      const { dx, dy } = reports.calibration.json.residuals.find(({ id }) => id === 13);
      assert.match(text, /^Point 13: X 90, Y 30 mm; /);
      const [, shownX, shownY] = /residual (-?[\d.]+), (-?[\d.]+) px/.exec(text);
      assert.ok(Math.abs(Number(shownX) - dx) <= 0.0005 && Math.abs(Number(shownY) - dy) <= 0.0005, text);
      await page.mouse.move(2, 2);
      assert.ok(await tip.isHidden());
    });
  });

  test("tell their numbers by keyboard, one stop of the tabulator for all", async () => {
    await onPage("stitch", {}, async (page) => {
      const focused = () => page.evaluate(() => document.activeElement.dataset.id);
      assert.equal(await page.locator('#agreement-arrows .point[tabindex="0"]').count(), 1);
      await page.locator('#agreement-arrows .point[tabindex="0"]').focus();
      const first = await focused();
      await page.keyboard.press("ArrowRight");
      assert.notEqual(await focused(), first);
      assert.match(await page.locator(".tip").textContent(), /^Point \d+: [\d.]+ mm apart/);
      await page.keyboard.press("Home");
      assert.equal(await focused(), first);
      await page.keyboard.press("Escape");
      assert.ok(await page.locator(".tip").isHidden());
    });
  });
});

describe("numbers", () => {
  const value = async (page, reading) => Number(await page.locator(`[data-reading="${reading}"]`).getAttribute("data-value"));

  test("of the calibration are those of its JSON and CSV", async () => {
    await onPage("calibration", {}, async (page) => {
      const { json, residuals } = reports.calibration;
      assert.equal(await page.locator("[data-verdict]").textContent(), json.verdict);
      assert.equal(await value(page, "insideTarget"), json.bedError.insideTarget);
      assert.equal(await value(page, "onBed"), json.bedError.onBed);
      assert.equal(await value(page, "rms"), json.rms);
      assert.deepEqual(await columnOf(page, "points-1", 0), json.residuals.map(({ id }) => id));
      assert.deepEqual(await columnOf(page, "points-1", 5), json.residuals.map(({ dx }) => dx));
      assert.deepEqual(await columnOf(page, "points-1", 6), json.residuals.map(({ dy }) => dy));
      const written = residuals.trim().split("\n").slice(1).map((line) => Number(line.split(",")[0]));
      assert.deepEqual(await columnOf(page, "points-1", 0), written);
      const camera = await page.$$eval('table[data-table="camera"] tbody tr', (rows) =>
        rows.map(({ cells }) => [cells[0].textContent, Number(cells[1].dataset.value)]));
      assert.ok(camera.length > 10);
      for (const [name, shown] of camera) {
        assert.equal(shown, json.camera[name], name);
      }
      const effects = await page.$$eval(".remedies > li", (items) => items.map((item) => Number(item.dataset.value)));
      assert.deepEqual(effects, ascending(effects));
      for (const effect of effects) {
        assert.ok(json.remedies.some(({ onBed }) => onBed === effect));
      }
    });
  });

  test("of the stitch are those that it prints", async () => {
    await onPage("stitch", {}, async (page) => {
      const [, rms] = /^RMS +([\d.]+)/m.exec(reports.stitch.out);
      assert.equal((await value(page, "rms")).toFixed(3), rms);
      const printed = [...reports.stitch.out.matchAll(/^point (\d+) +([\d.]+)/gm)].map(([, id, apart]) => `${id} ${apart}`);
      assert.equal(printed.length, 5);
      const ids = await columnOf(page, "agreement", 0);
      const apart = await columnOf(page, "agreement", 3);
      assert.deepEqual(ids.slice(0, 5).map((id, i) => `${id} ${apart[i].toFixed(3)}`), printed);
    });
  });
});

test("a hostile file name is shown, not obeyed", async () => {
  await onPage("calibration", {}, async (page) => {
    assert.ok((await page.locator("#residuals h3").nth(1).textContent()).endsWith("<img src=x onerror=alert(1)>&\"'.csv"));
    assert.equal(await page.locator("img").count(), 0);
    assert.equal(await page.locator("script").count(), 1);
  });
});
