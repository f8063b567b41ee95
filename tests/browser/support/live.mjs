// A simulated machine and the guided page's server over it, each a process of its own.
import { execFileSync, spawn } from "node:child_process";
import { mkdtempSync, readFileSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { createInterface } from "node:readline";

import { program, repository } from "./browser.mjs";

const kSeed = "7";
const kStart = 60_000; // ms
const kUnderWay = 5; // frames of the scene before that may be on their way
export const kLong = 90_000; // ms that a calibration may take on a busy computer

// One of the examples by its name, or the path of another machine's description.
export const machineFile = (name) =>
  name.endsWith(".json") ? name : join(repository, "examples", "machines", `${name}.json`);

// Starts the program and waits for the address in its first line.
function start(options, cwd) {
  const child = spawn(program, options, { cwd, stdio: ["ignore", "pipe", "pipe"] });
  process.once("exit", () => child.kill("SIGKILL"));
  let said = "";
  child.stderr.on("data", (text) => {
    said += text;
  });
  const ended = new Promise((resolve) => child.once("exit", resolve));
  const address = new Promise((resolve, reject) => {
    const timer = setTimeout(() => reject(new Error(`${options[0]} said no address: ${said}`)), kStart);
    createInterface({ input: child.stdout }).on("line", (line) => {
      const found = /http:\/\/\S+/.exec(line);
      if (found) {
        clearTimeout(timer);
        resolve(found[0]);
      }
    });
    ended.then((code) => {
      clearTimeout(timer);
      reject(new Error(`${options[0]} ended with ${code}: ${said}`));
    });
  });
  return { child, ended, address };
}

async function end({ child, ended }, signal = "SIGTERM") {
  child.kill(signal);
  const late = setTimeout(() => child.kill("SIGKILL"), 10_000);
  await ended;
  clearTimeout(late);
}

// The simulated machine as a source of streams, controlled by its scenes.
export class Machine {
  static async start(name, { rate = 15 } = {}) {
    const machine = new Machine();
    machine.description = JSON.parse(readFileSync(machineFile(name), "utf8"));
    machine.process = start(
      ["simulate", "--machine", machineFile(name), "--serve", "127.0.0.1:0", "--seed", kSeed, "--rate", String(rate)],
    );
    machine.address = new URL(await machine.process.address).origin;
    return machine;
  }

  get sources() {
    return this.description.cameras.map((_, index) => `${this.address}/${index + 1}.mjpg`);
  }

  async post(path) {
    const response = await fetch(`${this.address}${path}`, { method: "POST" });
    if (!response.ok) {
      throw new Error(`${path}: ${response.status}`);
    }
  }

  scene(name) {
    return this.post(`/scene/${name}`);
  }

  stop() {
    return end(this.process);
  }
}

// Writes the parameter file of the machine's first true camera, and returns its path.
export function trueCamera(name, folder) {
  const frames = join(folder, "truth");
  execFileSync(program, ["simulate", "--machine", machineFile(name), "--frames", frames, "--seed", kSeed, "--scene", "empty", "--quiet"]);
  return join(frames, "camera1.ini");
}

// What the machine's cameras truly are: where they see the points of a scene, [{ id, bed, raw }] for each camera.
export function truth(name, scene) {
  const folder = mkdtempSync(join(tmpdir(), "fisheye-truth-"));
  try {
    execFileSync(program, ["simulate", "--machine", machineFile(name), "--frames", folder, "--seed", kSeed, "--scene", scene, "--quiet"]);
    const { cameras } = JSON.parse(readFileSync(machineFile(name), "utf8"));
    return cameras.map((_, index) => {
      const [, ...lines] = readFileSync(join(folder, `camera${index + 1}-${scene}.csv`), "utf8").trim().split("\n");
      return lines.map((line) => {
        const [id, X, Y, x, y] = line.split(",").map(Number);
        return { id, bed: [X, Y], raw: [x, y] };
      });
    });
  } finally {
    rmSync(folder, { recursive: true, force: true });
  }
}

// The guided page's server.
export class Live {
  static async start(sources, { folder = null, listen = "127.0.0.1:0", cwd } = {}) {
    const live = new Live();
    live.options = ["live", ...sources.flatMap((source) => ["--source", source]), ...(folder ? ["--output", folder] : [])];
    live.cwd = cwd;
    await live.begin(listen);
    return live;
  }

  async begin(listen) {
    this.process = start([...this.options, "--listen", listen], this.cwd);
    this.address = await this.process.address;
    this.url = new URL(this.address);
  }

  // Ends without a word, as when the power fails.
  kill() {
    return end(this.process, "SIGKILL");
  }

  // Again at the same address.
  beginAgain() {
    return this.begin(this.url.host);
  }

  stop() {
    return end(this.process);
  }

  get running() {
    return this.process.child.exitCode === null && this.process.child.signalCode === null;
  }

  async get(path) {
    const response = await fetch(new URL(path, this.address));
    if (!response.ok) {
      throw new Error(`${path}: ${response.status} ${await response.text()}`);
    }
    return response;
  }

  async state() {
    return (await this.get("/api/state")).json();
  }

  async convert(source, from, [x, y]) {
    return (await this.get(`/api/convert?source=${source}&from=${from}&x=${x}&y=${y}`)).json();
  }
}

async function newestFrame(live, index) {
  return Number((await live.get(`/frames/${index}/raw.jpg?columns=16`)).headers.get("x-frame"));
}

// Shows a scene and waits until the server has frames of it; with `searched` until it has looked for the target there.
export async function showScene(machine, live, scene, { searched = false } = {}) {
  await machine.scene(scene);
  for (let index = 0; index < machine.sources.length; index += 1) {
    const frame = (await newestFrame(live, index)) + kUnderWay;
    await until(`camera ${index + 1} sees ${scene}`, async () =>
      (searched ? (await live.state()).sources[index].detection.frame : await newestFrame(live, index)) > frame);
  }
}

// Waits until `test()` returns something true, and returns it.
export async function until(what, test, patience = kLong) {
  const last = Date.now() + patience;
  for (;;) {
    const found = await test();
    if (found) {
      return found;
    }
    if (Date.now() > last) {
      throw new Error(`waited in vain: ${what}`);
    }
    await new Promise((resolve) => setTimeout(resolve, 100));
  }
}
