// Elements of the page, made and changed without touching what is the same: a reader of the screen is not disturbed
// and the focus stays where it is.

// element("p", { class: "note", onclick: f }, "text", child, ...)
export function element(tag, attributes = {}, ...children) {
  const made = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (name.startsWith("on")) {
      made.addEventListener(name.slice(2), value);
    } else if (value === true) {
      made.setAttribute(name, "");
    } else if (value !== false && value !== null && value !== undefined) {
      made.setAttribute(name, value);
    }
  }
  made.append(...children.filter((child) => child !== null && child !== undefined));
  return made;
}

export function setText(node, text) {
  if (node.textContent !== text) {
    node.textContent = text;
  }
}

export function show(node, visible) {
  if (node.hidden === visible) {
    node.hidden = !visible;
  }
}

export function setClass(node, name) {
  if (node.className !== name) {
    node.className = name;
  }
}

export function setAttribute(node, name, value) {
  if (node.getAttribute(name) !== value) {
    node.setAttribute(name, value);
  }
}

// Fills `node` with make(value) when the value differs from the one shown.
export function fill(node, value, make) {
  const key = JSON.stringify(value);
  if (node.shownValue === key) {
    return;
  }
  node.shownValue = key;
  node.replaceChildren(...make(value));
}

// A button that asks the program for something; what goes wrong is said below it, not elsewhere.
export function actionButton(label, run, { primary = false } = {}) {
  const error = element("p", { class: "error", role: "alert" });
  const button = element("button", { type: "button", class: primary ? "primary" : "" }, label);
  let running = false;
  button.addEventListener("click", async () => {
    if (running || button.getAttribute("aria-disabled") === "true") {
      return;
    }
    running = true;
    error.textContent = "";
    try {
      await run();
    } catch (problem) {
      error.textContent = problem.message;
    }
    running = false;
  });
  return {
    button,
    element: element("div", { class: "action" }, button, error),
    // A button that is off keeps the focus; why it is off is said beside it.
    enable(enabled) {
      setAttribute(button, "aria-disabled", enabled ? "false" : "true");
    },
    label(text) {
      setText(button, text);
    },
    primary(is) {
      setClass(button, is ? "primary" : "");
    },
  };
}

// <div><label>..</label><input></div>; the caller reads input.value.
let fields = 0;
export function field(label, attributes = {}, hint = null) {
  fields += 1;
  const id = `field-${fields}`;
  const input = element("input", { id, "aria-describedby": hint ? `${id}-hint` : null, ...attributes });
  const parts = [element("label", { for: id }, label), input];
  if (hint) {
    parts.push(element("small", { id: `${id}-hint` }, hint));
  }
  return { input, element: element("div", { class: "field" }, ...parts) };
}

export const millimetres = (label, hint = null, attributes = {}) =>
  field(`${label} (mm)`, { type: "text", inputmode: "decimal", autocomplete: "off", ...attributes }, hint);

// The number in a field, or an Error that says which field is wrong.
export function numberIn({ input }, name) {
  const text = input.value.trim().replace(",", ".");
  const value = Number(text);
  const good = text !== "" && Number.isFinite(value);
  input.setAttribute("aria-invalid", good ? "false" : "true");
  if (!good) {
    input.focus();
    throw new Error(`${name}: type a number`);
  }
  return value;
}

const name = (index) => `Camera ${index + 1}`;
export const cameraName = name;

export const capitalised = (text) => text[0].toUpperCase() + text.slice(1);
