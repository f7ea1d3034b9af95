// ---- what lies under the pointer -------------------------------------------------------------------------------------
//
// A tree of boxes over the triangles in the order of the page, in which neighbours in the order are neighbours on the
// ground: so nothing needs sorting. Level 0 has a box for each 4 triangles, each further level one for 4 boxes below.

class Picker {
  constructor(mesh) {
    this.mesh = mesh;
    this.levels = [this.leafBoxes()];
    while (this.levels[this.levels.length - 1].length > 6) {
      this.levels.push(this.boxesAbove(this.levels[this.levels.length - 1]));
    }
  }

  static emptyBoxes(n) {
    const boxes = new Float32Array(6 * n);
    for (let i = 0; i < boxes.length; i += 6) {
      boxes.fill(Infinity, i, i + 3);
      boxes.fill(-Infinity, i + 3, i + 6);
    }
    return boxes;
  }

  leafBoxes() {
    const { positions: p, triangles: t } = this.mesh;
    const boxes = Picker.emptyBoxes(Math.ceil(t.length / 12));
    for (let i = 0, box = 0; i < t.length; box += 6) {
      for (const end = Math.min(i + 12, t.length); i < end; ++i) Picker.widen(boxes, box, p, 3 * t[i], 3 * t[i]);
    }
    return boxes;
  }

  boxesAbove(below) {
    const boxes = Picker.emptyBoxes(Math.ceil(below.length / 24));
    for (let i = 0, box = 0; i < below.length; box += 6) {
      for (const end = Math.min(i + 24, below.length); i < end; i += 6) Picker.widen(boxes, box, below, i, i + 3);
    }
    return boxes;
  }

  /// Makes a box hold the range between two triples of an array.
  static widen(boxes, box, values, low, high) {
    for (let k = 0; k < 3; ++k) {
      if (values[low + k] < boxes[box + k]) boxes[box + k] = values[low + k];
      if (values[high + k] > boxes[box + 3 + k]) boxes[box + 3 + k] = values[high + k];
    }
  }

  /// The first point of the surface on a ray: { point, triangle }, or null.
  pick(origin, direction) {
    const ray = { origin, inverse: direction.map((d) => 1 / d), direction };
    let best = null, bestS = Infinity;
    const stack = [[this.levels.length - 1, 0]];
    while (stack.length > 0) {
      const [level, index] = stack.pop();
      if (Picker.enterBox(ray, this.levels[level], 6 * index) >= bestS) continue;
      if (level > 0) {
        const below = this.levels[level - 1], children = [];
        for (let child = 4 * index; child < Math.min(4 * index + 4, below.length / 6); ++child) {
          const s = Picker.enterBox(ray, below, 6 * child);
          if (s < bestS) children.push([s, child]);
        }
        children.sort((a, b) => b[0] - a[0]); // the nearest comes off the stack first
        for (const [, child] of children) stack.push([level - 1, child]);
        continue;
      }
      for (let t = 4 * index; t < Math.min(4 * index + 4, this.mesh.triangles.length / 3); ++t) {
        const s = this.hitTriangle(ray, t);
        if (s < bestS) {
          bestS = s;
          best = t;
        }
      }
    }
    return best === null ? null : { point: origin.map((o, k) => o + bestS * direction[k]), triangle: best };
  }

  /// Where the ray enters a box; infinite if it misses.
  static enterBox({ origin, inverse }, boxes, at) {
    let enter = 0, leave = Infinity;
    for (let k = 0; k < 3; ++k) {
      const s0 = (boxes[at + k] - origin[k]) * inverse[k], s1 = (boxes[at + 3 + k] - origin[k]) * inverse[k];
      // 0 times infinity, on the side of a box, is no bound
      if (s0 === s0 && s1 === s1) {
        enter = Math.max(enter, Math.min(s0, s1));
        leave = Math.min(leave, Math.max(s0, s1));
      }
    }
    return enter <= leave * (1 + 1e-12) ? enter : Infinity;
  }

  corners(t) {
    const { positions: p, triangles } = this.mesh;
    return [0, 1, 2].map((i) => [0, 1, 2].map((k) => p[3 * triangles[3 * t + i] + k]));
  }

  hitTriangle({ origin, direction: d }, t) {
    const [a, b, c] = this.corners(t);
    const u = minus(b, a), v = minus(c, a), n = cross(u, v), slant = dot(n, d);
    if (slant === 0) return Infinity;
    const w = minus(origin, a), s = -dot(n, w) / slant;
    if (!(s > 0)) return Infinity;
    const m = cross(w, d), beta = -dot(v, m) / slant, gamma = dot(u, m) / slant;
    const slack = -1e-9; // so that no ray slips through between two triangles
    return beta >= slack && gamma >= slack && beta + gamma <= 1 - slack ? s : Infinity;
  }

  /// The slope of a triangle, in degrees.
  slope(t) {
    const [a, b, c] = this.corners(t).map(([x, y, z]) => [x, y, z * head.unitZ / head.unitXY]);
    const n = cross(minus(b, a), minus(c, a));
    return Math.atan2(Math.hypot(n[0], n[1]), n[2]) * 180 / Math.PI;
  }
}

function minus(a, b) { return [a[0] - b[0], a[1] - b[1], a[2] - b[2]]; }
function dot(a, b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
function cross(a, b) { return [a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]]; }
