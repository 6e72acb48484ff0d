// What belongs to the chart beside its lines: the table of values, the buttons and the keys.
"use strict";

const kSpans = [[60, "1 min"], [300, "5 min"], [1800, "30 min"], [null, "All"]];

function clock(time) {
  return new Date(kMilliseconds * time).toLocaleTimeString([], {hourCycle: "h23"});
}

function rounded(number) {
  return String(Number(number.toPrecision(6)));
}

// A table of the plotted items: values at the cursor, or now, and their spread over what is shown.
class Legend {
  constructor(table, chart) {
    this.chart = chart;
    this.cells = new Map();  // ID -> value, min, mean, max
    this.when = table.querySelector("#legend-when");
    this.body = table.querySelector("tbody");
  }

  build(items) {
    this.cells = new Map();
    this.body.replaceChildren(...items.map((item) => this.makeRow(item)));
  }

  makeRow(item) {
    const swatch = element("span", {"class": "swatch"});
    swatch.style.borderTopColor = this.chart.look(item).color;
    swatch.style.borderTopStyle = this.chart.look(item).strokePattern === null ? "solid" : "dashed";
    const remove = element("button", {"type": "button", "aria-label": `Remove ${item.title}`}, "×");
    remove.addEventListener("click", () => this.chart.toggle(item));
    const cells = Array.from({length: 4}, () => element("td"));
    this.cells.set(item.id, cells);
    return element("tr", {}, element("th", {"scope": "row", "title": item.place}, swatch, item.title),
                   ...cells, element("td", {}, remove));
  }

  // `at` is the number of a sample, -1 for the newest.
  update(at) {
    const {samples, items, view} = this.chart;
    setText(this.when, at >= 0 ? clock(samples.times[at]) : this.chart.source.live ? "Now" : "Last");
    const [from, to] = view.window(samples.times);
    for (const [id, [value, ...spread]] of this.cells) {
      const item = items.get(id);
      const series = samples.series.get(id) ?? [];
      setText(value, item.text(series.at(at)));
      const seen = series.length > 0 ? samples.spread(id, from, to) : null;
      const shown = seen === null ? ["–", "–", "–"] : [seen.min, seen.mean, seen.max].map(rounded);
      shown[1] = item.state ? "–" : shown[1];
      spread.forEach((cell, i) => setText(cell, shown[i]));
    }
  }

  // The values in one line, for whoever hears the page.
  spoken() {
    const values = [...this.cells].map(
      ([id, [value]]) => `${this.chart.items.get(id).title} ${value.textContent}`);
    return `${this.when.textContent}: ${values.join(", ")}`;
  }
}

// The buttons and keys that move through time.
class ChartControls {
  constructor(root, chart) {
    this.chart = chart;
    this.spoken = root.querySelector("#cursor");
    this.spans = kSpans.map(([span, text]) => {
      const button = element("button", {"type": "button"}, text);
      button.addEventListener("click", () => this.change((view) => view.follow(span)));
      return button;
    });
    root.querySelector("#spans").append(...this.spans);
    const actions = {
      back: () => this.change((view, times) => view.shift(-0.5, times)),
      forward: () => this.change((view, times) => view.shift(0.5, times)),
      closer: () => this.change((view, times) => view.zoom(0.5, times)),
      wider: () => this.change((view, times) => view.zoom(2, times)),
      clear: () => this.chart.choose([]),
    };
    for (const button of root.querySelectorAll("[data-do]")) {
      button.addEventListener("click", actions[button.dataset.do]);
    }
    const keys = {
      "Shift+ArrowLeft": actions.back, "Shift+ArrowRight": actions.forward,
      "ArrowLeft": () => this.step(-1), "ArrowRight": () => this.step(1),
      "+": actions.closer, "-": actions.wider,
      "Home": () => this.change((view) => view.follow(null)),
      "End": () => this.change((view) => view.follow(view.span)),
      "Escape": () => this.chart.point(null),
    };
    root.querySelector("#panels").addEventListener("keydown", (event) => {
      const modifier = event.shiftKey && event.key.startsWith("Arrow") ? "Shift+" : "";
      const action = keys[modifier + event.key];
      if (action !== undefined && !event.ctrlKey && !event.altKey && !event.metaKey) {
        event.preventDefault();
        action();
      }
    });
  }

  change(how) {
    const {view, samples} = this.chart;
    if (samples.times.length > 0) {
      how(view, samples.times);
      this.chart.draw();
    }
  }

  // The cursor to the next sample, and on if it leaves what is shown.
  step(by) {
    const {chart, chart: {samples, view}} = this;
    const last = samples.times.length - 1;
    if (last < 0) {
      return;
    }
    const at = chart.cursor === null ? last : samples.nearest(chart.cursor) + by;
    chart.cursor = samples.times[Math.min(last, Math.max(0, at))];
    const [from, to] = view.window(samples.times);
    if (chart.cursor < from || chart.cursor > to) {
      view.shift(chart.cursor < from ? -0.5 : 0.5, samples.times);
    }
    chart.draw();
    setText(this.spoken, chart.legend.spoken());
  }

  update() {
    const {view} = this.chart;
    this.spans.forEach((button, i) => button.setAttribute(
      "aria-pressed", String(view.end === null && view.span === kSpans[i][0])));
  }
}
