// The corrected bed, live: pan, zoom, grid, ruler and crosshair.
import { drawAgreement, drawCrosshair, drawGrid, drawMiddle, drawRuler, lengthOf } from "./bed-drawing.js";
import { Choice } from "./choice.js";
import { cameraName, capitalised, element, setAttribute, setText, show } from "./elements.js";
import { FrameLoop, columnsFor, fitCanvas } from "./frames.js";
import { attachGestures, attachKeys, kZoomStep } from "./gestures.js";
import { length, place } from "./numbers.js";
import { Viewport } from "./viewport.js";

const kQuiet = 700; // ms without a key before the place is read out

export class BedStage {
  constructor(app, count) {
    Object.assign(this, { app, count, ends: [], mark: null, under: null, frame: null, grid: true, ruling: false });
    this.shown = 0;
    this.viewport = new Viewport();
    const cameras = Array.from({ length: count }, (_, index) => [index, cameraName(index)]);
    this.choice = new Choice("Bed as seen by", [...cameras, ["stitched", "Joined"]], 0, (value) => this.choose(value));
    this.canvas = element("canvas", { class: "frame" });
    this.message = element("p", { class: "view-message" });
    this.view = element(
      "div",
      {
        class: "view bed",
        tabindex: "0",
        role: "application",
        "aria-label": "Corrected bed",
        "aria-describedby": "bed-keys",
      },
      this.canvas,
      this.message,
    );
    this.position = element("p", { class: "position number" });
    const keys = "Drag or arrow keys: move. Wheel or + and −: zoom. 0: bed. With the ruler: click, or Enter for the middle; Esc clears.";
    this.element = element(
      "div",
      { class: "bed-stage" },
      this.choice.element,
      this.tools(),
      this.view,
      this.position,
      element("p", { class: "note", id: "bed-keys" }, keys),
    );
    this.refusal = "";
    this.loop = new FrameLoop({
      request: () => this.request(),
      draw: (frame) => this.take(frame),
      refused: (text) => {
        this.refusal = `${capitalised(text)}.`;
        this.update(this.state);
      },
    });
    attachGestures(this.view, this.viewport, {
      moved: () => this.moved(),
      hover: (at) => this.hover(at),
      click: (at) => this.click(at),
    });
    attachKeys(this.view, this.viewport, {
      moved: () => this.moved(true),
      enter: () => this.click([this.viewport.size.width / 2, this.viewport.size.height / 2]),
      escape: () => this.setRuler([]),
    });
    this.view.addEventListener("focus", () => this.redraw());
    this.view.addEventListener("blur", () => this.redraw());
    new ResizeObserver(() => this.moved()).observe(this.view);
  }

  tools() {
    const button = (text, name, run) => element("button", { type: "button", "aria-label": name, onclick: run }, text);
    const change = (run) => () => {
      if (this.viewport.view) {
        run();
        this.moved();
      }
    };
    const toggle = (text, run) => element("button", { type: "button", "aria-pressed": "false", onclick: run }, text);
    this.gridButton = toggle("Grid", () => {
      this.grid = !this.grid;
      this.redraw();
    });
    this.rulerButton = toggle("Ruler", () => {
      this.ruling = !this.ruling;
      this.setRuler([]);
    });
    return element(
      "div",
      { class: "tools", role: "toolbar", "aria-label": "View of the bed" },
      button("+", "Zoom in", change(() => this.viewport.zoom(kZoomStep))),
      button("−", "Zoom out", change(() => this.viewport.zoom(1 / kZoomStep))),
      button("Bed", "Show the bed", change(() => this.viewport.fitBed())),
      button("All", "Show all", change(() => this.viewport.fit())),
      this.gridButton,
      this.rulerButton,
    );
  }

  choose(value) {
    this.shown = value;
    this.dropFrame();
    this.update(this.app.state);
  }

  dropFrame() {
    this.refusal = "";
    this.frame?.bitmap.close();
    this.frame = null;
    this.loop.renew();
  }

  update(state) {
    this.state = state;
    const joined = state.stitch?.status === "done";
    if (this.shown === "stitched" && !joined) {
      this.shown = 0;
      this.dropFrame();
    }
    this.choice.offer("stitched", joined);
    show(this.choice.element, this.count > 1);
    this.choice.set(this.shown);
    const made = this.shown === "stitched" ? state.stitch : state.sources[this.shown].calibration;
    this.viewport.setView(made.status === "done" ? made.view : null, state.bed);
    if (this.viewport.view) {
      this.view.style.aspectRatio = `${this.viewport.view.width} / ${this.viewport.view.height}`;
      this.viewport.setSize({ width: this.view.clientWidth, height: this.view.clientHeight });
    }
    const source = state.sources[this.shown] ?? state.sources.find(({ status }) => status !== "live") ?? state.sources[0];
    const gone = source.status !== "live" ? (source.message ?? "The picture is gone.") : "";
    const waiting = this.refusal || (this.frame ? "" : "Waiting for the picture.");
    const unknown = made.status === "running" ? "The calibration is running." : "Calibrate first: step 3.";
    setText(this.message, this.viewport.view ? gone || waiting : unknown);
    show(this.message, this.message.textContent !== "");
    this.element.classList.toggle("gone", source.status !== "live");
    this.redraw();
    if (this.app.active(this)) {
      this.loop.start();
    } else {
      this.loop.stop();
    }
  }

  request() {
    if (!this.viewport.view || this.view.clientWidth === 0) {
      return null;
    }
    const { part, size } = this.viewport;
    return { path: this.path(), query: { columns: columnsFor(size.width), ...part } };
  }

  path() {
    return this.shown === "stitched" ? "/frames/stitched.jpg" : `/frames/${this.shown}/corrected.jpg`;
  }

  take(frame) {
    // Frames of the view that was shown before belong nowhere.
    const { view } = this.viewport;
    if (frame.path !== this.path() || frame.width !== view?.width || frame.height !== view.height) {
      frame.bitmap.close();
      return;
    }
    const isFirst = this.frame === null || this.refusal !== "";
    this.refusal = "";
    this.frame?.bitmap.close();
    this.frame = frame;
    this.redraw();
    if (isFirst) {
      this.update(this.state);
    }
  }

  moved(byKey = false) {
    this.viewport.setSize({ width: this.view.clientWidth, height: this.view.clientHeight });
    this.loop.renew();
    this.redraw();
    if (byKey) {
      clearTimeout(this.quiet);
      this.quiet = setTimeout(() => this.app.tell(`middle at ${place(this.middle())}`), kQuiet);
    }
  }

  middle() {
    return this.viewport.bedAt([this.viewport.size.width / 2, this.viewport.size.height / 2]);
  }

  hover(at) {
    this.under = at;
    this.redraw();
  }

  click(at) {
    if (!this.viewport.view) {
      return;
    }
    this.under = at;
    if (this.ruling) {
      const bed = this.viewport.bedAt(at);
      this.setRuler(this.ends.length === 1 ? [...this.ends, bed] : [bed]);
    }
    this.redraw();
  }

  setRuler(ends) {
    this.ends = ends;
    if (ends.length > 0) {
      this.app.tell(ends.length === 2 ? `ruler: ${length(lengthOf(ends))}` : `ruler begins at ${place(ends[0])}`);
    }
    this.redraw();
  }

  // Shows the crosshair at a place on the bed, or none; moves there if it is not on the screen.
  setMark(bed) {
    if (bed && (!this.viewport.view || !this.viewport.contains(bed))) {
      throw new Error("that place is not in the picture");
    }
    this.mark = bed;
    if (bed) {
      const [x, y] = this.viewport.screenOf(bed);
      const { width, height } = this.viewport.size;
      if (x < 0 || y < 0 || x > width || y > height) {
        this.viewport.moveTo(this.viewport.outerOf(bed));
        this.moved();
      }
    }
    this.redraw();
  }

  redraw() {
    this.drawing ??= requestAnimationFrame(() => {
      this.drawing = null;
      this.draw();
    });
  }

  draw() {
    const { width, height, ratio } = fitCanvas(this.canvas);
    const context = this.canvas.getContext("2d");
    context.setTransform(ratio, 0, 0, ratio, 0, 0);
    context.clearRect(0, 0, width, height);
    setAttribute(this.gridButton, "aria-pressed", String(this.grid));
    setAttribute(this.rulerButton, "aria-pressed", String(this.ruling));
    const texts = [];
    if (this.viewport.view && width > 0) {
      this.viewport.setSize({ width, height });
      this.drawAll(context, texts);
    }
    setText(this.position, texts.join(" · "));
  }

  drawAll(context, texts) {
    const { viewport } = this;
    if (this.frame) {
      const [left, top, width, height] = this.frame.part;
      const from = viewport.screenOfOuter([left, top]);
      context.imageSmoothingEnabled = viewport.scale < 4;
      context.drawImage(this.frame.bitmap, ...from, width * viewport.scale, height * viewport.scale);
    }
    const isFocused = this.view.matches(":focus-visible");
    const at = this.under ?? (isFocused ? [viewport.size.width / 2, viewport.size.height / 2] : null);
    texts.push(at ? place(viewport.bedAt(at)) : "Point at the bed");
    if (this.grid) {
      texts.push(`grid ${drawGrid(context, viewport)} mm`);
    }
    if (this.shown === "stitched") {
      texts.push(`arrows ${drawAgreement(context, viewport, this.state.stitch)} times longer`);
    }
    if (this.ends.length > 0) {
      drawRuler(context, viewport, this.ends);
      texts.push(this.ends.length === 2 ? `ruler ${length(lengthOf(this.ends))}` : "ruler: second end");
    }
    if (this.mark) {
      drawCrosshair(context, viewport, this.mark);
    }
    if (isFocused) {
      drawMiddle(context, viewport);
    }
  }

  stop() {
    this.loop.stop();
  }

  renew() {
    this.loop.renew();
  }
}
