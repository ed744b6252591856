"use strict";
// Draws a day of the service: reads the JSON that the laboratory has put into the page. Texts of
// the air (SSIDs among them) reach the document by textContent alone.
(() => {
  // ---- the day, decoded ---------------------------------------------------------------------

  const day = JSON.parse(document.getElementById("day").textContent);
  const perSecond = 1000 / day.tick;
  const end = Math.max(day.end / perSecond, 1);
  const NOWHERE = -1;

  // Times come as steps of ticks; seconds go out.
  const times = (steps) => {
    let at = 0;
    return steps.map((step) => (at += step) / perSecond);
  };
  const known = (value) => (value < 0 ? null : value);

  const KINDS = [
    ["moved", "Moves", ["switch", "first-connect", "requested-connect", "connected", "elsewhere", "connect-failed",
      "restore", "credentials-asked", "suggestion-accepted", "client-connect", "denied-left", "denied-just-left"]],
    ["suggested", "Suggestions", ["suggest-by-event", "suggest-by-popup", "not-suggested", "already-suggested",
      "suggestion-withdrawn", "suggestion-failed"]],
    ["ripening", "Ripening", ["ripening", "better-possible", "no-qualifier", "surroundings-changed",
      "weak-connection"]],
    ["held", "Held still", ["inhibited", "vpn", "link-busy", "roaming-inhibit", "airplane-mode", "radio-off",
      "disabled", "wired-lan", "overtaken", "monitor-mode", "counts-disconnects", "switching-off"]],
    ["quiet", "Quiet", []],
  ];
  const kindOf = (step) => (KINDS.find(([, , steps]) => steps.includes(step)) || KINDS[KINDS.length - 1])[0];
  const kindTitle = (kind) => (KINDS.find(([name]) => name === kind) || [0, "Event"])[1];

  const adapters = day.adapters.map((raw) => {
    const links = times(raw.links.t).map((from, i) => ({ from, ap: raw.links.ap[i] }));
    links.forEach((link, i) => (link.to = i + 1 < links.length ? links[i + 1].from : end));
    const decisions = times(raw.decisions.t).map((from, i) => {
      const step = day.texts[raw.decisions.step[i]];
      return { from, to: from + raw.decisions.for[i] / perSecond, rounds: raw.decisions.rounds[i],
        kind: kindOf(step), text: day.texts[raw.decisions.text[i]] };
    });
    const series = raw.series.map((one) => ({
      ap: one.ap, t: times(one.t), score: one.score.map(known), quality: one.quality.map(known),
      counter: one.counter.map((n, i) => (one.quality[i] < 0 ? null : n)),
      reason: one.reason.map((n) => (n < 0 ? "" : day.texts[n])),
    }));
    return { name: raw.name, links: links.filter((l) => l.to > l.from), decisions, series,
      scans: times(raw.scans.t).map((t, i) => ({ t, cause: raw.scans.cause[i] })),
      traffic: { t: times(raw.traffic.t), mbps: raw.traffic.kbps.map((k) => k / 1000),
        gate: raw.traffic.gate.map((k) => k / 1000) } };
  });
  const events = day.events.map((e) => ({ ...e, from: e.t / perSecond, to: e.t / perSecond, rounds: 0 }));

  const asleep = [];
  for (const e of events) {
    if (/^suspend\b/.test(e.text)) asleep.push({ from: e.from, to: end });
    else if (/^resume\b/.test(e.text) && asleep.length) asleep[asleep.length - 1].to = e.from;
  }

  // The place in a rising list of the last that is at most `t`; -1 for none.
  const lastAt = (list, t, of = (x) => x) => {
    let low = 0, high = list.length;
    while (low < high) {
      const middle = (low + high) >> 1;
      if (of(list[middle]) <= t) low = middle + 1; else high = middle;
    }
    return low - 1;
  };

  // ---- words --------------------------------------------------------------------------------

  const two = (n) => String(n).padStart(2, "0");
  const clock = (s) => {
    const days = Math.floor(s / 86400), rest = s - days * 86400;
    const text = `${two(Math.floor(rest / 3600))}:${two(Math.floor(rest / 60) % 60)}:${two(Math.floor(rest) % 60)}`;
    return days ? `${days}d ${text}` : text;
  };
  const lasting = (s) => {
    const whole = Math.round(s);
    if (whole < 90) return `${whole} s`;
    return whole < 5400 ? `${Math.round(whole / 60)} min` : `${(whole / 3600).toFixed(1)} h`;
  };
  const apName = (n) => {
    if (n === NOWHERE) return "no access point";
    const ap = day.accessPoints[n];
    return `${ap.ssid || "(no name)"} ${ap.bssid}`;
  };
  const bandName = (band) => ({ 2: "2.4 GHz", 5: "5 GHz", 6: "6 GHz" })[band] || "";

  const make = (tag, attributes = {}, ...children) => {
    const element = document.createElement(tag);
    for (const [name, value] of Object.entries(attributes)) {
      if (name.startsWith("on")) element.addEventListener(name.slice(2), value);
      else if (value !== null && value !== undefined) element.setAttribute(name, value);
    }
    element.append(...children);
    return element;
  };
  const css = (name) => getComputedStyle(document.documentElement).getPropertyValue(name).trim();

  // ---- which colour an access point has: the same in all pictures ---------------------------

  const COLOURS = 8;
  const DASHES = [[], [8, 4], [2, 3]];
  const rank = new Map();
  {
    const weight = new Map();
    const add = (ap, w) => ap !== NOWHERE && weight.set(ap, (weight.get(ap) || 0) + w);
    for (const adapter of adapters) {
      for (const link of adapter.links) add(link.ap, (link.to - link.from) * 1000);
      for (const one of adapter.series) add(one.ap, Math.max(0, ...one.score) + one.t.length / 1e4);
    }
    [...weight].sort((a, b) => b[1] - a[1]).forEach(([ap], i) => rank.set(ap, i));
  }
  const colourOf = (ap) => css(`--c${(rank.get(ap) || 0) % COLOURS}`);
  const dashOf = (ap) => DASHES[Math.floor((rank.get(ap) || 0) / COLOURS) % DASHES.length];

  // ---- the time shown: one for all pictures -------------------------------------------------

  const shown = { min: 0, max: end };
  const listeners = [];
  const LEAST = Math.min(10, end);
  const show = (min, max) => {
    const width = Math.min(Math.max(max - min, LEAST), end);
    const from = Math.min(Math.max(min, 0), end - width);
    if (from === shown.min && from + width === shown.max) return;
    shown.min = from;
    shown.max = from + width;
    for (const listener of listeners) listener();
  };
  const zoom = (factor, about = (shown.min + shown.max) / 2) =>
    show(about - (about - shown.min) * factor, about + (shown.max - about) * factor);
  const pan = (share) => {
    const by = (shown.max - shown.min) * share;
    show(shown.min + by, shown.max + by);
  };
  const ACTIONS = { in: () => zoom(0.5), out: () => zoom(2), all: () => show(0, end),
    earlier: () => pan(-0.25), later: () => pan(0.25) };

  // ---- pictures -----------------------------------------------------------------------------

  const charts = [];
  const LEFT = 84;
  const font = "12px system-ui, sans-serif";
  const tip = document.getElementById("tip");

  const timeAxis = () => ({ stroke: css("--soft"), font, grid: { stroke: css("--line"), width: 1 },
    ticks: { stroke: css("--line"), width: 1 }, size: 30, space: 96, values: (u, list) => list.map(clock),
    incrs: [1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600, 7200, 10800, 21600, 43200, 86400, 604800] });

  // A chart that follows the time shown. `build` gives uPlot's options and data; it is asked anew
  // when colours, the width or what is shown of it change.
  class Picture {
    constructor(title, about, tools = []) {
      this.figure = make("figure", { tabindex: "0", "aria-label": `${title}. ${about}` },
        make("div", { class: "head" }, make("h3", {}, title), ...tools));
      this.canvas = make("div", { class: "canvas" });
      this.figure.append(this.canvas);
      this.chart = null;
      charts.push(this);
    }
    build() { return null; }
    draw() {
      if (this.chart) this.chart.destroy();
      this.chart = null;
      const made = this.build();
      if (!made) return;
      const { height, data, series, axis, scale, hooks = {} } = made;
      this.chart = new uPlot({
        width: Math.max(this.canvas.clientWidth, 240), height, series, padding: [8, 40, 0, 0],
        legend: { show: false }, scales: { x: { time: false, range: () => [shown.min, shown.max] }, y: scale },
        axes: [timeAxis(), { size: LEFT, stroke: css("--soft"), font, ticks: { show: false },
          grid: { stroke: css("--line"), width: 1 }, ...axis }],
        cursor: { y: false, points: { show: false }, sync: { key: "day", setSeries: false },
          drag: { x: true, y: false, setScale: false } },
        hooks: { ...hooks, setSelect: [(u) => this.select(u)] },
      }, data, this.canvas);
      this.chart.over.addEventListener("dblclick", ACTIONS.all);
      this.chart.over.addEventListener("mousemove", (e) => this.point(e));
      this.chart.over.addEventListener("mouseleave", () => (tip.hidden = true));
    }
    select(u) {
      if (u.select.width < 4) return;
      const from = u.posToVal(u.select.left, "x"), to = u.posToVal(u.select.left + u.select.width, "x");
      u.setSelect({ left: 0, width: 0, top: 0, height: 0 }, false);
      show(from, to);
    }
    follow() {
      if (this.chart) this.chart.setScale("x", { min: shown.min, max: shown.max });
    }
    point(event) {
      const box = this.chart.over.getBoundingClientRect();
      const text = this.told(this.chart.posToVal(event.clientX - box.left, "x"), event.clientY - box.top);
      if (!text) { tip.hidden = true; return; }
      tip.replaceChildren(...text);
      tip.hidden = false;
      const width = tip.offsetWidth, height = tip.offsetHeight;
      tip.style.left = `${Math.min(event.clientX + 14, innerWidth - width - 8)}px`;
      tip.style.top = `${event.clientY + 16 + height > innerHeight ? event.clientY - height - 12 : event.clientY + 16}px`;
    }
    told() { return null; }
    // The same in a table, made when somebody opens it.
    addTable(columns, rows) {
      const details = make("details", {}, make("summary", {}, "As a table"));
      const fill = () => {
        if (!details.open) return;
        const all = rows().filter((row) => row.to >= shown.min && row.from <= shown.max);
        const MOST = 500;
        const body = make("tbody", {}, ...all.slice(0, MOST).map((row) =>
          make("tr", {}, ...row.cells.map((cell, i) => make("td", { class: columns[i][1] }, String(cell))))));
        const table = make("table", {},
          make("thead", {}, make("tr", {}, ...columns.map(([name, kind]) => make("th", { class: kind }, name)))), body);
        const note = all.length > MOST ? [make("p", { class: "empty" },
          `${all.length - MOST} more rows; look closer to see them.`)] : [];
        details.replaceChildren(details.firstChild, make("div", { class: "scroll", tabindex: "0" }, table), ...note);
      };
      details.addEventListener("toggle", fill);
      listeners.push(fill);
      this.figure.append(details);
    }
  }

  const rowsAxis = (names) => ({ splits: () => names.map((_, i) => names.length - i - 0.5),
    values: () => names, grid: { show: false }, gap: 4 });
  const rowsScale = (names) => ({ range: () => [0, names.length] });
  const noLine = [{}, { show: true, stroke: "transparent", points: { show: false } }];
  const noData = () => [[0, end], [null, null]];

  // Rectangles in row `row` of a chart made of rows; `from` and `to` in seconds.
  const painter = (u, rows) => {
    const { ctx, bbox } = u;
    const rowHeight = bbox.height / rows;
    return {
      ctx, rowHeight,
      x: (t) => u.valToPos(t, "x", true),
      band(row, from, to, colour, alpha = 1, part = [0.12, 0.88], least = 1) {
        if (to < shown.min || from > shown.max) return;
        const left = Math.max(Math.round(u.valToPos(from, "x", true)), bbox.left);
        const right = Math.min(Math.max(Math.round(u.valToPos(to, "x", true)), left + least), bbox.left + bbox.width);
        ctx.globalAlpha = alpha;
        ctx.fillStyle = colour;
        ctx.fillRect(left, bbox.top + rowHeight * (row + part[0]), right - left, rowHeight * (part[1] - part[0]));
        ctx.globalAlpha = 1;
      },
    };
  };

  const decisionAt = (adapter, t) => {
    const i = lastAt(adapter.decisions, t, (d) => d.from);
    return i < 0 ? null : adapter.decisions[i];
  };
  const linkAt = (adapter, t) => {
    const i = lastAt(adapter.links, t, (l) => l.from);
    return i < 0 ? NOWHERE : adapter.links[i].ap;
  };
  const valueAt = (one, t) => {
    const i = lastAt(one.t, t);
    return i < 0 || one.quality[i] === null ? null
      : { score: one.score[i], quality: one.quality[i], counter: one.counter[i], reason: one.reason[i] };
  };
  const scoreText = (score) => (score === null ? "not scored yet" : `score ${score}`);

  // What the service knew and decided at a time.
  const standing = (adapter, t) => {
    const decision = decisionAt(adapter, t);
    const parts = [make("b", {}, clock(t)), ` on ${apName(linkAt(adapter, t))}`];
    if (decision) parts.push(make("div", { class: "decision" }, decision.text));
    const rows = adapter.series.map((one) => [one, valueAt(one, t)]).filter(([, v]) => v)
      .sort((a, b) => (b[1].score ?? -1) - (a[1].score ?? -1)).slice(0, 8);
    if (rows.length) {
      parts.push(make("table", {}, ...rows.map(([one, v]) => make("tr", {},
        make("td", {}, apName(one.ap)), make("td", {}, scoreText(v.score)), make("td", {}, `quality ${v.quality}`),
        make("td", {}, v.counter ? `round ${v.counter}` : ""), make("td", { class: "soft" }, v.reason)))));
    }
    return parts;
  };

  const LANES = ["On", "Decisions", "Held still", "Scans", "Asleep"];
  class Lanes extends Picture {
    constructor(adapter) {
      super("What happened", "Bands tell what the adapter was on, marks tell of decisions and scans.");
      this.adapter = adapter;
      this.addTable([["From"], ["For", "number"], ["On"]], () => adapter.links.map((l) => ({
        from: l.from, to: l.to, cells: [clock(l.from), lasting(l.to - l.from), apName(l.ap)] })));
    }
    build() {
      const paint = (u) => {
        const { adapter } = this;
        const p = painter(u, LANES.length);
        for (const l of adapter.links) {
          if (l.ap === NOWHERE) continue;
          p.band(0, l.from, l.to, colourOf(l.ap));
          const left = Math.max(p.x(l.from), u.bbox.left), room = Math.min(p.x(l.to), u.bbox.left + u.bbox.width) - left;
          p.ctx.font = `${12 * devicePixelRatio}px system-ui, sans-serif`;
          const name = [apName(l.ap), day.accessPoints[l.ap].ssid]
            .find((text) => p.ctx.measureText(text).width + 12 * devicePixelRatio < room);
          if (name) {
            p.ctx.fillStyle = css("--page");
            p.ctx.textBaseline = "middle";
            p.ctx.textAlign = "left";
            p.ctx.fillText(name, left + 6 * devicePixelRatio, u.bbox.top + p.rowHeight * 0.52);
          }
        }
        const least = 2 * devicePixelRatio;
        for (const d of adapter.decisions) {
          if (d.kind === "quiet") continue;
          if (d.kind === "held") p.band(2, d.from, d.to, css("--held"), 0.8, [0.3, 0.7], least);
          else p.band(1, d.from, d.kind === "ripening" ? d.to : d.from, css(`--${d.kind}`), 1, [0.12, 0.88], least * 1.5);
        }
        for (const s of adapter.scans)
          p.band(3, s.t, s.t, css(s.cause === 0 ? "--ripening" : "--quiet"), 0.7, [0.3, 0.7], devicePixelRatio);
        for (const s of asleep) p.band(4, s.from, s.to, css("--quiet"), 0.8, [0.3, 0.7]);
      };
      return { height: 28 * LANES.length + 34, data: noData(), series: noLine, axis: rowsAxis(LANES),
        scale: rowsScale(LANES), hooks: { draw: [paint] } };
    }
    told(t) { return standing(this.adapter, t); }
  }

  const MEASURES = [["score", "Worth", "points"], ["quality", "Quality", "0 to 100"],
    ["counter", "Rounds", "for which a candidate has been better"]];
  const MOST_LINES = 8;
  class Values extends Picture {
    constructor(adapter) {
      const buttons = MEASURES.map(([key, title, about]) => make("button", { type: "button", title: about,
        "aria-pressed": String(key === "score"), onclick: () => this.choose(key) }, title));
      super("How each access point stood", "Lines over time, one for each access point; the connected one is backed.",
        [make("div", { class: "switch", role: "group", "aria-label": "What the lines show" }, ...buttons)]);
      this.adapter = adapter;
      this.buttons = buttons;
      this.key = "score";
      this.ordered = [...adapter.series].sort((a, b) => rank.get(a.ap) - rank.get(b.ap));
      this.visible = new Set(this.ordered.slice(0, MOST_LINES));
      this.figure.append(make("div", { class: "chips many", role: "group", "aria-label": "Access points shown" },
        ...this.ordered.map((one) => this.chip(one))));
      this.addTable([["At"], ["Access point"], ["Score", "number"], ["Quality", "number"], ["Rounds", "number"], ["Why"]],
        () => this.ordered.flatMap((one) => one.t.map((t, i) => ({ from: t, to: one.t[i + 1] ?? end, cells: [clock(t),
          apName(one.ap), one.score[i] ?? "", one.quality[i] ?? "not heard", one.counter[i] || "", one.reason[i]] })))
          .sort((a, b) => a.from - b.from));
    }
    chip(one) {
      const ap = day.accessPoints[one.ap];
      const swatch = make("span", { class: "swatch" });
      swatch.style.borderTopStyle = ["solid", "dashed", "dotted"][DASHES.indexOf(dashOf(one.ap))];
      swatch.style.color = `var(--c${rank.get(one.ap) % COLOURS})`;
      const button = make("button", { type: "button", "aria-pressed": String(this.visible.has(one)),
        onclick: () => {
          if (!this.visible.delete(one)) this.visible.add(one);
          button.setAttribute("aria-pressed", String(this.visible.has(one)));
          this.draw();
        } }, swatch, `${apName(one.ap)}${ap.channel ? `, channel ${ap.channel}` : ""}`);
      return button;
    }
    choose(key) {
      this.key = key;
      this.buttons.forEach((b, i) => b.setAttribute("aria-pressed", String(MEASURES[i][0] === key)));
      this.draw();
    }
    build() {
      const lines = this.ordered.filter((one) => this.visible.has(one));
      const at = [...new Set(lines.flatMap((one) => one.t).concat(this.adapter.links.map((l) => l.from), 0, end))]
        .sort((a, b) => a - b);
      const column = (one) => {
        let i = -1;
        return at.map((t) => {
          while (i + 1 < one.t.length && one.t[i + 1] <= t) ++i;
          return i < 0 ? null : one[this.key][i];
        });
      };
      const columns = new Map(lines.map((one) => [one.ap, column(one)]));
      const own = at.map((t, i) => columns.get(linkAt(this.adapter, t))?.[i] ?? null);
      const paths = uPlot.paths.stepped({ align: 1 });
      const points = { show: false };
      const least = this.key === "counter" ? 3 : 100;
      return { height: 260, data: [at, own, ...columns.values()], axis: {},
        series: [{}, { stroke: css("--line"), width: 9, paths, points },
          ...lines.map((one) => ({ stroke: colourOf(one.ap), dash: dashOf(one.ap), width: 2, paths, points }))],
        scale: { range: (u, low, high) => [0, Math.max(high ?? 0, least) * 1.04] } };
    }
    told(t) { return standing(this.adapter, t); }
  }

  class Traffic extends Picture {
    constructor(adapter) {
      super("Traffic", "Mbps over time, and the rate from which the service holds still.",
        [make("span", { class: "soft" }, "Mbps; the broken line: from there on the service holds still")]);
      this.adapter = adapter;
      const { t, mbps, gate } = adapter.traffic;
      this.addTable([["From"], ["Mbps", "number"], ["Held from", "number"]], () => t.map((at, i) => ({ from: at,
        to: t[i + 1] ?? end, cells: [clock(at), mbps[i].toFixed(2), gate[i].toFixed(2)] })));
    }
    build() {
      const { t, mbps, gate } = this.adapter.traffic;
      const last = (list) => [...list, list[list.length - 1]];
      const paths = uPlot.paths.stepped({ align: 1 });
      const points = { show: false };
      return { height: 130, data: t.length ? [last(t).map((x, i) => (i < t.length ? x : end)), last(mbps), last(gate)]
        : [[0, end], [null, null], [null, null]],
      axis: {}, series: [{}, { stroke: colourOf(linkAt(this.adapter, 0)), fill: `${colourOf(linkAt(this.adapter, 0))}33`,
        width: 1.5, paths, points }, { stroke: css("--held"), dash: [6, 4], width: 1.5, paths, points }],
      scale: { range: (u, low, high) => [0, Math.max(high ?? 0, 0.1) * 1.1] } };
    }
    told(t) {
      const { traffic } = this.adapter;
      const i = lastAt(traffic.t, t);
      return i < 0 ? null : [make("b", {}, clock(t)),
        ` ${traffic.mbps[i].toFixed(2)} Mbps; held still from ${traffic.gate[i].toFixed(2)} Mbps on`];
    }
  }

  class Channels extends Picture {
    constructor(adapter) {
      super("Channels", "Each row is a channel, each band an access point that was heard there.",
        [make("span", { class: "soft" }, "the fuller the colour, the stronger it was heard")]);
      this.adapter = adapter;
      const key = (one) => `${day.accessPoints[one.ap].band}/${day.accessPoints[one.ap].channel}`;
      const of = (one) => day.accessPoints[one.ap];
      const sorted = [...adapter.series].filter((one) => of(one).channel)
        .sort((a, b) => of(a).band - of(b).band || of(a).channel - of(b).channel || rank.get(a.ap) - rank.get(b.ap));
      this.rows = [];
      for (const one of sorted) {
        const row = this.rows[this.rows.length - 1];
        if (row && row.key === key(one)) row.all.push(one);
        else this.rows.push({ key: key(one), name: `${of(one).channel} · ${bandName(of(one).band)}`, all: [one] });
      }
      this.addTable([["Channel"], ["Access point"], ["Heard from"], ["to"], ["Strongest", "number"]], () =>
        this.rows.flatMap((row) => row.all.flatMap((one) => this.heard(one).map((h) => ({ from: h.from, to: h.to,
          cells: [row.name, apName(one.ap), clock(h.from), clock(h.to), h.best] })))));
    }
    heard(one) {
      const spans = [];
      one.t.forEach((from, i) => {
        const to = one.t[i + 1] ?? end, quality = one.quality[i], open = spans[spans.length - 1];
        if (quality === null) return;
        if (open && open.to === from) { open.to = to; open.best = Math.max(open.best, quality); }
        else spans.push({ from, to, best: quality });
      });
      return spans;
    }
    build() {
      if (!this.rows.length) return null;
      const names = this.rows.map((row) => row.name);
      const paint = (u) => {
        const p = painter(u, names.length);
        this.rows.forEach((row, number) => row.all.forEach((one, place) => {
          const part = [0.08 + (0.84 * place) / row.all.length, 0.08 + (0.84 * (place + 0.86)) / row.all.length];
          one.t.forEach((from, i) => {
            if (one.quality[i] === null) return;
            p.band(number, from, one.t[i + 1] ?? end, colourOf(one.ap), 0.15 + (0.85 * one.quality[i]) / 100, part, 0);
          });
        }));
      };
      const tall = this.rows.reduce((sum, row) => sum + Math.max(1, row.all.length / 3), 0);
      return { height: Math.min(26 * tall + 40, 520), data: noData(), series: noLine, axis: rowsAxis(names),
        scale: rowsScale(names), hooks: { draw: [paint] } };
    }
    told(t, y) {
      const height = this.chart.over.clientHeight / this.rows.length;
      const row = this.rows[Math.min(Math.max(Math.floor(y / height), 0), this.rows.length - 1)];
      const all = row.all.map((one) => [one, valueAt(one, t)]).filter(([, v]) => v);
      return [make("b", {}, `${clock(t)} channel ${row.name}`), make("table", {}, ...all.map(([one, v]) =>
        make("tr", {}, make("td", {}, apName(one.ap)), make("td", {}, `quality ${v.quality}`),
          make("td", {}, scoreText(v.score)))))];
    }
  }

  // ---- the list of what was decided ---------------------------------------------------------

  const ROW = 30;
  class Finder {
    constructor(adapter, number) {
      this.adapter = adapter;
      const own = events.filter((e) => e.adapter === undefined || e.adapter === number)
        .map((e) => ({ ...e, kind: "event" }));
      this.all = [...adapter.decisions, ...own].sort((a, b) => a.from - b.from);
      this.kinds = new Set(["moved", "suggested", "ripening", "held", "event"]);
      this.words = "";
      this.chosen = null;
      this.count = make("span", { class: "soft", "aria-live": "polite" });
      const input = make("input", { type: "search", placeholder: "Search, e.g. an SSID, a BSSID or a reason",
        "aria-label": "Search what was decided", oninput: () => { this.words = input.value.toLowerCase(); this.find(); } });
      const chips = make("div", { class: "chips", role: "group", "aria-label": "Kinds shown" },
        ...[...KINDS.map(([kind, title]) => [kind, title]), ["event", "Events"]].map(([kind, title]) => this.chip(kind, title)));
      this.tall = make("div", { class: "tall" });
      this.list = make("div", { class: "list", role: "listbox", tabindex: "0", "aria-label": "What was decided",
        onscroll: () => this.fill(), onkeydown: (e) => this.onKey(e) }, this.tall);
      this.whole = make("p", { class: "whole soft", "aria-live": "polite" });
      this.element = make("section", {}, make("h3", {}, "What was decided, and why"),
        make("div", { class: "finder" }, input, chips, this.count), this.list, this.whole);
      listeners.push(() => this.find());
    }
    chip(kind, title) {
      const dot = make("span", { class: "dot" });
      dot.style.background = kind === "event" ? "var(--soft)" : `var(--${kind})`;
      const button = make("button", { type: "button", "data-kind": kind, "aria-pressed": String(this.kinds.has(kind)),
        onclick: () => {
          if (!this.kinds.delete(kind)) this.kinds.add(kind);
          button.setAttribute("aria-pressed", String(this.kinds.has(kind)));
          this.find();
        } }, dot, title);
      return button;
    }
    find() {
      this.found = this.all.filter((d) => this.kinds.has(d.kind) && d.to >= shown.min && d.from <= shown.max &&
        (!this.words || d.text.toLowerCase().includes(this.words)));
      const leftOut = day.eventsLeftOut ? `; ${day.eventsLeftOut} later messages of clients are left out` : "";
      this.count.textContent = `${this.found.length} of ${this.all.length}${leftOut}`;
      this.tall.style.height = `${Math.max(this.found.length * ROW, 1)}px`;
      this.fill();
    }
    fill() {
      const first = Math.max(0, Math.floor(this.list.scrollTop / ROW) - 4);
      const last = Math.min(this.found.length, first + Math.ceil((this.list.clientHeight || 320) / ROW) + 8);
      this.tall.replaceChildren(...(this.found.length ? this.found.slice(first, last).map((d, i) => this.row(d, first + i))
        : [make("p", { class: "empty" }, "Nothing of these kinds in the time shown.")]));
    }
    row(d, place) {
      const dot = make("span", { class: "dot" });
      dot.style.background = d.kind === "event" ? "var(--soft)" : `var(--${d.kind})`;
      const row = make("div", { class: d === this.chosen ? "row on" : "row", role: "option", title: d.text,
        "aria-selected": String(d === this.chosen), onclick: () => this.choose(d) },
      make("span", {}, clock(d.from)), make("span", { class: "kind" }, dot, kindTitle(d.kind)),
      make("span", {}, d.rounds > 1 ? `${d.text} (${d.rounds} rounds, ${lasting(d.to - d.from)})` : d.text));
      row.style.top = `${place * ROW}px`;
      return row;
    }
    choose(d) {
      this.chosen = d;
      this.whole.textContent = `${clock(d.from)}${d.rounds > 1 ? ` to ${clock(d.to)}, ${d.rounds} rounds` : ""}: ${d.text}`;
      const place = this.found.indexOf(d) * ROW;
      if (place < this.list.scrollTop || place + ROW > this.list.scrollTop + this.list.clientHeight)
        this.list.scrollTop = place - this.list.clientHeight / 2;
      if (d.from < shown.min || d.from > shown.max) show(d.from - (shown.max - shown.min) / 2, d.from + (shown.max - shown.min) / 2);
      for (const picture of charts) {
        if (picture.chart) picture.chart.setCursor({ left: picture.chart.valToPos(d.from, "x"), top: 10 });
      }
      this.fill();
    }
    step(by) {
      if (!this.found.length) return;
      const now = this.chosen ? this.found.indexOf(this.chosen) : by > 0 ? -1 : this.found.length;
      this.choose(this.found[Math.min(Math.max(now + by, 0), this.found.length - 1)]);
    }
    onKey(event) {
      const by = { ArrowDown: 1, ArrowUp: -1, PageDown: 10, PageUp: -10 }[event.key];
      if (!by) return;
      event.preventDefault();
      event.stopPropagation();
      this.step(by);
    }
  }

  // ---- the page -----------------------------------------------------------------------------

  const main = document.getElementById("main");
  const finders = [];
  document.getElementById("title").textContent = day.world;
  document.getElementById("subtitle").textContent =
    `${lasting(end)}, ${adapters.length} adapter${adapters.length === 1 ? "" : "s"}, ` +
    `${day.accessPoints.length} access points, seed ${day.seed}`;

  const figures = (rows) => make("dl", { class: "figures" },
    ...rows.map(([name, value]) => make("div", {}, make("dt", {}, name), make("dd", {}, value))));
  if (day.summary) {
    const s = day.summary, all = Math.max(s.seconds * adapters.length, 1);
    const share = (n) => `${Math.round((n * 100) / all)} %`;
    main.append(figures([["Connected", share(s.connected_seconds)], ["On the best-scored one", share(s.best_seconds)],
      ["Switches", s.switches], ["Scans", s.scans], ["Connect failures", s.connect_failures], ["Roams by drivers", s.roams],
      ["Rounds", s.rounds]]));
  }
  if (day.compare) {
    const rows = [["Policy"], ["Rate", "number"], ["Useful rate", "number"], ["Moves", "number"],
      ["There and back", "number"], ["Scans", "number"], ["No link", "number"]];
    const percent = (x) => `${x.toFixed(1)} %`;
    main.append(make("section", {}, make("h2", {}, "Beside the peers"),
      make("p", { class: "soft" }, "Rates as shares of the oracle's, which knows the future."),
      make("div", { class: "scroll" }, make("table", {}, make("thead", {}, make("tr", {},
        ...rows.map(([name, kind]) => make("th", { class: kind }, name)))),
      make("tbody", {}, ...day.compare.policies.map((p) => make("tr", {}, ...[p.name, percent(p.rate_percent),
        percent(p.useful_percent), p.moves, p.ping_pongs, p.scans, `${p.disconnected_seconds.toFixed(1)} s`]
        .map((cell, i) => make("td", { class: rows[i][1] }, String(cell))))))))));
  }

  adapters.forEach((adapter, number) => {
    const on = new Map();
    for (const l of adapter.links) on.set(l.ap, (on.get(l.ap) || 0) + l.to - l.from);
    const most = [...on].filter(([ap]) => ap !== NOWHERE).sort((a, b) => b[1] - a[1]).slice(0, 3)
      .map(([ap, s]) => `${apName(ap)} ${Math.round((s * 100) / end)} %`);
    const section = make("section", { class: "adapter" }, make("h2", {}, adapter.name),
      make("p", { class: "soft" }, most.length ? `On ${most.join(", ")} of the time.` : "Never connected."));
    main.append(section);
    for (const picture of [new Lanes(adapter), new Values(adapter), new Traffic(adapter), new Channels(adapter)])
      section.append(picture.figure);
    const finder = new Finder(adapter, number);
    finders.push(finder);
    const figure = make("figure", {}, finder.element);
    section.append(figure);
  });

  const range = document.getElementById("range");
  listeners.push(() => {
    range.textContent = `${clock(shown.min)} to ${clock(shown.max)}`;
    for (const picture of charts) picture.follow();
  });
  for (const button of document.querySelectorAll("[data-do]"))
    button.addEventListener("click", ACTIONS[button.dataset.do]);

  document.addEventListener("keydown", (event) => {
    if (event.target.closest("input, textarea") || event.ctrlKey || event.metaKey || event.altKey) return;
    const section = event.target.closest(".adapter");
    const finder = finders[section ? [...document.querySelectorAll(".adapter")].indexOf(section) : 0];
    const act = { "+": ACTIONS.in, "=": ACTIONS.in, "-": ACTIONS.out, 0: ACTIONS.all, Home: ACTIONS.all,
      ArrowLeft: ACTIONS.earlier, ArrowRight: ACTIONS.later, n: () => finder?.step(1), p: () => finder?.step(-1) }[event.key];
    if (!act) return;
    event.preventDefault();
    act();
  });
  main.addEventListener("wheel", (event) => {
    const picture = charts.find((c) => c.chart && c.chart.over.contains(event.target));
    if (!picture || !(event.ctrlKey || event.shiftKey)) return;
    event.preventDefault();
    const box = picture.chart.over.getBoundingClientRect();
    if (event.shiftKey) pan(Math.sign(event.deltaY || event.deltaX) * 0.1);
    else zoom(event.deltaY > 0 ? 1.25 : 0.8, picture.chart.posToVal(event.clientX - box.left, "x"));
  }, { passive: false });

  const drawAll = () => charts.forEach((picture) => picture.draw());
  drawAll();
  for (const listener of listeners) listener();
  matchMedia("(prefers-color-scheme: dark)").addEventListener("change", drawAll);
  let width = innerWidth;
  addEventListener("resize", () => {
    if (innerWidth === width) return;
    width = innerWidth;
    requestAnimationFrame(drawAll);
  });
  document.documentElement.dataset.ready = "yes";
})();
