// ---- the data: blocks of base64 in the page, made typed arrays -------------------------------------------------------
//
// Coordinates are kept as floats relative to a centre and in units that make them lie within -1 and 1:
// x = centre[0] + unitXY * p[0], and so on. The centre and the units are doubles, so that survey coordinates lose nothing
// that counts.

const head = JSON.parse(document.getElementById("head").textContent);

const sextets = new Uint8Array(128);
[..."ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"].forEach((c, i) => { sextets[c.charCodeAt(0)] = i; });

function decodedSize(text) {
  return text.length / 4 * 3 - (text.endsWith("==") ? 2 : text.endsWith("=") ? 1 : 0);
}

function decodeInto(text, bytes, at) {
  const end = at + decodedSize(text);
  for (let i = 0; at < end; i += 4) {
    const bits = sextets[text.charCodeAt(i)] << 18 | sextets[text.charCodeAt(i + 1)] << 12 |
      sextets[text.charCodeAt(i + 2)] << 6 | sextets[text.charCodeAt(i + 3)];
    bytes[at++] = bits >> 16;
    if (at < end) bytes[at++] = bits >> 8;
    if (at < end) bytes[at++] = bits;
  }
  return end;
}

/// Joins the blocks of a name; their text leaves the page, so that it isn't in memory twice.
function takeBlocks(name, ArrayType) {
  const blocks = [...document.querySelectorAll(`script[data-block="${name}"]`)];
  const bytes = new Uint8Array(blocks.reduce((sum, block) => sum + decodedSize(block.textContent), 0));
  let at = 0;
  for (const block of blocks) {
    at = decodeInto(block.textContent, bytes, at);
    block.remove();
  }
  return new ArrayType(bytes.buffer);
}

function loadMesh() {
  return {
    positions: takeBlocks("positions", Float32Array),
    triangles: takeBlocks("triangles", Uint32Array),
    border: takeBlocks("border", Uint32Array),
    constraints: takeBlocks("constraints", Uint32Array),
    zones: head.zones.map((zone, i) => ({
      ...zone,
      members: takeBlocks(`zone${i}`, Uint32Array),
      border: takeBlocks(`zone${i}border`, Uint32Array),
      visible: true,
    })),
  };
}

/// The upward normals of the vertices, without exaggeration: x and y of the unit vector as 16-bit integers. Triangles count
/// by their area.
function vertexNormals(mesh) {
  const p = mesh.positions, t = mesh.triangles, steepness = head.unitZ / head.unitXY;
  const sums = new Float32Array(p.length);
  for (let i = 0; i < t.length; i += 3) {
    const a = 3 * t[i], b = 3 * t[i + 1], c = 3 * t[i + 2];
    const ux = p[b] - p[a], uy = p[b + 1] - p[a + 1], uz = (p[b + 2] - p[a + 2]) * steepness;
    const vx = p[c] - p[a], vy = p[c + 1] - p[a + 1], vz = (p[c + 2] - p[a + 2]) * steepness;
    const nx = uy * vz - uz * vy, ny = uz * vx - ux * vz, nz = ux * vy - uy * vx;
    for (const v of [a, b, c]) {
      sums[v] += nx;
      sums[v + 1] += ny;
      sums[v + 2] += nz;
    }
  }
  const normals = new Int16Array(p.length / 3 * 2);
  for (let v = 0, n = 0; v < p.length; v += 3, n += 2) {
    const length = Math.hypot(sums[v], sums[v + 1], sums[v + 2]) || 1;
    normals[n] = Math.round(sums[v] / length * 32767);
    normals[n + 1] = Math.round(sums[v + 1] / length * 32767);
  }
  return normals;
}

/// The ends of all edges, each once: of the two directions of an inner edge only one ascends; the border has its own list.
function edgesOf(mesh) {
  const t = mesh.triangles, edges = new Uint32Array(t.length + mesh.border.length);
  let n = 0;
  for (let i = 0; i < t.length; i += 3) {
    const a = t[i], b = t[i + 1], c = t[i + 2];
    if (a < b) { edges[n++] = a; edges[n++] = b; }
    if (b < c) { edges[n++] = b; edges[n++] = c; }
    if (c < a) { edges[n++] = c; edges[n++] = a; }
  }
  for (let i = 0; i < mesh.border.length; i += 2) {
    if (mesh.border[i] < mesh.border[i + 1]) continue;
    edges[n++] = mesh.border[i];
    edges[n++] = mesh.border[i + 1];
  }
  return edges.subarray(0, n);
}

/// The coordinates of both ends of each pair of vertices.
function segmentsOf(mesh, pairs) {
  const coords = new Float32Array(3 * pairs.length);
  for (let i = 0; i < pairs.length; ++i) {
    for (let k = 0; k < 3; ++k) coords[3 * i + k] = mesh.positions[3 * pairs[i] + k];
  }
  return coords;
}

/// Some of the vertices, spread over all of them: for what need not be exact.
function sampleOf(mesh, n) {
  const p = mesh.positions, t = mesh.triangles, step = Math.max(1, Math.floor(t.length / n)), sample = [];
  for (let i = 0; i < t.length; i += step) sample.push([p[3 * t[i]], p[3 * t[i] + 1], p[3 * t[i] + 2]]);
  for (let i = 0; i < mesh.border.length; i += 2) sample.push([0, 1, 2].map((k) => p[3 * mesh.border[i] + k]));
  return sample;
}

function trianglesOfZone(mesh, zone) {
  const corners = new Uint32Array(3 * zone.members.length);
  zone.members.forEach((t, i) => {
    for (let k = 0; k < 3; ++k) corners[3 * i + k] = mesh.triangles[3 * t + k];
  });
  return corners;
}
