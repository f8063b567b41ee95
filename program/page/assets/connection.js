// The way to the program: its state as events, actions as requests.

const kSilence = 6000; // ms without a word, after which the connection counts as lost
const kRetry = 1000; // ms

// Why the program refuses the stream of events; nothing if it does not answer at all.
async function reason() {
  try {
    const response = await fetch("/api/state");
    return response.ok ? null : await refusal(response);
  } catch {
    return null;
  }
}

// Calls state(snapshot), points(event) and connected(boolean, reason). Snapshots are whole, so the newest is all there is to know.
export function connect({ state, points, connected }) {
  let stream = null;
  let watch = null;
  let alive = null;

  const heard = () => {
    clearTimeout(watch);
    watch = setTimeout(lose, kSilence);
    if (alive !== true) {
      alive = true;
      connected(true);
    }
  };
  const lose = () => {
    clearTimeout(watch);
    stream.close();
    if (alive !== false) {
      alive = false;
      connected(false, null);
    }
    reason().then((text) => alive === false && connected(false, text));
    setTimeout(open, kRetry);
  };
  const open = () => {
    stream = new EventSource("/api/events");
    stream.addEventListener("state", (event) => {
      heard();
      state(JSON.parse(event.data));
    });
    stream.addEventListener("points", (event) => {
      heard();
      points(JSON.parse(event.data));
    });
    stream.addEventListener("alive", heard);
    stream.addEventListener("error", lose);
    watch = setTimeout(lose, kSilence);
  };
  open();
}

// The text of a refusal, for the person.
async function refusal(response) {
  try {
    return (await response.json()).error.text;
  } catch {
    return `the program refused this (${response.status})`;
  }
}

// Asks for an action; fails with a text for the person.
export async function act(action, fields = {}) {
  let response;
  try {
    response = await fetch("/api/actions", {
      method: "POST",
      headers: { "Content-Type": "application/json" },
      body: JSON.stringify({ action, ...fields }),
    });
  } catch {
    throw new Error("the program does not answer; nothing was changed");
  }
  if (!response.ok) {
    throw new Error(await refusal(response));
  }
}

// Fetches a file and offers it for saving under its name, so that a refusal is said here and no page is left.
export async function download(path, name) {
  let response;
  try {
    response = await fetch(path);
  } catch {
    throw new Error("the program does not answer");
  }
  if (!response.ok) {
    throw new Error(await refusal(response));
  }
  const address = URL.createObjectURL(await response.blob());
  const link = document.createElement("a");
  link.href = address;
  link.download = name;
  link.click();
  setTimeout(() => URL.revokeObjectURL(address), 10000);
}
