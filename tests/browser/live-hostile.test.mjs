// Requests that no page of the program makes: none of them changes anything, reads anything or stops the program.
import assert from "node:assert/strict";
import { mkdtempSync, rmSync } from "node:fs";
import { createServer } from "node:http";
import { connect } from "node:net";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { after, before, test } from "node:test";

import { launchBrowser } from "./support/browser.mjs";
import { Live, Machine, until } from "./support/live.mjs";
import { Person } from "./support/person.mjs";

const kConnections = 1000;
const kPatience = 20_000; // ms
const kAction = JSON.stringify({ action: "setStep", step: 4 });

let folder;
let machine;
let live;
let browser;

before(async () => {
  folder = mkdtempSync(join(tmpdir(), "fisheye-live-"));
  machine = await Machine.start("one", { rate: 5 });
  live = await Live.start(machine.sources, { folder });
  browser = await launchBrowser();
});

after(async () => {
  await browser?.close();
  await live?.stop();
  await machine?.stop();
  rmSync(folder, { recursive: true, force: true });
});

// Sends text as it is and returns the status of the answer, or null if the connection is closed without one.
function sendRaw(text) {
  return new Promise((resolve, reject) => {
    let answer = "";
    const socket = connect(Number(live.url.port), live.url.hostname, () => socket.write(text));
    socket.setTimeout(kPatience, () => socket.destroy(new Error(`no answer to ${text.slice(0, 80)}`)));
    socket.on("data", (data) => {
      answer += data;
    });
    socket.on("error", (error) => (error.code === "ECONNRESET" || error.code === "EPIPE" ? resolve(statusOf(answer)) : reject(error)));
    socket.on("close", () => resolve(statusOf(answer)));
  });
}

const statusOf = (answer) => Number(/^HTTP\/1\.1 (\d+)/.exec(answer)?.[1] ?? 0) || null;

// A request with the headers that the program's own page sends, but for those named.
function request(method, path, headers = {}, body = "") {
  const own = { Host: live.url.host, ...(method === "POST" ? { Origin: live.url.origin, "Content-Type": "application/json" } : {}) };
  const all = { ...own, ...(method === "POST" ? { "Content-Length": Buffer.byteLength(body) } : {}), ...headers };
  const lines = Object.entries(all).filter(([, value]) => value !== null).map(([name, value]) => `${name}: ${value}`);
  return sendRaw(`${method} ${path} HTTP/1.1\r\n${lines.join("\r\n")}\r\n\r\n${body}`);
}

async function unharmed() {
  assert.ok(live.running, "the program has ended");
  const { step, sources } = await live.state();
  assert.equal(step, 1);
  assert.ok(sources[0].views.length === 0);
}

test("its own page is answered", async () => {
  assert.equal(await request("GET", "/"), 200);
  assert.equal(await request("POST", "/api/actions", {}, JSON.stringify({ action: "setStep", step: 1 })), 200);
});

for (const [what, expected, ...parts] of [
  ["an action from a foreign origin", 403, "POST", "/api/actions", { Origin: "http://evil.example" }, kAction],
  ["an action from the origin null", 403, "POST", "/api/actions", { Origin: "null" }, kAction],
  ["an action without an origin", 403, "POST", "/api/actions", { Origin: null }, kAction],
  ["an action of another port of this computer", 403, "POST", "/api/actions", { Origin: "http://127.0.0.1:1" }, kAction],
  ["reading for a foreign origin", 403, "GET", "/api/state", { Origin: "http://evil.example" }],
  ["reading for another site", 403, "GET", "/api/state", { "Sec-Fetch-Site": "cross-site" }],
  ["a foreign host", 403, "GET", "/", { Host: "evil.example" }],
  ["a name that was pointed here, with the port", 403, "GET", "/api/state", { Host: "evil.example:PORT" }],
  ["a host that begins like ours", 403, "GET", "/api/state", { Host: "127.0.0.1.evil.example:PORT" }],
  ["another port", 403, "GET", "/api/state", { Host: "127.0.0.1:80" }],
  ["an action without a type", 415, "POST", "/api/actions", { "Content-Type": null }, kAction],
  ["an action of a form", 415, "POST", "/api/actions", { "Content-Type": "text/plain" }, kAction],
  ["a body that is too long", 413, "POST", "/api/actions", {}, `{"action":"${"x".repeat(20_000)}"}`],
  ["a body that is said to be huge", 413, "POST", "/api/actions", { "Content-Length": "99999999999" }],
  ["a body that is no JSON", 400, "POST", "/api/actions", {}, "{"],
  ["an action that there is not", 400, "POST", "/api/actions", {}, '{"action":"format"}'],
  ["a path upwards", 404, "GET", "/../../etc/passwd"],
  ["an encoded path upwards", 404, "GET", "/..%2f..%2f..%2fetc%2fpasswd"],
  ["a path upwards below the downloads", 404, "GET", "/download/../../etc/passwd"],
  ["another method", 405, "DELETE", "/api/state"],
  ["a source that there is not", 400, "GET", "/frames/1/raw.jpg"],
  ["a part that is no number", 400, "GET", "/frames/0/raw.jpg?columns=nan"],
  ["a part that is huge", 400, "GET", "/frames/0/raw.jpg?columns=1e9"],
]) {
  test(`${what} is refused`, async () => {
    const [method, path, headers = {}, body = ""] = parts;
    const filled = Object.fromEntries(Object.entries(headers).map(([name, value]) => [name, value?.replace("PORT", live.url.port) ?? null]));
    const status = await request(method, path, filled, body);
    // Of a body that is too long some is never read: the connection may end before the answer is seen.
    assert.ok(status === expected || (expected === 413 && status === null), `answered ${status}`);
    await unharmed();
  });
}

test("what is no request at all is refused", async () => {
  for (const text of ["\r\n\r\n", "GET\r\n\r\n", "\0\x01\x02\xff".repeat(500) + "\r\n\r\n", `GET /${"a".repeat(100_000)} HTTP/1.1\r\n\r\n`]) {
    const status = await sendRaw(text);
    assert.ok(status === null || status >= 400, `answered ${status}`);
  }
  await unharmed();
});

test("a thousand silent connections do not keep a person out", async (t) => {
  const silent = [];
  const begin = Date.now();
  await Promise.all(Array.from({ length: kConnections }, () => new Promise((resolve) => {
    const socket = connect(Number(live.url.port), live.url.hostname, resolve);
    socket.on("error", resolve);
    silent.push(socket);
  })));
  const person = await Person.arrive(browser, live.address);
  await person.reads(/Light\s+good/);
  t.diagnostic(`a page showed its picture ${Date.now() - begin} ms after ${kConnections} connections were begun`);
  silent.forEach((socket) => socket.destroy());
  await person.leave();
  await unharmed();
});

test("a thousand requests at once are all answered", async () => {
  const statuses = await Promise.all(Array.from({ length: kConnections }, () => request("GET", "/api/state")));
  const answered = statuses.filter((status) => status === 200).length;
  assert.equal(answered, kConnections);
  await unharmed();
});

test("a page from elsewhere can neither read nor change anything", async () => {
  const script = (address) => `
    const outcomes = {};
    const attempt = async (name, run) => { try { outcomes[name] = await run(); } catch { outcomes[name] = "refused"; } };
    const body = ${JSON.stringify(kAction)};
    (async () => {
      await attempt("read", async () => (await fetch("${address}api/state")).text());
      await attempt("json", () => fetch("${address}api/actions", { method: "POST", headers: { "Content-Type": "application/json" }, body }).then((r) => r.status));
      await attempt("plain", () => fetch("${address}api/actions", { method: "POST", mode: "no-cors", body }).then(({ type }) => type));
      await attempt("image", () => new Promise((resolve, reject) => {
        const image = new Image();
        image.onload = () => resolve("shown");
        image.onerror = reject;
        image.src = "${address}frames/0/raw.jpg";
      }));
      await attempt("script", () => new Promise((resolve, reject) => {
        const element = document.createElement("script");
        element.onload = () => resolve("run");
        element.onerror = reject;
        element.src = "${address}page.js";
        document.head.append(element);
      }));
      const frame = document.createElement("iframe");
      frame.name = "frame";
      document.body.append(frame);
      const form = document.createElement("form");
      Object.assign(form, { method: "POST", action: "${address}api/actions", enctype: "text/plain", target: "frame" });
      const field = document.createElement("input");
      Object.assign(field, { name: '{"action":"setStep","step":4,"x":"', value: '"}' });
      form.append(field);
      document.body.append(form);
      await new Promise((resolve) => { frame.onload = resolve; form.submit(); });
      const second = document.createElement("iframe");
      second.src = "${address}";
      await new Promise((resolve) => { second.onload = resolve; document.body.append(second); });
      window.outcomes = outcomes;
    })();`;
  const elsewhere = createServer((_, response) => {
    response.setHeader("Content-Type", "text/html");
    response.end(`<!doctype html><title>elsewhere</title><body><script>${script(live.address)}</script>`);
  });
  await new Promise((resolve) => elsewhere.listen(0, "127.0.0.1", resolve));
  const page = await browser.newPage();
  const answered = [];
  page.on("response", (response) => response.url().startsWith(live.address) && answered.push(response.status()));
  try {
    await page.goto(`http://localhost:${elsewhere.address().port}/`);
    const outcomes = await until("the attempts", () => page.evaluate(() => window.outcomes));
    // What is sent without asking first is sent, but its answer is kept from the page.
    assert.deepEqual(outcomes, { read: "refused", json: "refused", plain: outcomes.plain, image: "refused", script: "refused" });
    assert.ok(["refused", "opaque"].includes(outcomes.plain));
    assert.ok(answered.length > 0 && answered.every((status) => status >= 400), `answered ${answered}`);
    for (const frame of page.frames().slice(1)) {
      assert.equal(await frame.locator("#step-heading").count(), 0);
    }
    await unharmed();
  } finally {
    await page.close();
    elsewhere.close();
    elsewhere.closeAllConnections();
  }
});
