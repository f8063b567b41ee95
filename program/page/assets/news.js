// What has happened, said once for people who listen: the few changes that matter, never the readings that vary.
import { cameraName, setText } from "./elements.js";
import { mm } from "./numbers.js";

const kGap = 1500; // ms between two messages, so that each can be read out

export class News {
  constructor(node) {
    this.node = node;
    this.waiting = [];
    this.timer = null;
  }

  tell(text) {
    this.waiting.push(text);
    this.timer ??= setTimeout(() => this.next(), 50);
  }

  next() {
    setText(this.node, this.waiting.shift());
    this.timer = setTimeout(() => {
      this.timer = null;
      if (this.waiting.length > 0) {
        this.next();
      }
    }, kGap);
  }

  compare(before, now) {
    if (!before || before.instance !== now.instance) {
      return;
    }
    now.sources.forEach((source, index) => {
      const who = now.sources.length > 1 ? `${cameraName(index)}: ` : "";
      for (const text of changesOf(before.sources[index], source)) {
        this.tell(who + text);
      }
    });
    if (now.stitch?.status !== before.stitch?.status && ["done", "failed"].includes(now.stitch?.status)) {
      this.tell(now.stitch.text ?? now.stitch.message);
    }
    if (now.saved && now.saved.count !== before.saved?.count) {
      this.tell(now.saved.text);
    }
  }
}

function changesOf(before, now) {
  const changes = [];
  if (now.status !== before.status) {
    changes.push(now.status === "live" ? "the picture is live" : (now.message ?? "the picture is gone"));
  }
  if (now.views.length > before.views.length) {
    changes.push(`view ${now.views.at(-1).id} is taken`);
  }
  if (now.views.length < before.views.length) {
    changes.push(now.views.length === 1 ? "1 view is left" : `${now.views.length} views are left`);
  }
  if (now.calibration.status !== before.calibration.status) {
    const { status, verdict, message, onBed, trusted } = now.calibration;
    const told = { done: `calibrated: ${trusted ? "" : "not to be trusted: "}${verdict}, ${mm(onBed)} on the bed`, failed: message };
    if (told[status]) {
      changes.push(told[status]);
    }
  }
  if (now.verify?.status !== before.verify?.status && ["done", "failed"].includes(now.verify?.status)) {
    changes.push(now.verify.text ?? now.verify.message);
  }
  return changes;
}
