// ---- the page around the picture ---------------------------------------------------------------------------------------

const HEIGHT_RAMP = ["#3f6f5a", "#6f9a68", "#a9b878", "#d8cb93", "#c9a26c", "#a9764f", "#8f6a5e", "#c9bfba", "#f3f1ee"];
const SLOPE_RAMP = ["#e9ece6", "#f1e3a8", "#f0b65f", "#dd7a3e", "#b3413a", "#6d2243"];
const ZONE_COLORS = ["#2f7ed8", "#e07b00", "#7b4fc9", "#0a9a86", "#d6336c", "#8a9a00", "#5c6f82", "#b5482a"];
const THEMES = {
  light: { background: "#eef0f1", plain: "#d2d0cb", border: "#3a4248" },
  dark: { background: "#14181b", plain: "#a3a7ab", border: "#8d979e" },
};

const element = (id) => document.getElementById(id);
const clamp = (value, low, high) => Math.min(high, Math.max(low, value));

/// 1, 2 or 5 times a power of ten, not below a length.
function niceStep(length) {
  const power = Math.pow(10, Math.floor(Math.log10(length)));
  return [1, 2, 5, 10].find((m) => m * power >= length * (1 - 1e-9)) * power;
}

/// How many decimals make sense for numbers within a range.
function decimalsFor(range) {
  if (!(range > 0)) return 2;
  return range >= 1 ? clamp(7 - Math.ceil(Math.log10(range)), 0, range >= 10 ? 2 : 3) : Math.min(12, 3 - Math.floor(Math.log10(range)));
}

function formatNumber(value, decimals) {
  if (Math.abs(value) >= 1e15) return value.toExponential(9);
  const [whole, fraction] = Math.abs(value).toFixed(decimals).split(".");
  const grouped = whole.replace(/\B(?=(\d{3})+$)/g, "\u202f") + (fraction ? `.${fraction}` : "");
  return value < 0 && /[1-9]/.test(grouped) ? `\u2212${grouped}` : grouped;
}

function showMessage(text) {
  element("message").textContent = text;
  element("message").hidden = text === "";
}

class Page {
  constructor() {
    this.mesh = loadMesh();
    this.mesh.zones.forEach((zone, i) => { zone.color = parseColor(ZONE_COLORS[i % ZONE_COLORS.length]); });
    const normals = vertexNormals(this.mesh);
    this.canvas = element("view");
    this.renderer = new Renderer(this.canvas, this.mesh, normals);
    this.camera = new Camera(head.halfSize);
    this.sample = sampleOf(this.mesh, 3000);
    this.bold = this.contourInterval() * 5;
    this.look = { shading: "height", contours: false, edges: false, facets: false, constraints: true };
    this.slopeLimit = this.steepest(normals);
    this.pointers = new Map();
    this.exaggeration = this.suggestedExaggeration();
  }

  // ---- figures of the surface

  range() { return 2 * head.halfSize[2] * head.unitZ; }
  minHeight() { return head.center[2] - this.range() / 2; }
  extent() { return 2 * Math.max(head.halfSize[0], head.halfSize[1]) * head.unitXY; }
  contourInterval() { return niceStep((this.range() || 1) / 25); }

  /// As steep as looks natural: at its highest the relief is a tenth of the extent.
  suggestedExaggeration() {
    const most = 0.1 * this.extent() / this.range();
    return [100, 50, 30, 20, 15, 10, 8, 5, 3, 2, 1.5].find((e) => e <= most) || 1;
  }

  /// The slope that but few vertices exceed, in round degrees.
  steepest(normals) {
    const slopes = [], step = 2 * Math.ceil(normals.length / 40000);
    for (let i = 0; i < normals.length; i += step) {
      slopes.push(Math.asin(Math.min(1, Math.hypot(normals[i], normals[i + 1]) / 32767)) * 180 / Math.PI);
    }
    const high = slopes.sort((a, b) => a - b)[Math.floor(slopes.length * 0.99)] || 0;
    return [5, 10, 20, 30, 45, 60].find((limit) => high <= limit) || 90;
  }

  // ---- drawing

  start() {
    if (!this.renderer.gl) return showMessage("This browser offers no WebGL 2, which the picture needs.");
    if (this.mesh.triangles.length === 0) return showMessage("No triangle has a height at all of its corners.");
    showMessage("");
    this.camera.pitch = 0.62;
    this.camera.heading = -0.42;
    this.setUpTexts();
    this.setUpControls();
    this.setUpPointer();
    this.setUpKeys();
    this.setTheme(matchMedia("(prefers-color-scheme: dark)").matches ? "dark" : "light");
    this.setExaggeration(this.exaggeration);
    this.fitNow();
    new ResizeObserver(() => this.invalidate()).observe(this.canvas);
    this.canvas.addEventListener("webglcontextlost", (event) => event.preventDefault());
    this.canvas.addEventListener("webglcontextrestored", () => { this.renderer.build(); this.invalidate(); });
    return undefined;
  }

  invalidate() {
    if (this.waiting) return;
    this.waiting = true;
    requestAnimationFrame(() => {
      this.waiting = false;
      this.step();
      this.renderer.draw(this.camera, this.fullLook());
      element("needle").setAttribute("transform", `rotate(${-this.camera.heading * 180 / Math.PI})`);
      this.readOut();
    });
  }

  fullLook() {
    const theme = THEMES[this.theme], shading = this.look.shading;
    const interval = this.contourInterval();
    const pixelsPerUnit = this.camera.lens / this.camera.distance * this.canvas.clientHeight / 2;
    const edgeLength = Math.sqrt(8 * head.halfSize[0] * head.halfSize[1] / (this.mesh.triangles.length / 3));
    return {
      ...this.look,
      background: parseColor(theme.background),
      plainColor: parseColor(theme.plain),
      // Where edges lie close together, they are drawn faintly.
      edgeColor: [0.06, 0.08, 0.1, clamp(edgeLength * pixelsPerUnit / 16, 0.05, 0.5)],
      borderColor: [...parseColor(theme.border), 0.8],
      constraintColor: [...parseColor("#a80f45"), 1],
      constraintCasing: [1, 1, 1, 0.5],
      contourColor: [0.16, 0.1, 0.05, shading === "plain" ? 0.75 : 0.55],
      ramp: shading === "slope" ? SLOPE_RAMP : HEIGHT_RAMP,
      exaggeration: this.exaggeration,
      halfHeight: Math.max(head.halfSize[2], 1e-30),
      interval: interval / head.unitZ,
      level: (Math.floor(head.center[2] / this.bold) * this.bold - head.center[2]) / head.unitZ,
      slopeLimit: this.slopeLimit,
    };
  }

  /// Moves the camera on its way, if it is under way.
  step() {
    if (!this.journey) return;
    const { from, to, since } = this.journey, f = Math.min(1, (performance.now() - since) / 350);
    this.camera.between(from, to, f * f * (3 - 2 * f));
    if (f === 1) this.journey = null;
    else this.invalidate();
  }

  goTo(to) {
    const still = matchMedia("(prefers-reduced-motion: reduce)").matches;
    this.journey = { from: this.camera.state(), to, since: still ? -Infinity : performance.now() };
    this.invalidate();
  }

  fitted(heading, pitch) {
    const before = this.camera.state();
    Object.assign(this.camera, { heading, pitch });
    this.camera.aspect = this.canvas.clientWidth / Math.max(1, this.canvas.clientHeight);
    this.camera.fit(this.sample, this.margins());
    const to = this.camera.state();
    Object.assign(this.camera, before);
    return to;
  }

  /// What the cards cover of the window, in units of its half width and height.
  margins() {
    const { clientWidth: width, clientHeight: height } = this.canvas, wide = width > 900 && !element("controls").hidden;
    const left = wide ? element("panel").getBoundingClientRect().right : 0, bottom = wide ? 30 : 60;
    return [2 * left / width + 0.06, wide ? 0.2 : 0.06, 2 * bottom / height + 0.04, wide ? 0.1 : 2 * 50 / height];
  }

  fitNow() {
    Object.assign(this.camera, this.fitted(this.camera.heading, this.camera.pitch));
    this.invalidate();
  }

  // ---- texts and legend

  setUpTexts() {
    const title = head.title || "Surface";
    document.title = title;
    element("title").textContent = title;
    const n = this.mesh.triangles.length / 3, missing = head.numTriangles - n;
    const decimals = decimalsFor(this.range());
    element("counts").textContent = `${formatNumber(head.numVertices, 0)} points\n${formatNumber(n, 0)} triangles\n` +
      `heights ${formatNumber(this.minHeight(), decimals)} to ${formatNumber(this.minHeight() + this.range(), decimals)} ${head.unit}` +
      (missing > 0 ? `\n${formatNumber(missing, 0)} triangles without height left out` : "");
    element("interval").textContent = `${formatNumber(this.contourInterval(), this.stepDecimals(this.contourInterval()))} ${head.unit}`;
    element("constraintsCount").textContent = formatNumber(this.mesh.constraints.length / 2, 0);
    element("constraintsRow").hidden = this.mesh.constraints.length === 0;
  }

  stepDecimals(step) { return clamp(-Math.floor(Math.log10(step) + 1e-9), 0, 12); }

  drawLegend() {
    const slope = this.look.shading === "slope", low = slope ? 0 : this.minHeight();
    const range = slope ? this.slopeLimit : this.range(), ticks = element("ticks");
    element("legend").hidden = this.look.shading === "plain";
    element("legendTitle").textContent = slope ? "Slope (\u00b0)" : `Height (${head.unit})`;
    element("bar").style.background = `linear-gradient(to top, ${(slope ? SLOPE_RAMP : HEIGHT_RAMP).join()})`;
    ticks.textContent = "";
    const step = range > 0 ? niceStep(range / 6) : 1, decimals = this.stepDecimals(step);
    let widest = 0;
    for (let i = Math.ceil(low / step - 1e-9); i * step <= low + range + 1e-9 * step; ++i) {
      const tick = document.createElement("span");
      tick.textContent = formatNumber(i * step, decimals);
      tick.style.bottom = `${range > 0 ? (i * step - low) / range * 100 : 50}%`;
      ticks.append(tick);
      widest = Math.max(widest, tick.offsetWidth);
    }
    ticks.style.width = `${widest}px`;
  }

  // ---- controls

  setUpControls() {
    for (const input of document.querySelectorAll("input[name=shading]")) {
      input.addEventListener("change", () => this.setShading(input.value));
    }
    for (const id of ["contours", "edges", "facets", "constraints"]) {
      element(id).checked = this.look[id]; // a reload may have kept another state
      element(id).addEventListener("change", (event) => { this.look[id] = event.target.checked; this.invalidate(); });
    }
    element("exaggeration").addEventListener("input", (event) => {
      const e = Math.exp(Number(event.target.value) * Math.log(this.maxExaggeration() / 0.5)) * 0.5;
      this.setExaggeration(Number(e.toPrecision(2)));
    });
    element("top").addEventListener("click", () => this.viewFromTop());
    element("fit").addEventListener("click", () => this.goTo(this.fitted(-0.42, 0.62)));
    element("north").addEventListener("click", () => this.goTo({ ...this.camera.state(), heading: 0 }));
    element("theme").addEventListener("click", () => this.setTheme(this.theme === "dark" ? "light" : "dark"));
    element("fold").addEventListener("click", () => this.fold());
    element("help").addEventListener("click", () => this.toggleHelp());
    this.setUpZones();
    if (innerWidth < 620 || innerHeight < 440) this.fold();
    this.setShading("height");
  }

  setUpZones() {
    element("zones").hidden = this.mesh.zones.length === 0;
    this.mesh.zones.forEach((zone, i) => {
      const label = document.createElement("label"), input = document.createElement("input");
      const name = document.createElement("span"), area = document.createElement("em");
      Object.assign(input, { type: "checkbox", checked: true });
      input.style.accentColor = ZONE_COLORS[i % ZONE_COLORS.length];
      input.addEventListener("change", () => { zone.visible = input.checked; this.invalidate(); });
      name.textContent = `Zone ${i + 1}`;
      area.textContent = this.formatArea(zone.area);
      label.append(input, name, area);
      element("zones").append(label);
    });
  }

  formatArea(area) {
    if (head.unit === "m" && area >= 1e6) return `${formatNumber(area * 1e-6, 3)} km\u00b2`;
    return `${formatNumber(area, area < 100 ? 2 : 0)} ${head.unit}\u00b2`;
  }

  setShading(shading) {
    this.look.shading = shading;
    document.querySelector(`input[name=shading][value=${shading}]`).checked = true;
    this.drawLegend();
    this.invalidate();
  }

  maxExaggeration() { return Math.max(20, 4 * this.suggestedExaggeration()); }

  setExaggeration(e) {
    this.exaggeration = clamp(e, 0.5, this.maxExaggeration());
    this.camera.scale = this.exaggeration * head.unitZ / head.unitXY;
    element("exaggeration").value = Math.log(this.exaggeration / 0.5) / Math.log(this.maxExaggeration() / 0.5);
    element("factor").textContent = `${this.exaggeration}\u00d7`;
    this.invalidate();
  }

  setTheme(theme) {
    this.theme = theme;
    document.documentElement.classList.toggle("dark", theme === "dark");
    element("theme").textContent = theme === "dark" ? "Light" : "Dark";
    this.invalidate();
  }

  fold() {
    element("controls").hidden = !element("controls").hidden;
    element("fold").setAttribute("aria-expanded", String(!element("controls").hidden));
  }

  toggleHelp() {
    element("keys").hidden = !element("keys").hidden;
    element("help").setAttribute("aria-expanded", String(!element("keys").hidden));
  }

  viewFromTop() { this.goTo(this.fitted(0, Math.PI / 2)); }

  // ---- mouse, touch, keys

  setUpPointer() {
    const canvas = this.canvas;
    canvas.addEventListener("contextmenu", (event) => event.preventDefault());
    canvas.addEventListener("pointerdown", (event) => this.pointerDown(event));
    canvas.addEventListener("pointermove", (event) => this.pointerMove(event));
    for (const type of ["pointerup", "pointercancel"]) canvas.addEventListener(type, (event) => this.pointerUp(event));
    canvas.addEventListener("pointerleave", () => { if (this.pointers.size === 0) this.hover(null); });
    canvas.addEventListener("wheel", (event) => this.wheel(event), { passive: false });
  }

  /// A position of an event in the window, from -1 to 1.
  place({ clientX, clientY }) {
    const box = this.canvas.getBoundingClientRect();
    return [(clientX - box.left) / box.width * 2 - 1, 1 - (clientY - box.top) / box.height * 2];
  }

  pickAt([x, y]) {
    this.picker = this.picker || new Picker(this.mesh);
    const { origin, direction } = this.camera.ray(x, y);
    return this.picker.pick(origin, direction);
  }

  pointerDown(event) {
    this.journey = null;
    try {
      this.canvas.setPointerCapture(event.pointerId);
    } catch {
      // a pointer that has gone already
    }
    this.canvas.focus({ preventScroll: true });
    this.pointers.set(event.pointerId, this.place(event));
    const hit = this.pickAt(this.center());
    this.grabbed = hit ? hit.point[2] : this.camera.target[2];
    this.panning = event.button !== 0 || event.shiftKey || event.ctrlKey;
    this.canvas.classList.add("dragging");
    this.hover(this.place(event));
  }

  /// The middle of the pointers that are down.
  center() {
    const all = [...this.pointers.values()];
    return [0, 1].map((k) => all.reduce((sum, p) => sum + p[k], 0) / all.length);
  }

  pointerMove(event) {
    const to = this.place(event), from = this.pointers.get(event.pointerId);
    this.hover(to);
    if (!from) return;
    const before = this.center(), [spread, angle] = this.pinch();
    this.pointers.set(event.pointerId, to);
    if (this.pointers.size === 1) {
      if (this.panning) this.camera.pan(...from, ...to, this.grabbed);
      else this.camera.turn((to[0] - from[0]) * 2.2 * Math.min(1, this.camera.aspect), (from[1] - to[1]) * 1.3);
    } else {
      const after = this.center(), [newSpread, newAngle] = this.pinch();
      this.camera.pan(...before, ...after, this.grabbed);
      const point = this.camera.onLevel(...after, this.grabbed);
      if (point && newSpread > 0) this.camera.zoom(spread / newSpread, point);
      this.camera.turn(Math.atan2(Math.sin(newAngle - angle), Math.cos(newAngle - angle)), 0);
    }
    this.invalidate();
  }

  /// How far two pointers are apart, and in which direction.
  pinch() {
    const [a, b] = [...this.pointers.values()];
    if (!b) return [0, 0];
    const dx = (b[0] - a[0]) * this.camera.aspect, dy = b[1] - a[1];
    return [Math.hypot(dx, dy), Math.atan2(dy, dx)];
  }

  pointerUp(event) {
    this.pointers.delete(event.pointerId);
    if (this.pointers.size === 0) this.canvas.classList.remove("dragging");
  }

  wheel(event) {
    event.preventDefault();
    const lines = event.deltaMode === 1 ? 30 : event.deltaMode === 2 ? 400 : 1;
    const delta = clamp(event.deltaY * lines * (event.ctrlKey ? 5 : 1), -400, 400);
    const place = this.place(event);
    this.zoomAt(place, Math.exp(delta * 0.0016));
    this.hover(place);
  }

  zoomAt(place, factor) {
    this.journey = null;
    const hit = this.pickAt(place), point = hit ? hit.point : this.camera.onLevel(...place, this.camera.target[2]);
    this.camera.zoom(factor, point || this.camera.target);
    this.invalidate();
  }

  hover(place) {
    this.hovered = place;
    this.invalidate();
  }

  readOut() {
    const hit = this.hovered && this.pickAt(this.hovered);
    element("readout").hidden = !hit;
    element("marker").hidden = !hit;
    if (!hit) return;
    const [x, y, z] = hit.point.map((p, k) => head.center[k] + p * (k === 2 ? head.unitZ : head.unitXY));
    const slope = this.picker.slope(hit.triangle), decimals = decimalsFor(this.extent());
    element("readX").textContent = formatNumber(x, decimals);
    element("readY").textContent = formatNumber(y, decimals);
    element("readZ").textContent = `${formatNumber(z, decimalsFor(this.range()))} ${head.unit}`;
    element("readSlope").textContent = `${slope.toFixed(1)}\u00b0`;
    const level = this.look.shading === "slope" ? slope / this.slopeLimit : this.range() > 0 ? (z - this.minHeight()) / this.range() : 0.5;
    element("marker").style.bottom = `${clamp(level, 0, 1) * 100}%`;
  }

  setUpKeys() {
    const turn = (heading, pitch) => () => { this.journey = null; this.camera.turn(heading, pitch); this.invalidate(); };
    const pan = (x, y) => () => { this.journey = null; this.camera.pan(0, 0, x, y, this.camera.target[2]); this.invalidate(); };
    const press = (id) => () => element(id).click();
    const actions = {
      ArrowLeft: turn(0.08, 0), ArrowRight: turn(-0.08, 0), ArrowUp: turn(0, 0.06), ArrowDown: turn(0, -0.06),
      "shift ArrowLeft": pan(0.1, 0), "shift ArrowRight": pan(-0.1, 0), "shift ArrowUp": pan(0, -0.1), "shift ArrowDown": pan(0, 0.1),
      "+": () => this.zoomAt([0, 0], 0.8), "=": () => this.zoomAt([0, 0], 0.8), "-": () => this.zoomAt([0, 0], 1.25),
      "[": () => this.setExaggeration(Number((this.exaggeration / 1.25).toPrecision(2))),
      "]": () => this.setExaggeration(Number((this.exaggeration * 1.25).toPrecision(2))),
      h: () => this.setShading("height"), s: () => this.setShading("slope"), p: () => this.setShading("plain"),
      c: press("contours"), w: press("edges"), f: press("facets"), l: press("constraints"),
      t: press("top"), n: press("north"), r: press("fit"), d: press("theme"), m: press("fold"), "?": press("help"),
    };
    addEventListener("keydown", (event) => {
      if (event.ctrlKey || event.metaKey || event.altKey) return;
      const arrow = event.key.startsWith("Arrow");
      if (arrow && event.target instanceof HTMLInputElement) return; // it moves the slider or the choice
      const action = actions[arrow ? (event.shiftKey ? `shift ${event.key}` : event.key) : event.key.length === 1 ? event.key.toLowerCase() : ""];
      if (!action) return;
      event.preventDefault();
      action();
    });
  }
}

// Not at once: the notice of loading is to be painted before the work begins.
setTimeout(() => new Page().start(), 30);
