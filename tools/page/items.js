// The items of the machine as rows of families and packages; updated cell by cell, because four
// hundred of them change once a second.
"use strict";

const kRecentSamples = 60;
const kSvg = "http://www.w3.org/2000/svg";
const kSparkWidth = 96;
const kSparkHeight = 20;

// An element. Texts go in as text: names come from a device and are not to be trusted.
function element(tag, attributes = {}, ...children) {
  const made = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    made.setAttribute(name, value);
  }
  made.append(...children);
  return made;
}

function setText(node, text) {
  if (node.textContent !== text) {
    node.textContent = text;
  }
}

// One item, whatever number of rows it has: the add-on board's stand in two families.
class Item {
  // `units` are what people know the module's spellings as.
  constructor(entry, units) {
    this.id = entry.id;
    this.name = entry.name ?? entry.id;
    this.place = [...new Set([entry.family, entry.package, this.name])].join(" › ");
    this.unit = units.get(entry.unit) ?? entry.unit ?? "";
    this.min = entry.min;
    this.max = entry.max;
    this.labels = new Map((entry.options ?? []).map(({value, label}) => [value, label]));
    this.numeric = entry.kind !== "text" && entry.kind !== undefined;
    this.moves = this.numeric && !["identity", "setting", "default"].includes(entry.role);
    this.rows = [];
    this.recent = [];  // the newest samples, null where there was no value
    this.slots = kRecentSamples;  // how many the small line has room for
    this.value = null;
    this.failure = "";  // why there is no value, if that is a failure
    this.findings = [];  // what needs attention, as /api/v1/items has it
  }

  // A state has labels: its numbers are names, not quantities.
  get state() {
    return this.labels.size > 0;
  }

  // What is wrong with it, in the machine's own words; "" if nothing is.
  get problem() {
    return this.failure !== "" ? this.failure
                               : this.findings.map(({message}) => message).join("; ");
  }

  // `value` as people read it: with its label or its unit.
  text(value) {
    if (value === null || value === undefined) {
      return "N/A";
    }
    if (this.labels.has(value)) {
      return `${value} (${this.labels.get(value)})`;
    }
    // A text may be a number, or "3 h 0 m".
    const number = this.numeric || /^-?[0-9.]+$/.test(value);
    return number && this.unit !== "" ? `${value} ${this.unit}` : String(value);
  }

  take(value, failure, findings) {
    this.value = value;
    this.findings = findings;
    this.failure = failure === undefined ? "" : failureText(failure);
  }
}

// `failed` has the keys of an item that failed: in words if they are there.
function failureText(failed) {
  const code = `0x${(failed.code ?? 0).toString(16).toUpperCase()}`;
  return failed.failure ?? `${failed.status ?? "the device library's code"} (${code})`;
}

// An item's line on the page.
class Row {
  constructor(item, {family, package: group}) {
    this.item = item;
    this.words = [family, group, item.name, item.id, item.unit, ...item.labels.values()]
      .join(" ").toLowerCase();
    this.visible = false;
    this.drawn = null;  // the samples that the small line shows, as text
    const name = item.numeric ? element("button", {"type": "button", "aria-pressed": "false"})
                              : element("span");
    name.className = "name";
    name.textContent = item.name;
    this.button = item.numeric ? name : null;
    this.value = element("span", {"class": "value"});
    this.node = element("li", {"class": "item", "data-id": item.id, "title": `${item.place}  ${item.id}`},
                        name, this.value);
    if (item.numeric && !item.state && item.min < item.max) {
      this.node.append(this.makeRange());
    }
    if (item.moves) {
      this.node.append(this.makeSpark());
    }
  }

  makeRange() {
    const {min, max} = this.item;
    this.fill = element("span", {"class": "fill"});
    return element("span", {"class": "range"},
                   element("span", {"class": "hidden-text"}, "range "),
                   element("span", {}, String(min)),
                   element("span", {"class": "hidden-text"}, " to "),
                   element("span", {"class": "bar", "aria-hidden": "true"}, this.fill),
                   element("span", {}, String(max)));
  }

  makeSpark() {
    const spark = document.createElementNS(kSvg, "svg");
    spark.setAttribute("class", "spark");
    spark.setAttribute("viewBox", `0 0 ${kSparkWidth} ${kSparkHeight}`);
    spark.setAttribute("preserveAspectRatio", "none");
    spark.setAttribute("aria-hidden", "true");
    this.path = document.createElementNS(kSvg, "path");
    spark.append(this.path);
    return spark;
  }

  update() {
    const {item} = this;
    setText(this.value, item.failure === "" ? item.text(item.value) : "failed");
    const look = item.failure !== "" ? "item failed" : item.problem !== "" ? "item outside" : "item";
    if (this.look !== look) {
      this.look = look;
      this.node.className = look;
    }
    if (this.shown !== item.value && this.fill !== undefined) {
      this.shown = item.value;
      this.fillBar();
    }
    if (this.visible && this.path !== undefined) {
      this.drawSpark();
    }
  }

  // From zero if the range has one inside, else from its lower end.
  fillBar() {
    const {min, max, value} = this.item;
    const place = (v) => Math.min(1, Math.max(0, (v - min) / (max - min)));
    const ends = [place(Math.max(min, Math.min(max, 0))), place(value ?? min)].sort((a, b) => a - b);
    this.fill.style.left = `${100 * ends[0]}%`;
    this.fill.style.width = value === null ? "0" : `max(2px, ${100 * (ends[1] - ends[0])}%)`;
  }

  drawSpark() {
    const line = sparkPath(this.item.recent, this.item.slots);
    if (line !== this.drawn) {
      this.drawn = line;
      this.path.setAttribute("d", line);
    }
  }

  setPlotted(plotted) {
    this.node.toggleAttribute("data-plotted", plotted);
    this.button?.setAttribute("aria-pressed", String(plotted));
  }
}

// The samples as a path in a small picture that has room for `slots`, newest at the right, with gaps
// left open.
function sparkPath(samples, slots) {
  let low = Infinity;
  let high = -Infinity;
  for (const sample of samples) {
    if (sample !== null) {
      low = Math.min(low, sample);
      high = Math.max(high, sample);
    }
  }
  const step = kSparkWidth / Math.max(1, slots - 1);
  const height = kSparkHeight - 4;
  let path = "";
  let pen = "M";
  samples.forEach((sample, i) => {
    if (sample === null) {
      pen = "M";
      return;
    }
    const x = kSparkWidth - (samples.length - 1 - i) * step;
    const y = 2 + (high > low ? height * (high - sample) / (high - low) : height / 2);
    // The zero-length step makes a sample between two gaps a dot.
    path += pen === "M" ? `M${x.toFixed(1)} ${y.toFixed(1)}h0` : `L${x.toFixed(1)} ${y.toFixed(1)}`;
    pen = "L";
  });
  return path;
}

// All items of the machine, and their rows under `root`.
class ItemList {
  constructor(root) {
    this.root = root;
    this.order = [];       // the item of each place in a sweep's values
    this.items = new Map();  // ID -> item
    this.rows = [];
    this.watcher = new IntersectionObserver((entries) => this.see(entries), {rootMargin: "200px"});
  }

  // A new list of `entries`, as /api/v1/items has them and its `units`.
  build(entries, units) {
    const shown = new Map(Object.entries(units));
    this.watcher.disconnect();
    this.items.clear();
    this.order = entries.map((entry) => {
      if (!this.items.has(entry.id)) {
        this.items.set(entry.id, new Item(entry, shown));
      }
      return this.items.get(entry.id);
    });
    this.nameAll(entries);
    this.rows = this.order.map((item, i) => new Row(item, entries[i]));
    this.rows.forEach((row) => row.item.rows.push(row));
    this.root.replaceChildren(...this.makeFamilies(entries));
    this.rows.forEach((row) => this.watcher.observe(row.node));
  }

  // Sixteen modules have sixteen temperatures: away from their place they need the package's name.
  nameAll(entries) {
    const counts = new Map();
    this.items.forEach(({name}) => counts.set(name, (counts.get(name) ?? 0) + 1));
    this.order.forEach((item, i) => {
      item.title = counts.get(item.name) > 1 ? `${entries[i].package} › ${item.name}` : item.name;
    });
  }

  makeFamilies(entries) {
    const families = new Map();  // name -> package -> rows
    entries.forEach((entry, i) => {
      const packages = families.get(entry.family) ?? new Map();
      families.set(entry.family, packages);
      packages.set(entry.package, [...(packages.get(entry.package) ?? []), this.rows[i]]);
    });
    this.families = [...families.keys()];
    return [...families].map(([name, packages], i) => {
      const family = element("details", {"class": "family", "id": `family-${i}`, "open": ""},
                             element("summary", {}, element("h2", {}, name)));
      family.append(...[...packages].map(([title, rows]) => ItemList.makePackage(title, rows, title !== name)));
      return family;
    });
  }

  // Some families are one package of the same name; once is enough.
  static makePackage(title, rows, named) {
    const list = element("ul", {"aria-label": title}, ...rows.map((row) => row.node));
    return element("section", {"class": "package"}, ...named ? [element("h3", {}, title)] : [], list);
  }

  see(entries) {
    const rows = new Map(this.rows.map((row) => [row.node, row]));
    for (const {target, isIntersecting} of entries) {
      const row = rows.get(target);
      if (row !== undefined) {
        row.visible = isIntersecting;
        row.update();
      }
    }
  }

  take(values, failed, findings) {
    const byId = new Map();
    for (const finding of findings ?? []) {
      byId.set(finding.id, [...(byId.get(finding.id) ?? []), finding]);
    }
    this.order.forEach((item, i) => item.take(values[i] ?? null, failed[i], byId.get(item.id) ?? []));
  }

  // One more sample to each small line.
  remember() {
    for (const item of this.items.values()) {
      if (item.numeric) {
        item.recent.push(item.value);
        item.recent.splice(0, item.recent.length - kRecentSamples);
      }
    }
  }

  // The small lines anew, from /api/v1/history's answer: its end, or all of it, thinned out.
  recall({times, series}, all) {
    const every = all ? Math.ceil(times.length / kRecentSamples) : 1;
    for (const item of this.items.values()) {
      const samples = series[item.id] ?? [];
      item.recent = samples.filter((_, i) => (samples.length - 1 - i) % every === 0)
                           .slice(-kRecentSamples);
      item.slots = all ? item.recent.length : kRecentSamples;
    }
  }

  // The `count` readings that moved most, measured by their ranges.
  liveliest({series}, count) {
    const moves = (item) => {
      const seen = (series[item.id] ?? []).filter((value) => value !== null);
      const low = seen.reduce((a, b) => Math.min(a, b), Infinity);
      return seen.reduce((a, b) => Math.max(a, b), -Infinity) - low;
    };
    return [...this.items.values()]
      .filter((item) => item.moves && !item.state && item.min < item.max)
      .map((item) => [moves(item) / (item.max - item.min), item])
      .filter(([part]) => part > 0)
      .sort(([a], [b]) => b - a).slice(0, count).map(([, item]) => item);
  }

  update() {
    this.rows.forEach((row) => row.update());
  }

  problems() {
    const all = [...this.items.values()].filter((item) => item.problem !== "");
    return [...all.filter((item) => item.failure !== ""), ...all.filter((item) => item.failure === "")];
  }

  // Shows the rows that have all the words of `text`; how many these are.
  filter(text) {
    const words = text.toLowerCase().split(/\s+/).filter((word) => word !== "");
    let found = 0;
    for (const {node, words: own} of this.rows) {
      node.hidden = !words.every((word) => own.includes(word));
      found += node.hidden ? 0 : 1;
    }
    for (const group of this.root.querySelectorAll(".package, .family")) {
      group.hidden = group.querySelector("li:not([hidden])") === null;
    }
    return found;
  }
}
