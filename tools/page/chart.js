// Plots of chosen items over time: one panel for each unit, all with one time axis and one cursor.
"use strict";

const kKeptSeconds = 1800;  // as long as the exporter remembers
const kMostPlotted = 16;
const kStates = "States";
const kColours = 8;  // --plot-0 and so on in page.css; further lines are dashed

// Its legend writes style attributes, which the page's security policy forbids; there is one below.
Dygraph.PLUGINS = Dygraph.PLUGINS.filter((plugin) => plugin !== Dygraph.Plugins.Legend);

// The lines of the items of one unit.
class Panel {
  constructor(unit, chart) {
    this.chart = chart;
    this.ids = "";
    this.canvas = element("div", {"class": "plot"});
    this.line = element("div", {"class": "cursor", "hidden": ""});
    this.states = unit === kStates;
    this.node = element("section", {"class": this.states ? "panel states" : "panel"},
                        element("h3", {}, unit),
                        element("div", {"class": "frame"}, this.canvas, this.line));
    this.graph = null;
  }

  draw(items, range) {
    const ids = items.map((item) => item.id);
    const file = this.chart.samples.table(ids);
    const dateWindow = range.map((time) => kMilliseconds * time);
    const looks = Object.fromEntries(items.map((item) => [item.id, this.chart.look(item)]));
    if (this.graph === null) {
      this.graph = new Dygraph(this.canvas, file, this.options(ids, looks, dateWindow));
    } else if (this.ids !== ids.join()) {
      this.graph.updateOptions({file, dateWindow, labels: ["time", ...ids], series: looks});
    } else {
      this.graph.updateOptions({file, dateWindow});
    }
    this.ids = ids.join();
  }

  options(ids, series, dateWindow) {
    const style = getComputedStyle(document.documentElement);
    const line = style.getPropertyValue("--line").trim();
    return {
      labels: ["time", ...ids], series, dateWindow, strokeWidth: 1.5, highlightCircleSize: 4,
      axisLineColor: line, gridLineColor: line, axisLabelFontSize: 12, resizable: "passive",
      drawGapEdgePoints: true, xRangePad: 2, yRangePad: 6,
      axes: {
        x: {ticker: Dygraph.dateTicker, axisLabelFormatter: Dygraph.dateAxisLabelFormatter},
        // There is nothing between one state and the next.
        y: {axisLabelWidth: 52, ...this.states && {
          axisLabelFormatter: (value) => Number.isInteger(value) ? String(value) : ""}},
      },
      interactionModel: this.interaction(),
      highlightCallback: (event, x) => this.chart.point(x / kMilliseconds),
      unhighlightCallback: () => this.chart.point(null),
      drawCallback: (graph) => this.chart.moved(graph.xAxisRange()),
    };
  }

  // The cursor at a sample; -1 for none.
  point(at) {
    const x = at < 0 ? -1 : this.graph.toDomXCoord(kMilliseconds * this.chart.samples.times[at]);
    const {x: left, w: width} = this.graph.getArea();
    this.line.hidden = x < left || x > left + width;
    this.line.style.left = `${x}px`;
    if (at >= 0) {
      this.graph.setSelection(at);
    } else {
      this.graph.clearSelection();
    }
  }

  // One finger reads values, and scrolls the page up and down; two pan and zoom.
  interaction() {
    const {touchstart, touchmove, ...rest} = Dygraph.defaultInteractionModel;
    const by = (two) => (event, graph, context) => {
      if (event.touches.length > 1) {
        two(event, graph, context);
      } else {
        const [x] = graph.eventToDomCoords(event.touches[0]);
        this.chart.point(graph.toDataXCoord(x) / kMilliseconds);
      }
    };
    return {...rest, touchstart: by(touchstart), touchmove: by(touchmove)};
  }

  remove() {
    this.graph?.destroy();
    this.node.remove();
  }
}

class Chart {
  // `changed(ids)` is called when other items are plotted.
  constructor(root, source, changed) {
    this.root = root;
    this.source = source;
    this.changed = changed;
    this.samples = new Samples();
    this.view = new View(source.live ? 300 : null);
    this.items = new Map();  // ID -> item, in the order of choice
    this.slots = new Map();  // ID -> colour number
    this.panels = new Map();  // unit -> panel
    this.cursor = null;  // the time that values are read at; null: the newest
    this.drawing = false;
    this.legend = new Legend(root.querySelector("#legend"), this);
    this.controls = new ChartControls(root, this);
    matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => this.repaint());
  }

  toggle(item) {
    if (this.items.has(item.id)) {
      this.choose([...this.items.values()].filter((other) => other !== item));
    } else if (this.items.size < kMostPlotted) {
      this.choose([...this.items.values(), item]);
    }
  }

  choose(items) {
    this.items = new Map(items.map((item) => [item.id, item]));
    const taken = new Set([...this.slots].filter(([id]) => this.items.has(id)).map(([, n]) => n));
    this.slots = new Map([...this.items.keys()].map((id) => {
      const free = this.slots.get(id) ?? [...Array(kMostPlotted).keys()].find((n) => !taken.has(n));
      taken.add(free);
      return [id, free];
    }));
    this.root.querySelector("#chart-body").hidden = items.length === 0;
    this.root.querySelector("#chart-hint").hidden = items.length > 0;
    this.legend.build([...this.items.values()]);
    this.changed([...this.items.keys()]);
    return this.load();
  }

  // All that is kept of the plotted items. What was asked for last wins.
  async load() {
    const ids = [...this.items.keys()];
    this.asked = ids;
    const answer = ids.length === 0 ? null : await this.source.history(ids).catch(() => null);
    if (this.asked !== ids) {
      return;
    }
    if (answer !== null) {
      this.samples.load(answer, ids);
    } else {
      this.samples.load({times: [], series: {}, sweep: {pace: 0}}, ids);
    }
    this.loaded = ids;
    this.draw();
  }

  // The plotted items' values of a new sweep.
  push({time, pace}) {
    if (this.loaded === this.asked && time !== null) {
      this.samples.push(time, pace, (id) => this.items.get(id).value);
      this.samples.forget(time - kKeptSeconds);
    }
  }

  look(item) {
    const slot = this.slots.get(item.id);
    const style = getComputedStyle(document.documentElement);
    return {
      color: style.getPropertyValue(`--plot-${slot % kColours}`).trim(),
      strokePattern: slot < kColours ? null : [6, 3],
      stepPlot: item.state,
    };
  }

  // Items by what stands at their axis; none before there are samples.
  groups() {
    const groups = new Map();
    if (this.loaded === this.asked && this.samples.times.length > 0) {
      for (const item of this.items.values()) {
        const unit = item.state ? kStates : item.unit || "Numbers";
        groups.set(unit, [...(groups.get(unit) ?? []), item]);
      }
    }
    return groups;
  }

  draw() {
    const groups = this.groups();
    const range = this.view.window(this.samples.times);
    this.drawing = true;
    for (const [unit, panel] of this.panels) {
      if (!groups.has(unit)) {
        panel.remove();
        this.panels.delete(unit);
      }
    }
    for (const [unit, items] of groups) {
      if (!this.panels.has(unit)) {
        this.panels.set(unit, new Panel(unit, this));
        this.root.querySelector("#panels").append(this.panels.get(unit).node);
      }
      this.panels.get(unit).draw(items, range);
    }
    this.drawing = false;
    this.controls.update();
    this.showCursor();
  }

  repaint() {
    this.panels.forEach((panel) => panel.remove());
    this.panels.clear();
    this.legend.build([...this.items.values()]);
    this.draw();
  }

  // A panel drew itself; if that was the user's zoom or pan, the others follow.
  moved([from, to]) {
    if (this.drawing) {
      return;
    }
    const [oldFrom, oldTo] = this.view.window(this.samples.times);
    const [newFrom, newTo] = [from / kMilliseconds, to / kMilliseconds];
    if (Math.abs(newFrom - oldFrom) + Math.abs(newTo - oldTo) > 0.002) {
      this.view.show(newFrom, newTo, this.samples.times);
      this.draw();
    }
  }

  point(time) {
    if (!this.drawing) {
      this.cursor = time;
      this.showCursor();
    }
  }

  showCursor() {
    const at = this.cursor === null ? -1 : this.samples.nearest(this.cursor);
    this.panels.forEach((panel) => panel.point(at));
    this.legend.update(at);
  }
}
