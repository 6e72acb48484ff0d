// The page around items and chart: the machine's name, the state of the connection, what needs
// attention, search, the families' links, and the keys.
"use strict";

const kTitle = "KOVA machine";
const kFirstPlotted = 4;

class Page {
  constructor(source) {
    this.source = source;
    this.part = (id) => document.getElementById(id);
    this.list = new ItemList(this.part("items"));
    this.chart = new Chart(this.part("chart"), source, (ids) => this.plotted(ids));
    this.attention = new Attention(this.part("attention"), (item) => this.show(item));
    this.up = false;      // the connection
    this.sweep = null;    // how old and how good the readings are
    this.swept = 0;       // performance.now() when the last sweep ended
    this.dirty = false;
    this.listen();
    source.start({
      items: (answer) => this.takeItems(answer),
      sweep: (message) => this.takeSweep(message),
      status: (sweep) => this.takeStatus(sweep),
      connection: (state) => this.takeConnection(state),
    });
    setInterval(() => this.showAge(), 1000);
  }

  async takeItems(answer) {
    const list = JSON.stringify(answer.items.map(
      ({id, family, package: group, name, unit, min, max, options}) =>
        [id, family, group, name, unit, min, max, options]));
    if (this.known !== list) {
      this.known = list;
      this.list.build(answer.items, answer.units);
      this.showFamilies();
      this.search();
      this.replot();
    } else {
      this.chart.load();  // what the broken connection has missed
    }
    const failed = Object.fromEntries(answer.items.map((item, i) => [i, item]).filter(
      ([, item]) => item.ok === false));
    this.list.take(answer.items.map((item) => item.value), failed, answer.findings);
    this.showMachine(answer);
    this.takeStatus(answer.sweep);
    const recent = await this.source.history().catch(() => null);
    if (recent !== null && this.known === list) {
      this.list.recall(recent, !this.source.live);
      if (!this.source.live) {
        this.takeReport(recent);
      }
      this.refresh();
    }
  }

  // Nobody is there to choose: what went wrong is plotted, or else what moved.
  takeReport(recent) {
    this.attention.recall(this.source.report, this.list.items);
    if (this.chart.items.size === 0) {
      const wrong = [...this.attention.past.keys()].filter(
        ({id}) => recent.series[id]?.some((value) => value !== null));
      const chosen = new Set([...wrong, ...this.list.liveliest(recent, kFirstPlotted)]);
      this.chart.choose([...chosen].slice(0, kFirstPlotted));
    }
  }

  takeSweep({sweep, values, failed, findings}) {
    const again = this.sweep !== null && sweep.number === this.sweep.number;
    this.list.take(values, failed, findings);
    if (!again) {
      this.list.remember();
      this.chart.push(sweep);
    }
    this.takeStatus(sweep);
  }

  takeStatus(sweep) {
    this.sweep = sweep;
    this.swept = performance.now() - 1000 * (sweep.age ?? 0);
    this.refresh();
  }

  takeConnection(state) {
    this.up = state.up;
    this.retry = performance.now() + 1000 * (state.retry ?? 0);
    this.refresh();
  }

  // Draws once a frame, however much has come; not at all while nobody looks.
  refresh() {
    if (!this.dirty) {
      this.dirty = true;
      requestAnimationFrame(() => this.draw());
    }
    document.title = this.titleText();
  }

  draw() {
    this.dirty = false;
    this.list.update();
    this.attention.update(this.list.problems());
    this.showState();
    this.showAge();
    if (this.chart.items.size > 0) {
      this.chart.draw();
    }
  }

  titleText() {
    const problems = this.list.problems().length;
    return (problems > 0 ? `(${problems}) ` : "") + (this.machine ?? kTitle);
  }

  showMachine({machine, release}) {
    this.machine = machine.name;
    setText(this.part("machine"), machine.name);
    const simulated = machine.simulated ? `simulated machine (${machine.simulated}), ` : "";
    setText(this.part("about"), `${simulated}KOVA IoT module ${release}`);
    if (!this.source.live) {
      const {made, source} = this.source.report;
      setText(this.part("links"), `Report of ${dateAndTime(made)}: ${source}`);
    }
  }

  // The state in a word or two, and what is wrong in a sentence.
  showState() {
    const {sweep, source: {live}} = this;
    const device = sweep === null || sweep.up ? "" : sweep.error ?? "the device does not answer";
    const lost = live && !this.up;
    setText(this.part("state"), !live ? "Report" : lost ? "Not connected" : device ? "No device" : "Live");
    document.body.dataset.state = lost ? "lost" : device && live ? "down" : "up";
    const empty = this.list.order.length === 0;
    const old = empty ? "" : " These are the last readings.";
    const text = lost ? `No connection to the exporter; trying again.${old}`
                      : device ? `${sentence(device)} It is looked for at every interval.${old}` : "";
    setText(this.part("alert"), text);
    this.part("alert").hidden = text === "";
    this.part("chart").hidden = empty;
    this.part("empty").hidden = sweep === null || !empty;
    setText(this.part("empty"), live ? "No items yet. They appear here as soon as a device answers." : "No items.");
  }

  showAge() {
    const {sweep, source: {live}} = this;
    if (sweep === null || sweep.time === null) {
      return;
    }
    const when = dateAndTime(sweep.time);
    const seconds = Math.max(0, Math.round((performance.now() - this.swept) / 1000));
    setText(this.part("age"), live ? `read ${duration(seconds)} ago, every ${duration(sweep.pace)}`
                                   : `read ${when}`);
    this.part("age").title = when;
    if (live && !this.up) {
      const wait = Math.max(0, Math.ceil((this.retry - performance.now()) / 1000));
      const next = wait > 0 ? `trying again in ${wait} s` : "connecting";
      setText(this.part("age"), `read ${duration(seconds)} ago, ${next}`);
    }
  }

  showFamilies() {
    this.part("families").replaceChildren(...this.list.families.map(
      (name, i) => element("a", {"href": `#family-${i}`}, name)));
  }

  listen() {
    const find = this.part("find");
    find.addEventListener("input", () => this.search());
    this.part("search").addEventListener("submit", (event) => event.preventDefault());
    this.part("items").addEventListener("click", (event) => this.click(event));
    document.addEventListener("keydown", (event) => this.key(event));
    this.part("to-chart").addEventListener("click", (event) => {
      event.preventDefault();  // the address holds what is plotted
      this.part("chart").scrollIntoView();
    });
    this.part("families").addEventListener("click", (event) => this.openFamily(event));
    new IntersectionObserver(([{isIntersecting}]) => {
      this.part("to-chart").classList.toggle("offscreen", !isIntersecting);
    }).observe(this.part("chart"));
  }

  openFamily(event) {
    const family = event.target.closest("a")?.getAttribute("href").slice(1);
    if (family !== undefined) {
      event.preventDefault();
      this.part(family).open = true;
      this.part(family).scrollIntoView();
      this.part(family).querySelector("summary").focus({preventScroll: true});
    }
  }

  // Anywhere on a line does what its button does; marking text does not.
  click(event) {
    const row = event.target.closest("li.item");
    const item = row === null ? undefined : this.list.items.get(row.dataset.id);
    if (item?.numeric && getSelection().isCollapsed) {
      this.chart.toggle(item);
    }
  }

  key(event) {
    const inText = event.target.matches("input");
    if (event.ctrlKey || event.altKey || event.metaKey) {
      return;
    }
    if (event.key === "/" && !inText) {
      event.preventDefault();
      this.part("find").focus();
    } else if (event.key === "Escape" && inText) {
      event.target.value = "";
      this.search();
    } else if ((event.key === "ArrowDown" || event.key === "ArrowUp") &&
               event.target.matches("button.name, #find")) {
      event.preventDefault();
      this.step(event.target, event.key === "ArrowDown" ? 1 : -1);
    }
  }

  step(from, by) {
    const buttons = [...this.part("items").querySelectorAll("li:not([hidden]) button.name")].filter(
      (button) => button.offsetParent !== null);
    const at = buttons.indexOf(from);
    const next = buttons[at < 0 ? 0 : at + by];
    next?.focus();
  }

  search() {
    const text = this.part("find").value.trim();
    const found = this.list.filter(text);
    setText(this.part("found"), text === "" ? "" : found === 1 ? "1 item" : `${found} items`);
  }

  // To an item's line, wherever the reader is.
  show(item) {
    this.part("find").value = "";
    this.search();
    const {node, button} = item.rows[0];
    node.closest("details").open = true;
    node.scrollIntoView({block: "center"});
    button?.focus({preventScroll: true});
  }

  // The address keeps what is plotted, for a reload or a colleague.
  plotted(ids) {
    history.replaceState(null, "", ids.length > 0 ? `#plot=${ids.join()}` : location.pathname + location.search);
    for (const item of this.list.items.values()) {
      item.rows.forEach((row) => row.setPlotted(this.chart.items.has(item.id)));
    }
    const link = this.part("to-chart");
    link.hidden = ids.length === 0;
    setText(link, `Chart (${ids.length})`);
    document.body.classList.toggle("plotting", ids.length > 0);
  }

  // What the address names, after the list is new.
  replot() {
    const ids = /^#plot=(.*)$/.exec(location.hash)?.[1].split(",") ?? [];
    const items = ids.map((id) => this.list.items.get(id)).filter((item) => item?.numeric);
    if (items.length > 0 || this.chart.items.size > 0) {
      this.chart.choose(items.slice(0, kMostPlotted));
    }
  }
}

// What needs attention, each item with its reason, and with a link to its line.
// In a report also those that were so at any time.
class Attention {
  constructor(root, show) {
    this.root = root;
    this.list = root.querySelector("ul");
    this.title = root.querySelector("h2");
    this.show = show;
    this.reasons = new Map();  // item -> where its reason stands
    this.past = new Map();     // item -> what was wrong with it in the course of a report
  }

  // Lines may be thinned out; what was wrong is counted over all sweeps.
  recall(report, items) {
    this.past.clear();
    const sweeps = report.items.sweep.number;
    for (const item of items.values()) {
      const failures = report.failures[item.id];
      const judged = report.judged[item.id];
      const texts = [];
      if (failures !== undefined) {
        texts.push(`failed in ${failures.count} of ${sweeps} sweeps, last at ` +
                   `${clock(failures.last)}: ${failureText(failures)}`);
      }
      if (judged !== undefined) {
        texts.push(`in ${judged.count} of ${sweeps} sweeps, last at ${clock(judged.last)}: ` +
                   `${judged.message}`);
      }
      if (texts.length > 0) {
        this.past.set(item, texts.join("; "));
      }
    }
  }

  update(problems) {
    const items = [...new Set([...problems, ...this.past.keys()])];
    const shown = items.map((item) => `${item.id} ${item.failure !== ""}`).join();
    if (this.shown !== shown) {
      this.shown = shown;
      this.reasons = new Map(items.map((item) => [item, element("span", {"class": "reason"})]));
      this.list.replaceChildren(...items.map((item) => this.makeLine(item)));
      this.root.hidden = items.length === 0;
      setText(this.title, `Needs attention (${items.length})`);
    }
    for (const [item, reason] of this.reasons) {
      // A failure of the last sweep is in the past ones too.
      const now = item.failure !== "" && this.past.has(item) ? "" : item.problem;
      setText(reason, [now, this.past.get(item) ?? ""].filter((text) => text !== "").join("; "));
    }
  }

  makeLine(item) {
    const name = element("button", {"type": "button"}, item.place);
    name.addEventListener("click", () => this.show(item));
    return element("li", {"class": item.failure !== "" ? "failed" : "outside"}, name, " ",
                   this.reasons.get(item));
  }
}

function sentence(text) {
  return `${text[0].toUpperCase()}${text.slice(1)}${/[.!?]$/.test(text) ? "" : "."}`;
}

// With the time zone: a report may be read far from the machine.
function dateAndTime(time) {
  return new Date(1000 * time).toLocaleString([], {
    year: "numeric", month: "2-digit", day: "2-digit", hour: "2-digit", minute: "2-digit",
    second: "2-digit", hourCycle: "h23", timeZoneName: "short"});
}

function duration(seconds) {
  if (seconds < 120) {
    return `${Number(seconds.toFixed(1))} s`;
  }
  return seconds < 7200 ? `${Math.round(seconds / 60)} min` : `${Math.round(seconds / 3600)} h`;
}

new Page(chooseSource());
