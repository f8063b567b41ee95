// What a person does with the guided page: reads it, presses its buttons, points at the bed.
import assert from "node:assert/strict";

import { axeViolations, openPage, takeScreenshot } from "./browser.mjs";
import { kLong, until } from "./live.mjs";

// For reading a canvas: a copy, so that the page's own one stays where it is drawn fastest.
function providePixels() {
  window.pixelsOf = (selector, index = 0) => {
    const shown = document.querySelectorAll(selector)[index];
    const copy = document.createElement("canvas");
    copy.width = shown.width;
    copy.height = shown.height;
    const context = copy.getContext("2d", { willReadFrequently: true });
    context.drawImage(shown, 0, 0);
    const { data } = context.getImageData(0, 0, copy.width, copy.height);
    return { data, width: copy.width, height: copy.height, ratio: shown.width / shown.clientWidth };
  };
}

export class Person {
  static async arrive(browser, address, look = {}) {
    const person = new Person();
    Object.assign(person, await openPage(browser, address, look));
    person.page.setDefaultTimeout(kLong);
    await person.page.addInitScript(providePixels);
    await person.page.evaluate(providePixels);
    // A request that the page itself takes back (a picture of a step that was left) is no failure.
    person.failures = [];
    person.page.on("response", async (response) => {
      if (response.status() >= 400) {
        const text = await response.text().catch(() => "");
        person.failures.push(`${response.status()} ${response.request().method()} ${response.url()} ${text}`);
      }
    });
    person.page.on("requestfailed", (request) => {
      const { errorText } = request.failure();
      if (errorText !== "net::ERR_ABORTED") {
        person.failures.push(`${errorText} ${request.url()}`);
      }
    });
    await person.page.locator("#step-heading").waitFor();
    return person;
  }

  async leave() {
    assert.deepEqual(this.failures, []);
    assert.deepEqual(this.errors, []);
    await this.context.close();
  }

  button(name) {
    return this.page.getByRole("button", { name, exact: true });
  }

  // Presses a button that must be ready to be pressed.
  async press(name) {
    const button = this.button(name);
    await until(`"${name}" can be pressed`, async () => (await button.getAttribute("aria-disabled")) !== "true");
    await button.click();
  }

  async goTo(step) {
    await this.page.locator("#stepper button", { hasText: step }).click();
    await this.isAt(step);
  }

  // Presses a step while the program is away: it is said, and nothing else happens.
  async goToWithoutAnswer(step) {
    await this.page.locator("#stepper button", { hasText: step }).click();
    await this.page.getByText("the program does not answer; nothing was changed").waitFor();
  }

  async isAt(step) {
    await this.page.locator("#stepper li.current", { hasText: step }).waitFor();
  }

  card() {
    return this.page.locator("#card");
  }

  // Waits for a text that matches among what the card shows, and returns the match.
  async reads(pattern, where = this.card()) {
    let text = "";
    return until(`${pattern}`, async () => {
      text = await where.innerText();
      return pattern.exec(text);
    }).catch((problem) => {
      throw new Error(`${problem.message}; instead: ${text}`);
    });
  }

  async type(label, value) {
    await this.card().getByLabel(label, { exact: true }).fill(String(value));
  }

  async noSidewaysScroll() {
    const over = await this.page.evaluate(() => document.documentElement.scrollWidth - document.documentElement.clientWidth);
    assert.equal(over, 0, "the page scrolls sideways");
  }

  // The same after loading the page again: nothing is lost, nothing begins anew.
  async reloads() {
    const before = await this.page.locator("#step-heading").innerText();
    await this.page.reload();
    await this.page.locator("#step-heading", { hasText: before }).waitFor();
    await this.page.locator('#connection[data-state="good"]').waitFor();
  }

  // The page as it is now in every look: accessible, nothing to scroll sideways to. Leaves the look as it was.
  async looksRight(name, widths = [1440, 390]) {
    const size = this.page.viewportSize();
    for (const width of widths) {
      await this.page.setViewportSize({ width, height: size.height });
      for (const scheme of ["light", "dark"]) {
        await this.page.emulateMedia({ colorScheme: scheme });
        assert.deepEqual(await axeViolations(this.page), [], `${name}, ${width} px, ${scheme}`);
        await this.noSidewaysScroll();
        await takeScreenshot(this.page, `live-${name}-${width}-${scheme}`);
      }
    }
    await this.page.emulateMedia({ colorScheme: "light" });
    await this.page.setViewportSize(size);
  }
}
