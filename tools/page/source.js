// Where the page's readings come from: the exporter's API while the machine runs, or the recording
// that a report carries. Both offer the same: start(listener) and history(ids).
//
// The listener's functions:
//   items(answer)     the whole list with its values, as /api/v1/items answers it; whenever it is
//                     new: at the start, after a broken connection, when the machine has changed
//   sweep(message)    the values of one sweep, in the order of that list
//   status(sweep)     how old and how good the readings are, while no sweep comes
//   connection(state) {up: true}, or {up: false, retry: seconds until the next attempt}
"use strict";

const kSilenceSeconds = 15;  // the exporter sends something every 10 s
const kLongestWaitSeconds = 15;
const kAnswerSeconds = 10;
const kHiddenSeconds = 60;

class LiveSource {
  constructor() {
    this.live = true;
    this.list = null;  // the number of the item list that the listener has
    this.pace = 5;
    this.attempts = 0;
    this.stream = null;
    this.timer = null;
    this.connecting = false;
  }

  start(listener) {
    this.listener = listener;
    // A laptop that wakes up, a phone that is unlocked: no reason to wait any longer.
    window.addEventListener("online", () => this.hurry());
    document.addEventListener("visibilitychange", () => this.rest(document.hidden));
    // A browser keeps a page that was left, for the way back, with its connection.
    window.addEventListener("pagehide", () => this.pause());
    window.addEventListener("pageshow", () => this.hurry());
    this.connect();
  }

  // A browser has six connections for one machine; a page that nobody sees gives its own back.
  rest(hidden) {
    clearTimeout(this.resting);
    if (hidden) {
      this.resting = setTimeout(() => this.pause(), 1000 * kHiddenSeconds);
    } else {
      this.hurry();
    }
  }

  pause() {
    this.stream?.close();
    this.stream = null;
    clearTimeout(this.timer);
  }

  // Resolves to /api/v1/history's answer: of `ids`, all that is kept; of all items without them, a
  // minute's worth of samples for the small lines.
  history(ids = []) {
    const query = ids.map((id) => `item=${encodeURIComponent(id)}`).join("&");
    return LiveSource.get(query === "" ? "api/v1/history" : `api/v1/history?${query}`);
  }

  static async get(path) {
    const answer = await fetch(path, {cache: "no-store", signal: AbortSignal.timeout(1000 * kAnswerSeconds)});
    if (!answer.ok) {
      throw new Error(`${path}: HTTP status ${answer.status}`);
    }
    return answer.json();
  }

  hurry() {
    if (this.stream === null && !this.connecting) {
      this.connect();
    }
  }

  // The list first, so that what the page shows is right even if no stream is to be had.
  async connect() {
    clearTimeout(this.timer);
    this.connecting = true;
    try {
      await this.fetchItems();
      this.listen();
    } catch {
      this.lose();
    }
    this.connecting = false;
  }

  async fetchItems() {
    const answer = await LiveSource.get("api/v1/items");
    this.note(answer.sweep);
    this.list = answer.sweep.list;
    this.listener.items(answer);
  }

  listen() {
    const stream = new EventSource("api/v1/events");
    this.stream = stream;
    this.expect();
    stream.onopen = () => {
      this.attempts = 0;
      this.listener.connection({up: true});
    };
    // The browser would try again by itself, but at a fixed pace, and not after a refusal.
    stream.onerror = () => this.lose();
    stream.addEventListener("sweep", (event) => this.receive(event, "sweep"));
    stream.addEventListener("status", (event) => this.receive(event, "status"));
  }

  async receive(event, kind) {
    const message = JSON.parse(event.data);
    this.note(message.sweep);
    this.expect();
    if (message.sweep.list !== this.list) {
      await this.fetchItems().catch(() => this.lose());
    } else if (kind === "sweep") {
      this.listener.sweep(message);
    } else {
      this.listener.status(message.sweep);
    }
  }

  note(sweep) {
    this.pace = sweep.pace;
  }

  // A connection can die without a word; then nothing comes any more.
  expect() {
    clearTimeout(this.timer);
    const seconds = Math.max(kSilenceSeconds, 3 * this.pace) + 2;
    this.timer = setTimeout(() => this.lose(), 1000 * seconds);
  }

  lose() {
    this.pause();
    // Spread, so that fifty pages do not come back in the same moment.
    const wait = Math.min(kLongestWaitSeconds, 2 ** this.attempts) * (0.75 + Math.random() / 2);
    this.attempts += 1;
    this.timer = setTimeout(() => this.connect(), 1000 * wait);
    this.listener.connection({up: false, retry: wait});
  }
}

class ReportSource {
  // `report` is {"made": Unix time, "source": text, "items": as /api/v1/items answers,
  // "history": as /api/v1/history answers, with all items and the samples that are drawn,
  // "failures": {id: {"count": sweeps in which it failed, "last": Unix time, "failure": text}},
  // "judged": {id: {"count": sweeps in which it needed attention, "last": Unix time, "message"}}}.
  constructor(report) {
    this.live = false;
    this.report = report;
  }

  start(listener) {
    listener.items(this.report.items);
  }

  history() {
    return Promise.resolve(this.report.history);
  }
}

// The report that this file carries, if it is one, else the machine behind the exporter.
function chooseSource() {
  const report = document.getElementById("report");
  return report === null ? new LiveSource() : new ReportSource(JSON.parse(report.textContent));
}
