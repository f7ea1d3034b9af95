// ---- drawing -----------------------------------------------------------------------------------------------------------

const SURFACE_VERTEX = `#version 300 es
layout(location = 0) in vec3 position;
layout(location = 1) in vec2 normalXY;
uniform mat4 camera;
uniform vec3 target;
uniform float scale;
out vec3 world;
out vec2 normal;
out float height;
void main() {
  world = (position - target) * vec3(1.0, 1.0, scale);
  normal = normalXY;
  height = position.z;
  gl_Position = camera * vec4(world, 1.0);
}`;

const SURFACE_FRAGMENT = `#version 300 es
precision highp float;
in vec3 world;
in vec2 normal;
in float height;
uniform sampler2D ramp;
uniform int shading;        // 0 height, 1 slope, 2 plain, 3 one colour
uniform vec4 color;         // of plain and of one colour
uniform bool facets;
uniform float exaggeration;
uniform float halfHeight;
uniform float interval;     // of contours, in the units of height; 0 for none
uniform float level;        // the height of a bold contour
uniform vec4 contourColor;
uniform float slopeLimit;   // where the ramp ends, in degrees
out vec4 pixel;

// Gradient of the surface without exaggeration.
vec2 gradientHere() {
  if (!facets) return -normal / sqrt(max(1.0 - dot(normal, normal), 1e-8));
  vec3 n = cross(dFdx(world), dFdy(world));
  if (n.z == 0.0) return vec2(0.0);
  return -n.xy / n.z / exaggeration;
}

float contourAt(float h) {
  float step = fwidth(h);
  float nearest = floor(h + 0.5);
  float d = abs(h - nearest) / max(step, 1e-9);
  float weight = mod(nearest + 0.5, 5.0) < 1.0 ? 1.15 : 0.6; // every fifth is bold
  // Where contours run together they fade, instead of covering everything.
  float share = clamp(weight + 0.5 - d, 0.0, 1.0) * clamp(1.4 - 2.5 * step, 0.0, 1.0);
  return step < 1e-5 ? 0.0 : share; // level ground at the height of a contour
}

void main() {
  vec2 gradient = gradientHere();
  vec3 n = normalize(vec3(-gradient * exaggeration, 1.0));
  // The cartographer's light, from the north-west, with enough from the sky for the legend's tints to be known in the shade.
  float light = 0.49 + 0.16 * n.z + 0.50 * max(dot(n, normalize(vec3(-0.55, 0.55, 0.63))), 0.0);
  vec3 tint = color.rgb;
  if (shading == 0) tint = texture(ramp, vec2(0.5 + 0.5 * height / halfHeight, 0.5)).rgb;
  if (shading == 1) tint = texture(ramp, vec2(degrees(atan(length(gradient))) / slopeLimit, 0.5)).rgb;
  if (shading == 1) light = mix(1.0, light, 0.45);
  if (shading == 3) { pixel = color; return; }
  if (interval > 0.0) {
    float line = contourAt((height - level) / interval);
    tint = mix(tint, contourColor.rgb, line * contourColor.a);
  }
  pixel = vec4(tint * light, 1.0);
}`;

const EDGE_VERTEX = `#version 300 es
layout(location = 0) in vec3 position;
uniform mat4 camera;
uniform vec3 target;
uniform float scale;
void main() {
  gl_Position = camera * vec4((position - target) * vec3(1.0, 1.0, scale), 1.0);
  gl_Position.z -= 1.5e-4 * gl_Position.w;
}`;

// A quad for each segment, as wide as wanted in pixels.
const SEGMENT_VERTEX = `#version 300 es
layout(location = 2) in vec3 from;
layout(location = 3) in vec3 to;
uniform mat4 camera;
uniform vec3 target;
uniform float scale;
uniform vec2 viewport;
uniform float width;
vec4 place(vec3 p) { return camera * vec4((p - target) * vec3(1.0, 1.0, scale), 1.0); }
void main() {
  vec4 a = place(from), b = place(to);
  float near = 1e-5; // what lies behind the camera is cut off
  if (a.w < near && b.w > near) a = mix(b, a, (b.w - near) / (b.w - a.w));
  if (b.w < near && a.w > near) b = mix(a, b, (a.w - near) / (a.w - b.w));
  vec2 along = (b.xy / b.w - a.xy / a.w) * viewport;
  along = along == vec2(0.0) ? vec2(1.0, 0.0) : normalize(along);
  vec2 corner = vec2(float(gl_VertexID & 1), float(gl_VertexID >> 1));
  gl_Position = corner.x == 0.0 ? a : b;
  vec2 offset = vec2(-along.y, along.x) * (corner.y - 0.5) + along * (corner.x - 0.5) * 0.5;
  gl_Position.xy += offset * 2.0 * width / viewport * gl_Position.w;
  gl_Position.z -= 4e-4 * gl_Position.w;
}`;

const COLOR_FRAGMENT = `#version 300 es
precision mediump float;
uniform vec4 color;
out vec4 pixel;
void main() { pixel = color; }`;

class Renderer {
  constructor(canvas, mesh, normals) {
    this.canvas = canvas;
    this.mesh = mesh;
    this.normals = normals;
    this.gl = canvas.getContext("webgl2", { antialias: true, alpha: false, powerPreference: "high-performance" });
    if (this.gl) this.build();
  }

  /// Everything that lives on the graphics card; again when it was lost.
  build() {
    const gl = this.gl, mesh = this.mesh;
    this.surfaceProgram = this.program(SURFACE_VERTEX, SURFACE_FRAGMENT);
    this.edgeProgram = this.program(EDGE_VERTEX, COLOR_FRAGMENT);
    this.segmentProgram = this.program(SEGMENT_VERTEX, COLOR_FRAGMENT);
    this.positionBuffer = this.buffer(gl.ARRAY_BUFFER, mesh.positions);
    this.normalBuffer = this.buffer(gl.ARRAY_BUFFER, this.normals);
    this.surface = this.indexed(mesh.triangles);
    this.edges = null; // made when they are wanted
    this.border = this.segments(mesh.border);
    this.constraints = this.segments(mesh.constraints);
    this.zones = mesh.zones.map((zone) => ({
      surface: this.indexed(trianglesOfZone(mesh, zone)),
      border: this.segments(zone.border),
    }));
    this.ramps = new Map();
    gl.enable(gl.DEPTH_TEST);
    gl.depthFunc(gl.LEQUAL);
    gl.blendFunc(gl.SRC_ALPHA, gl.ONE_MINUS_SRC_ALPHA);
  }

  program(vertexText, fragmentText) {
    const gl = this.gl, program = gl.createProgram();
    for (const [type, text] of [[gl.VERTEX_SHADER, vertexText], [gl.FRAGMENT_SHADER, fragmentText]]) {
      const shader = gl.createShader(type);
      gl.shaderSource(shader, text);
      gl.compileShader(shader);
      gl.attachShader(program, shader);
    }
    gl.linkProgram(program);
    if (!gl.getProgramParameter(program, gl.LINK_STATUS) && !gl.isContextLost()) {
      throw new Error(gl.getProgramInfoLog(program) || "a shader does not compile");
    }
    const uniforms = {};
    for (let i = 0; i < gl.getProgramParameter(program, gl.ACTIVE_UNIFORMS); ++i) {
      const { name } = gl.getActiveUniform(program, i);
      uniforms[name] = gl.getUniformLocation(program, name);
    }
    return { program, uniforms };
  }

  buffer(target, data) {
    const gl = this.gl, buffer = gl.createBuffer();
    gl.bindBuffer(target, buffer);
    gl.bufferData(target, data, gl.STATIC_DRAW);
    return buffer;
  }

  indexed(indices) {
    const gl = this.gl, array = gl.createVertexArray();
    gl.bindVertexArray(array);
    gl.bindBuffer(gl.ARRAY_BUFFER, this.positionBuffer);
    gl.enableVertexAttribArray(0);
    gl.vertexAttribPointer(0, 3, gl.FLOAT, false, 0, 0);
    gl.bindBuffer(gl.ARRAY_BUFFER, this.normalBuffer);
    gl.enableVertexAttribArray(1);
    gl.vertexAttribPointer(1, 2, gl.SHORT, true, 0, 0);
    this.buffer(gl.ELEMENT_ARRAY_BUFFER, indices);
    gl.bindVertexArray(null);
    return { array, count: indices.length };
  }

  segments(pairs) {
    const gl = this.gl, array = gl.createVertexArray();
    gl.bindVertexArray(array);
    this.buffer(gl.ARRAY_BUFFER, segmentsOf(this.mesh, pairs));
    for (const [location, offset] of [[2, 0], [3, 12]]) {
      gl.enableVertexAttribArray(location);
      gl.vertexAttribPointer(location, 3, gl.FLOAT, false, 24, offset);
      gl.vertexAttribDivisor(location, 1);
    }
    gl.bindVertexArray(null);
    return { array, count: pairs.length / 2 };
  }

  ramp(colors) {
    const gl = this.gl, key = colors.join();
    if (!this.ramps.has(key)) {
      const texture = gl.createTexture();
      gl.bindTexture(gl.TEXTURE_2D, texture);
      gl.texImage2D(gl.TEXTURE_2D, 0, gl.RGBA, 256, 1, 0, gl.RGBA, gl.UNSIGNED_BYTE, rampPixels(colors, 256));
      for (const [name, value] of [[gl.TEXTURE_MIN_FILTER, gl.LINEAR], [gl.TEXTURE_MAG_FILTER, gl.LINEAR],
        [gl.TEXTURE_WRAP_S, gl.CLAMP_TO_EDGE], [gl.TEXTURE_WRAP_T, gl.CLAMP_TO_EDGE]]) {
        gl.texParameteri(gl.TEXTURE_2D, name, value);
      }
      this.ramps.set(key, texture);
    }
    gl.bindTexture(gl.TEXTURE_2D, this.ramps.get(key));
  }

  resize() {
    const ratio = Math.min(window.devicePixelRatio || 1, 2);
    const width = Math.max(1, Math.round(this.canvas.clientWidth * ratio));
    const height = Math.max(1, Math.round(this.canvas.clientHeight * ratio));
    if (this.canvas.width !== width || this.canvas.height !== height) {
      this.canvas.width = width;
      this.canvas.height = height;
    }
    return ratio;
  }

  draw(camera, look) {
    const gl = this.gl, ratio = this.resize();
    camera.aspect = this.canvas.width / this.canvas.height;
    this.shared = { matrix: camera.matrix(), target: camera.target, scale: camera.scale };
    gl.viewport(0, 0, this.canvas.width, this.canvas.height);
    gl.clearColor(...look.background, 1);
    gl.clear(gl.COLOR_BUFFER_BIT | gl.DEPTH_BUFFER_BIT);
    this.drawSurface(look);
    gl.enable(gl.BLEND);
    gl.depthMask(false);
    this.mesh.zones.forEach((zone, i) => { if (zone.visible) this.drawZone(this.zones[i], zone.color); });
    if (look.edges) this.drawEdges(look.edgeColor);
    this.drawSegments(this.border, look.borderColor, 1.2 * ratio);
    if (look.constraints) {
      this.drawSegments(this.constraints, look.constraintCasing, 4 * ratio); // or they are lost on red and brown ground
      this.drawSegments(this.constraints, look.constraintColor, 1.8 * ratio);
    }
    this.mesh.zones.forEach((zone, i) => { if (zone.visible) this.drawSegments(this.zones[i].border, [...zone.color, 1], 2.2 * ratio); });
    gl.depthMask(true);
    gl.disable(gl.BLEND);
  }

  use({ program, uniforms }) {
    const gl = this.gl;
    gl.useProgram(program);
    gl.uniformMatrix4fv(uniforms.camera, false, this.shared.matrix);
    gl.uniform3fv(uniforms.target, this.shared.target);
    gl.uniform1f(uniforms.scale, this.shared.scale);
    return uniforms;
  }

  drawSurface(look) {
    const gl = this.gl, uniforms = this.use(this.surfaceProgram);
    gl.uniform1i(uniforms.shading, { height: 0, slope: 1, plain: 2 }[look.shading]);
    gl.uniform4f(uniforms.color, ...look.plainColor, 1);
    gl.uniform1i(uniforms.facets, look.facets ? 1 : 0);
    gl.uniform1f(uniforms.exaggeration, look.exaggeration);
    gl.uniform1f(uniforms.halfHeight, look.halfHeight);
    gl.uniform1f(uniforms.interval, look.contours ? look.interval : 0);
    gl.uniform1f(uniforms.level, look.level);
    gl.uniform4f(uniforms.contourColor, ...look.contourColor);
    gl.uniform1f(uniforms.slopeLimit, look.slopeLimit);
    this.ramp(look.ramp);
    this.drawIndexed(gl.TRIANGLES, this.surface);
  }

  drawZone(zone, color) {
    const gl = this.gl, uniforms = this.use(this.surfaceProgram);
    gl.uniform1i(uniforms.shading, 3);
    gl.uniform4f(uniforms.color, ...color, 0.34);
    this.drawIndexed(gl.TRIANGLES, zone.surface); // the same depths as the surface's: LEQUAL lets them through
  }

  drawEdges(color) {
    const gl = this.gl;
    if (!this.edges) this.edges = this.indexed(edgesOf(this.mesh));
    gl.uniform4f(this.use(this.edgeProgram).color, ...color);
    this.drawIndexed(gl.LINES, this.edges);
  }

  drawIndexed(mode, { array, count }) {
    this.gl.bindVertexArray(array);
    this.gl.drawElements(mode, count, this.gl.UNSIGNED_INT, 0);
  }

  drawSegments({ array, count }, color, width) {
    if (count === 0) return;
    const gl = this.gl, uniforms = this.use(this.segmentProgram);
    gl.uniform4f(uniforms.color, ...color);
    gl.uniform2f(uniforms.viewport, this.canvas.width, this.canvas.height);
    gl.uniform1f(uniforms.width, width);
    gl.bindVertexArray(array);
    gl.drawArraysInstanced(gl.TRIANGLE_STRIP, 0, 4, count);
  }
}

/// n pixels of a ramp between evenly spaced colours.
function rampPixels(colors, n) {
  const pixels = new Uint8Array(4 * n), rgb = colors.map(parseColor);
  for (let i = 0; i < n; ++i) {
    const at = i / (n - 1) * (rgb.length - 1), k = Math.min(Math.floor(at), rgb.length - 2);
    for (let c = 0; c < 3; ++c) pixels[4 * i + c] = Math.round(255 * (rgb[k][c] + (at - k) * (rgb[k + 1][c] - rgb[k][c])));
    pixels[4 * i + 3] = 255;
  }
  return pixels;
}

function parseColor(text) {
  return [1, 3, 5].map((i) => parseInt(text.slice(i, i + 2), 16) / 255);
}
