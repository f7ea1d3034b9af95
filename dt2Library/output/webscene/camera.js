// ---- the camera: looks at a target from a heading, a pitch and a distance --------------------------------------------
//
// Everything is in the units of the data; z is drawn times this.scale, which holds the exaggeration.

class Camera {
  constructor(halfSize) {
    this.halfSize = halfSize; // of the surface's box
    this.scale = 1;
    this.aspect = 1;
    this.lens = 1 / Math.tan(16 * Math.PI / 180);
    this.target = [0, 0, 0];
    this.heading = 0; // clockwise from north
    this.pitch = 0.7; // downwards
    this.distance = 3;
  }

  axes() {
    const ch = Math.cos(this.heading), sh = Math.sin(this.heading), cp = Math.cos(this.pitch), sp = Math.sin(this.pitch);
    return { right: [ch, -sh, 0], up: [sh * sp, ch * sp, cp], forward: [sh * cp, ch * cp, -sp] };
  }

  /// By columns, for points relative to the target with z drawn to scale.
  matrix() {
    const { right, up, forward } = this.axes(), sx = this.lens / this.aspect, sy = this.lens;
    const reach = Math.hypot(...this.halfSize.map((h, k) => 2 * h * (k === 2 ? this.scale : 1))) + Math.hypot(...this.target);
    const far = this.distance + 2 * reach, near = Math.max(this.distance * 0.02, far * 1e-5);
    const za = (far + near) / (far - near), zb = -2 * far * near / (far - near);
    const column = (k) => [sx * right[k], sy * up[k], za * forward[k], forward[k]];
    return new Float32Array([...column(0), ...column(1), ...column(2), 0, 0, za * this.distance + zb, this.distance]);
  }

  /// The ray through a position in the window, both from -1 to 1, in the space of the data.
  ray(x, y) {
    const { right, up, forward } = this.axes();
    const origin = forward.map((f) => -this.distance * f);
    const direction = forward.map((f, k) => f + x * this.aspect / this.lens * right[k] + y / this.lens * up[k]);
    origin[2] /= this.scale;
    direction[2] /= this.scale;
    return { origin: origin.map((o, k) => o + this.target[k]), direction };
  }

  /// Where a point of the data appears in the window.
  project(point) {
    const { right, up, forward } = this.axes();
    const p = minus(point, this.target);
    p[2] *= this.scale;
    const depth = dot(forward, p) + this.distance;
    return [this.lens / this.aspect * dot(right, p) / depth, this.lens * dot(up, p) / depth, depth];
  }

  /// Moves so that the points fill the window, but for margins in its units of -1 to 1: left, right, bottom, top.
  fit(points, [left, right, bottom, top]) {
    this.target = [0, 0, 0];
    this.distance = 4 + 4 * this.scale * this.halfSize[2]; // from here nothing lies behind the camera
    for (let i = 0; i < 12; ++i) {
      const low = [Infinity, Infinity], high = [-Infinity, -Infinity];
      for (const point of points) {
        const place = this.project(point);
        for (const k of [0, 1]) {
          low[k] = Math.min(low[k], place[k]);
          high[k] = Math.max(high[k], place[k]);
        }
      }
      const x = (low[0] + high[0]) / 2 - (left - right) / 2, y = (low[1] + high[1]) / 2 - (bottom - top) / 2;
      const fill = Math.max((high[0] - low[0]) / (2 - left - right), (high[1] - low[1]) / (2 - bottom - top));
      const { right: toRight, up } = this.axes();
      for (const k of [0, 1, 2]) {
        const step = (x * this.aspect * toRight[k] + y * up[k]) * this.distance / this.lens;
        this.target[k] += k === 2 ? step / this.scale : step;
      }
      this.distance *= clamp(fill, 0.3, 3);
    }
  }

  turn(heading, pitch) {
    this.heading = (this.heading + heading) % (2 * Math.PI);
    this.pitch = Math.min(Math.PI / 2, Math.max(0.03, this.pitch + pitch));
  }

  /// Brings the camera closer to a point, or farther from it, which stays where it is in the window.
  zoom(factor, point) {
    const distance = Math.min(50, Math.max(1e-4, this.distance * factor));
    const k = distance / this.distance;
    this.target = this.target.map((t, i) => point[i] + (t - point[i]) * k);
    this.distance = distance;
  }

  /// Where a ray meets the level plane through a height; null at the horizon.
  onLevel(x, y, z) {
    const { origin, direction } = this.ray(x, y), s = (z - origin[2]) / direction[2];
    return s > 0 && s < 8 * this.distance ? origin.map((o, k) => o + s * direction[k]) : null;
  }

  /// Moves so that the point under one position of the window comes under another.
  pan(fromX, fromY, toX, toY, z) {
    const from = this.onLevel(fromX, fromY, z), to = this.onLevel(toX, toY, z);
    if (!from || !to) return;
    this.target[0] += from[0] - to[0];
    this.target[1] += from[1] - to[1];
  }

  state() { return { target: [...this.target], heading: this.heading, pitch: this.pitch, distance: this.distance }; }

  /// Between two states, from 0 to 1; the heading goes the shorter way round.
  between(a, b, f) {
    const turn = ((b.heading - a.heading) % (2 * Math.PI) + 3 * Math.PI) % (2 * Math.PI) - Math.PI;
    this.heading = a.heading + f * turn;
    this.pitch = a.pitch + f * (b.pitch - a.pitch);
    this.distance = a.distance * Math.pow(b.distance / a.distance, f);
    this.target = a.target.map((t, k) => t + f * (b.target[k] - t));
  }
}
