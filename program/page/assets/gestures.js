// Moving and zooming by mouse, touch, wheel and keyboard.

const kClick = 5; // px that a click may wander
const kStep = 60; // px that an arrow key moves
export const kZoomStep = 1.4;

// Calls moved() after changes of the viewport, hover(place | null) and click(place) with places on the screen.
export function attachGestures(node, viewport, { moved, hover, click }) {
  const pointers = new Map();
  let wandered = 0;
  const placeOf = (event) => {
    const box = node.getBoundingClientRect();
    return [event.clientX - box.left, event.clientY - box.top];
  };
  const spread = () => {
    const [a, b] = [...pointers.values()];
    return { distance: Math.hypot(a[0] - b[0], a[1] - b[1]), middle: [(a[0] + b[0]) / 2, (a[1] + b[1]) / 2] };
  };

  node.addEventListener("pointerdown", (event) => {
    if (event.button !== 0 || !viewport.view) {
      return;
    }
    node.setPointerCapture(event.pointerId);
    pointers.set(event.pointerId, placeOf(event));
    wandered = pointers.size > 1 ? Infinity : 0;
  });
  node.addEventListener("pointermove", (event) => {
    const place = placeOf(event);
    hover(place);
    const last = pointers.get(event.pointerId);
    if (!last) {
      return;
    }
    wandered += Math.hypot(place[0] - last[0], place[1] - last[1]);
    if (pointers.size === 1) {
      pointers.set(event.pointerId, place);
      if (wandered > kClick) {
        viewport.pan(place[0] - last[0], place[1] - last[1]);
        moved();
      }
      return;
    }
    const before = spread();
    pointers.set(event.pointerId, place);
    const now = spread();
    viewport.pan(now.middle[0] - before.middle[0], now.middle[1] - before.middle[1]);
    viewport.zoom(now.distance / Math.max(before.distance, 1), now.middle);
    moved();
  });
  const up = (event) => {
    if (pointers.delete(event.pointerId) && event.type === "pointerup" && wandered <= kClick) {
      click(placeOf(event));
    }
  };
  node.addEventListener("pointerup", up);
  node.addEventListener("pointercancel", up);
  node.addEventListener("pointerleave", () => hover(null));
  node.addEventListener(
    "wheel",
    (event) => {
      if (!viewport.view || event.ctrlKey) {
        return;
      }
      event.preventDefault();
      const lines = event.deltaMode === 1 ? 30 : 1;
      viewport.zoom(1.0015 ** -(event.deltaY * lines), placeOf(event));
      moved();
    },
    { passive: false },
  );
}

// Keys while the view has the focus. `enter` and `escape` belong to the tool in use.
export function attachKeys(node, viewport, { moved, enter, escape }) {
  const keys = {
    ArrowLeft: () => viewport.pan(kStep, 0),
    ArrowRight: () => viewport.pan(-kStep, 0),
    ArrowUp: () => viewport.pan(0, kStep),
    ArrowDown: () => viewport.pan(0, -kStep),
    "+": () => viewport.zoom(kZoomStep),
    "=": () => viewport.zoom(kZoomStep),
    "-": () => viewport.zoom(1 / kZoomStep),
    0: () => viewport.fitBed(),
  };
  node.addEventListener("keydown", (event) => {
    if (event.ctrlKey || event.metaKey || event.altKey || !viewport.view) {
      return;
    }
    if (keys[event.key]) {
      event.preventDefault();
      keys[event.key]();
      moved(true);
    } else if (event.key === "Enter") {
      event.preventDefault();
      enter();
    } else if (event.key === "Escape") {
      escape();
    }
  });
}
