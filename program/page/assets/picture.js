// A camera's raw picture, live, with what was found in it drawn over it.
import { cameraName, element, setText, show } from "./elements.js";
import { FrameLoop, columnsFor, fitCanvas } from "./frames.js";
import { drawCoverage, drawPoints } from "./overlay.js";

const kOld = 1500; // ms after which found points are no longer those of the picture

export class RawPicture {
  constructor(index) {
    this.index = index;
    this.canvas = element("canvas", { class: "frame", role: "img", "aria-label": `Picture of ${cameraName(index)}` });
    this.overlay = element("canvas", { class: "overlay", "aria-hidden": "true" });
    this.message = element("p", { class: "view-message" });
    this.view = element("div", { class: "view" }, this.canvas, this.overlay, this.message);
    this.caption = element("figcaption");
    this.element = element("figure", { class: "picture" }, this.view, this.caption);
    this.points = null;
    this.shape = 16 / 9;
    this.loop = new FrameLoop({
      request: () => this.request(),
      draw: (frame) => this.draw(frame),
    });
    new ResizeObserver(() => this.drawOverlay()).observe(this.view);
  }

  request() {
    if (!this.source || this.source.width === null || this.source.status !== "live") {
      return null;
    }
    return { path: `/frames/${this.index}/raw.jpg`, query: { columns: columnsFor(this.view.clientWidth) } };
  }

  draw({ bitmap, width, height }) {
    this.canvas.width = bitmap.width;
    this.canvas.height = bitmap.height;
    this.canvas.getContext("2d").drawImage(bitmap, 0, 0);
    bitmap.close();
    if (this.shape !== width / height) {
      this.shape = width / height;
      this.view.style.aspectRatio = `${width} / ${height}`;
      this.drawOverlay();
    }
  }

  update(state, { coverage, several }) {
    this.source = state.sources[this.index];
    this.coverage = coverage ? this.source.coverage : null;
    this.searching = coverage || state.step === 3;
    const { status, message, width, height, rate, name } = this.source;
    const size = width === null ? "" : `, ${width} × ${height} pixels`;
    const speed = rate === null ? "" : `, ${rate.toFixed(0)} pictures a second`;
    setText(this.caption, `${several ? `${cameraName(this.index)}: ` : ""}${name}${size}${speed}`);
    const waiting = status === "opening" ? "Waiting for the first picture." : "The picture is gone.";
    setText(this.message, status === "live" ? "" : (message ?? waiting));
    show(this.message, status !== "live");
    this.element.classList.toggle("gone", status !== "live");
    this.drawOverlay();
  }

  found(points) {
    this.points = points;
    clearTimeout(this.old);
    this.old = setTimeout(() => {
      this.points = null;
      this.drawOverlay();
    }, kOld);
    this.drawOverlay();
  }

  drawOverlay() {
    if (!this.source || this.element.closest("[hidden]")) {
      return;
    }
    const { width, height, ratio } = fitCanvas(this.overlay);
    const context = this.overlay.getContext("2d");
    context.setTransform(ratio, 0, 0, ratio, 0, 0);
    context.clearRect(0, 0, width, height);
    if (this.coverage) {
      drawCoverage(context, this.coverage, width, height);
    }
    if (this.searching && this.points) {
      drawPoints(context, this.points, width, height);
    }
  }
}
