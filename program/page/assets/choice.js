// A row of buttons of which one is pressed: which camera, which tool.
import { element, setAttribute, show } from "./elements.js";

export class Choice {
  // options: [[value, label], ...]
  constructor(label, options, chosen, changed) {
    this.buttons = options.map(([value, text]) => {
      const button = element("button", { type: "button", onclick: () => changed(value) }, text);
      return { value, button };
    });
    this.element = element(
      "div",
      { class: "choice", role: "group", "aria-label": label },
      ...this.buttons.map(({ button }) => button),
    );
    this.set(chosen);
  }

  set(chosen) {
    for (const { value, button } of this.buttons) {
      setAttribute(button, "aria-pressed", value === chosen ? "true" : "false");
    }
  }

  offer(value, offered) {
    show(this.buttons.find((each) => each.value === value).button, offered);
  }
}
