// A browser for tests of pages: Debian's Chromium, driven by playwright-core.
import { mkdirSync, readFileSync } from "node:fs";
import { createRequire } from "node:module";
import { dirname, join } from "node:path";
import { fileURLToPath } from "node:url";

import { chromium } from "playwright-core";

const folder = dirname(fileURLToPath(import.meta.url));
const axeSource = readFileSync(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf8");

export const repository = join(folder, "..", "..", "..");
export const screenshots = join(repository, "build", "browser");
export const program =
  process.env.FISHEYE_CALIBRATION_PROGRAM ??
  join(repository, "build", "release", "program", "fisheye-calibration");

// The widths and colour schemes in which every page must be usable.
export const looks = [1440, 390].flatMap((width) => ["light", "dark"].map((scheme) => ({ width, scheme })));

export const launchBrowser = () =>
  chromium.launch({
    executablePath: process.env.FISHEYE_CALIBRATION_CHROMIUM ?? "/usr/bin/chromium",
    // Containers of continuous integration run as root, where Chromium's sandbox does not start.
    args: process.getuid?.() === 0 ? ["--no-sandbox"] : [],
  });

// Opens a page and collects what goes wrong in it and what it asks for. The caller closes `context`.
export async function openPage(browser, address, { width = 1440, scheme = "light", javaScript = true } = {}) {
  const context = await browser.newContext({
    viewport: { width, height: 900 },
    colorScheme: scheme,
    javaScriptEnabled: javaScript,
  });
  const page = await context.newPage();
  const errors = [];
  const requests = [];
  page.on("console", (message) => {
    if (message.type() === "error" || message.type() === "warning") {
      errors.push(message.text());
    }
  });
  page.on("pageerror", (error) => errors.push(String(error)));
  page.on("request", (request) => requests.push(request.url()));
  await page.goto(address);
  return { page, context, errors, requests };
}

// The violations that axe finds, as readable lines. Evaluated by the debugger, which a page's content security
// policy does not stop.
export async function axeViolations(page) {
  const session = await page.context().newCDPSession(page);
  const evaluate = async (expression) => {
    const { result, exceptionDetails } = await session.send("Runtime.evaluate", {
      expression,
      awaitPromise: true,
      returnByValue: true,
    });
    if (exceptionDetails) {
      throw new Error(exceptionDetails.exception?.description ?? exceptionDetails.text);
    }
    return result.value;
  };
  await evaluate(axeSource);
  const { violations, passes } = await evaluate(
    "axe.run(document).then(({ violations, passes }) => ({ passes: passes.length, violations }))",
  );
  await session.detach();
  if (passes === 0) {
    throw new Error("axe checked nothing");
  }
  return violations.flatMap(({ id, help, nodes }) =>
    nodes.map((node) => `${id}: ${help}: ${node.html.slice(0, 200)} ${node.failureSummary ?? ""}`),
  );
}

// Writes build/browser/NAME.png of the whole page.
export async function takeScreenshot(page, name) {
  mkdirSync(screenshots, { recursive: true });
  await page.screenshot({ path: join(screenshots, `${name}.png`), fullPage: true });
}
