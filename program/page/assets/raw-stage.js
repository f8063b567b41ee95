// The stage of the first steps: the cameras' raw pictures, and in step 3 the maps of what a calibration reaches.
import { Choice } from "./choice.js";
import { cameraName, element, show } from "./elements.js";
import { ErrorMap } from "./error-map.js";
import { RawPicture } from "./picture.js";

export class RawStage {
  constructor(app, count) {
    this.app = app;
    this.pictures = Array.from({ length: count }, (_, index) => new RawPicture(index));
    this.maps = Array.from({ length: count }, (_, index) => new ErrorMap(index, count > 1));
    const cameras = this.pictures.map((_, index) => [index, cameraName(index)]);
    this.choice = new Choice("Cameras shown", [...cameras, ["both", "Both"]], app.shown, (value) => app.choose(value));
    show(this.choice.element, count > 1);
    this.panels = element("div", { class: "panels" });
    this.pictures.forEach((picture, index) => this.panels.append(picture.element, this.maps[index].element));
    this.element = element("div", { class: "raw-stage" }, this.choice.element, this.panels);
  }

  update(state) {
    const { shown } = this.app;
    this.choice.set(shown);
    this.panels.classList.toggle("two", shown === "both" && state.sources.length > 1);
    this.pictures.forEach((picture, index) => {
      const isShown = shown === "both" || shown === index;
      const isMap = state.step === 3 && state.sources[index].calibration.status === "done";
      show(picture.element, isShown && !isMap);
      show(this.maps[index].element, isShown && isMap);
      picture.update(state, { coverage: state.step === 2, several: state.sources.length > 1 });
      if (isShown && isMap) {
        this.maps[index].update(state);
      }
      if (isShown && !isMap && this.app.active(this)) {
        picture.loop.start();
      } else {
        picture.loop.stop();
      }
    });
  }

  found(points) {
    this.pictures[points.source]?.found(points);
  }

  stop() {
    this.pictures.forEach((picture) => picture.loop.stop());
  }

  renew() {
    this.pictures.forEach((picture) => picture.loop.renew());
  }
}
