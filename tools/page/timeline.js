// What is plotted, as samples in time, and the part of time that is shown.
"use strict";

const kMilliseconds = 1000;
const kLeastSeconds = 30;

// The samples of the plotted items. A gap in time is one sample of nothing, so that no line crosses.
class Samples {
  constructor() {
    this.clear();
  }

  clear() {
    this.times = [];
    this.series = new Map();
  }

  // From /api/v1/history's answer.
  load({times, series, sweep}, ids) {
    this.clear();
    ids.forEach((id) => this.series.set(id, []));
    times.forEach((time, i) => this.push(time, sweep.pace, (id) => series[id]?.[i] ?? null));
  }

  // A sample newer than all; `value` gives an ID's.
  push(time, pace, value) {
    const last = this.times.at(-1);
    if (last >= time) {
      return;
    }
    if (time - last > 3 * pace + 1) {
      this.times.push((last + time) / 2);
      this.series.forEach((samples) => samples.push(null));
    }
    this.times.push(time);
    this.series.forEach((samples, id) => samples.push(value(id)));
  }

  forget(before) {
    const old = this.times.findIndex((time) => time >= before);
    if (old > 0) {
      this.times.splice(0, old);
      this.series.forEach((samples) => samples.splice(0, old));
    }
  }

  // The sample nearest to `time`; -1 if there is none at all.
  nearest(time) {
    const after = this.times.findIndex((t) => t >= time);
    if (after <= 0) {
      return after === 0 ? 0 : this.times.length - 1;
    }
    return time - this.times[after - 1] < this.times[after] - time ? after - 1 : after;
  }

  // Lowest, mean and highest of an ID's samples between two times; null if there is no sample.
  spread(id, from, to) {
    const seen = this.series.get(id).filter(
      (v, i) => v !== null && this.times[i] >= from && this.times[i] <= to);
    if (seen.length === 0) {
      return null;
    }
    return {min: seen.reduce((a, b) => Math.min(a, b)), max: seen.reduce((a, b) => Math.max(a, b)),
            mean: seen.reduce((a, b) => a + b, 0) / seen.length};
  }

  table(ids) {
    const columns = ids.map((id) => this.series.get(id));
    return this.times.map((t, i) => [kMilliseconds * t, ...columns.map((column) => column[i])]);
  }
}

// The part of time that is shown: `span` seconds (null: all there are) that end at `end`, or at the
// newest sample if that is null, and then move on with it.
class View {
  constructor(span) {
    this.follow(span);
  }

  follow(span) {
    this.span = span;
    this.end = null;
  }

  window(times) {
    const end = this.end ?? times.at(-1) ?? 0;
    const first = times[0] ?? end;
    if (this.span === null) {
      return [Math.min(first, end - 1), end];
    }
    // A young history is not squeezed into the last corner.
    const from = end - this.span;
    return [this.end === null ? Math.max(from, Math.min(first, end - kLeastSeconds)) : from, end];
  }

  // Moves by a part of what is shown, and zooms about the middle.
  shift(part, times) {
    const [from, to] = this.window(times);
    this.show(from + part * (to - from), to + part * (to - from), times);
  }

  zoom(factor, times) {
    const [from, to] = this.window(times);
    const middle = (from + to) / 2;
    const half = Math.max(2, factor * (to - from) / 2);
    // At the newest sample it stays there.
    const end = this.end === null ? to : Math.min(middle + half, times.at(-1));
    this.show(end - 2 * half, end, times);
  }

  show(from, to, times) {
    const last = times.at(-1);
    if (from <= times[0] && to >= last) {
      this.follow(null);
      return;
    }
    this.span = to - from;
    this.end = to >= last ? null : to;
  }
}
