// SPDX-License-Identifier: Apache-2.0
// Model worker of dravik-batch: runs the MoveNet pose models and the NanoDet object detector on
// TensorFlow.js (WebAssembly backend).
// usage: node pose-worker.cjs <models folder> [objects | poses]
// "objects" loads the object detector, "poses" the multi-person and single-person models, neither
// all three.
// CommonJS on purpose: Node loads the packages' large CommonJS bundles several times faster
// through require() than through an ES module's import, which scans them for their exports first.
//
// Frames on stdin and stdout, little-endian, one answer per request, in order:
//   request: u32 magic, u32 model (1 pose, 2 people, 3 objects), u32 side, side*side*3 bytes RGB
//   answer:  u32 magic, i32 status (0 = ok), then either
//            u32 rows, u32 columns, rows*columns float32
//            or u32 length and a UTF-8 sentence (status 1)
//   ready:   u32 magic, i32 0, u32 0 (rows), u32 length, Node's version ("v20.11.1") in UTF-8,
//            the first answer, once the models are loaded
// stderr is for diagnostics only.
'use strict';
const fs = require('node:fs');
const path = require('node:path');

const tf = require('@tensorflow/tfjs-core');
const { GraphModel } = require('@tensorflow/tfjs-converter');
const { setWasmPaths } = require('@tensorflow/tfjs-backend-wasm');

const MAGIC = 0x31505344;
const POSE = 1;
const PEOPLE = 2;
const OBJECTS = 3;
const POSE_SIDE = 256;
const OBJECT_SIDE = 416;
const PEOPLE_SCORE = 0.05; // rows below this are noise; the caller picks its own threshold
const OBJECT_SCORE = 0.1;
// COCO classes the caller uses: person, bicycle, motorcycle.
const OBJECT_CLASSES = [0, 1, 3];
// NanoDet: BGR input normalised per channel; each level's boxes are distances from the cell
// centre, given as a distribution over REG_BINS bins of one stride each.
const NANODET_MEAN = [103.53, 116.28, 123.675];
const NANODET_STD = [57.375, 57.12, 58.395];
const REG_BINS = 11;

// The weight files of a model's manifest, read as the one run of bytes they make.
function weightFiles(folder, manifest) {
  const files = [];
  for (const group of manifest)
    for (const name of group.paths) {
      const fd = fs.openSync(path.join(folder, name), 'r');
      files.push({ name, fd, size: fs.fstatSync(fd).size });
    }
  return {
    read(position, length, into) {
      let done = 0;
      for (const file of files) {
        if (done === length) break;
        if (position >= file.size) {
          position -= file.size;
          continue;
        }
        while (done < length && position < file.size) {
          const n = fs.readSync(file.fd, into, done, Math.min(length - done, file.size - position), position);
          if (n === 0) throw new Error(`${file.name} ended early`);
          done += n;
          position += n;
        }
        position = 0;
      }
      if (done < length) throw new Error(`the weight files of ${folder} end early`);
    },
    close() {
      for (const file of files) fs.closeSync(file.fd);
    },
  };
}

// The float32 bits TensorFlow.js decodes each of the 65536 float16 values to, from its own decoder,
// so that a weight widened here is the one it would have made.
function float16Table() {
  const every = new Uint16Array(65536).map((_, i) => i);
  const weight = { name: 'all', shape: [65536], dtype: 'float32', quantization: { dtype: 'float16' } };
  const decoded = tf.io.decodeWeights(every.buffer, [weight]).all;
  const bits = new Uint32Array(decoded.dataSync().buffer.slice(0));
  decoded.dispose();
  return bits;
}

// Loads a graph model weight by weight through two small buffers, widening float16 weights with a
// table: TensorFlow.js's own loading makes three passing copies of all the weights and decodes
// each float16 value in several steps, and both cost more than the copy the backend keeps on a
// machine slow to hand out fresh memory.
function loadModel(jsonPath, widen) {
  const artifacts = JSON.parse(fs.readFileSync(jsonPath, 'utf8'));
  const weights = artifacts.weightsManifest.flatMap((group) => group.weights);
  const kinds = weights.map((weight) => {
    const count = weight.shape.reduce((a, b) => a * b, 1);
    const quantized = weight.quantization && weight.quantization.dtype;
    if (weight.dtype === 'float32' && quantized === 'float16') return { count, bytes: 2 * count, half: true };
    if ((weight.dtype === 'float32' || weight.dtype === 'int32') && !quantized) return { count, bytes: 4 * count };
    throw new Error(`weight ${weight.name} is stored as ${quantized || weight.dtype}, which the worker does not read`);
  });
  const largest = Math.max(0, ...kinds.map((kind) => kind.count));
  const raw = Buffer.allocUnsafeSlow(4 * largest);
  const wide = new Uint32Array(largest);
  const files = weightFiles(path.dirname(jsonPath), artifacts.weightsManifest);
  const weightMap = {};
  try {
    let position = 0;
    weights.forEach((weight, i) => {
      const { count, bytes, half } = kinds[i];
      files.read(position, bytes, raw);
      position += bytes;
      let values;
      if (half) {
        const bits = new Uint16Array(raw.buffer, raw.byteOffset, count);
        for (let k = 0; k < count; ++k) wide[k] = widen[bits[k]];
        values = new Float32Array(wide.buffer, 0, count);
      } else {
        const Values = weight.dtype === 'int32' ? Int32Array : Float32Array;
        values = new Values(raw.buffer, raw.byteOffset, count);
      }
      weightMap[weight.name] = tf.tensor(values, weight.shape, weight.dtype); // the backend copies
    });
  } catch (error) {
    tf.dispose(Object.values(weightMap));
    throw error;
  } finally {
    files.close();
  }
  const model = new GraphModel(jsonPath);
  model.loadWithWeightMap(artifacts, weightMap);
  return model;
}

function answer(status, body) {
  const head = Buffer.alloc(8);
  head.writeUInt32LE(MAGIC, 0);
  head.writeInt32LE(status, 4);
  fs.writeSync(1, Buffer.concat([head, body]));
}

function fail(message) {
  const text = Buffer.from(message, 'utf8');
  const length = Buffer.alloc(4);
  length.writeUInt32LE(text.length, 0);
  answer(1, Buffer.concat([length, text]));
}

function table(rows, columns) {
  const body = Buffer.alloc(8 + rows.length * columns * 4);
  body.writeUInt32LE(rows.length, 0);
  body.writeUInt32LE(columns, 4);
  let at = 8;
  for (const row of rows)
    for (let i = 0; i < columns; ++i, at += 4) body.writeFloatLE(row[i], at);
  answer(0, body);
}

async function load(folder, role) {
  const wasmDist = path.dirname(require.resolve('@tensorflow/tfjs-backend-wasm'));
  setWasmPaths(wasmDist + path.sep);
  await tf.setBackend('wasm');
  await tf.ready();
  const widen = float16Table();
  const model = (name) => loadModel(path.join(folder, name), widen);
  const models = {};
  if (role !== 'poses') models.objects = model('nanodet.json');
  if (role !== 'objects') {
    models.multi = model('movenet-multipose.json');
    models.single = model('movenet-thunder.json');
  }
  return models;
}

// No rows, then Node's version as `node --version` prints it, for the caller to check.
function ready() {
  const version = Buffer.from(process.version, 'utf8');
  const body = Buffer.alloc(8);
  body.writeUInt32LE(version.length, 4);
  answer(0, Buffer.concat([body, version]));
}

// 17 rows of (y, x, score), fractions of the square.
function pose(models, rgb) {
  const input = tf.tensor4d(new Int32Array(rgb), [1, POSE_SIDE, POSE_SIDE, 3], 'int32');
  const out = models.single.execute(input);
  const values = out.dataSync();
  tf.dispose([input, out]);
  const rows = [];
  for (let i = 0; i < 17; ++i) rows.push([values[i * 3], values[i * 3 + 1], values[i * 3 + 2]]);
  table(rows, 3);
}

// Up to 6 rows: 17 × (y, x, score), then ymin, xmin, ymax, xmax and the person's score.
function people(models, side, rgb) {
  const input = tf.tensor4d(new Int32Array(rgb), [1, side, side, 3], 'int32');
  const out = models.multi.execute(input);
  const rows = out.arraySync()[0];
  tf.dispose([input, out]);
  table(rows.filter((row) => row[55] >= PEOPLE_SCORE), 56);
}

function softmaxMean(values, start) {
  let top = -Infinity;
  for (let b = 0; b < REG_BINS; ++b) top = Math.max(top, values[start + b]);
  let sum = 0;
  let mean = 0;
  for (let b = 0; b < REG_BINS; ++b) {
    const e = Math.exp(values[start + b] - top);
    sum += e;
    mean += e * b;
  }
  return mean / sum;
}

// Rows of (ymin, xmin, ymax, xmax, score, COCO class), fractions of the square, one per cell and
// class above OBJECT_SCORE: overlapping boxes are left for the caller to merge.
function objects(models, rgb) {
  const plane = OBJECT_SIDE * OBJECT_SIDE;
  const data = new Float32Array(3 * plane);
  for (let i = 0; i < plane; ++i)
    for (let c = 0; c < 3; ++c) data[c * plane + i] = (rgb[i * 3 + 2 - c] - NANODET_MEAN[c]) / NANODET_STD[c];
  const input = tf.tensor4d(data, [1, 3, OBJECT_SIDE, OBJECT_SIDE]);
  const names = models.objects.outputs.map((o) => o.name);
  const outs = models.objects.execute(input, names);
  const rows = [];
  for (const scores of outs) {
    if (scores.shape[2] !== 80) continue;
    const cells = scores.shape[1];
    const boxes = outs.find((o) => o.shape[1] === cells && o.shape[2] === 4 * REG_BINS);
    const grid = Math.round(Math.sqrt(cells));
    const stride = OBJECT_SIDE / grid;
    const s = scores.dataSync();
    const b = boxes.dataSync();
    for (let i = 0; i < cells; ++i)
      for (const c of OBJECT_CLASSES) {
        const score = s[i * 80 + c];
        if (!(score >= OBJECT_SCORE)) continue;
        const cx = ((i % grid) + 0.5) * stride;
        const cy = (Math.floor(i / grid) + 0.5) * stride;
        const d = [0, 1, 2, 3].map((k) => softmaxMean(b, i * 4 * REG_BINS + k * REG_BINS) * stride);
        const f = (v) => v / OBJECT_SIDE;
        rows.push([f(cy - d[1]), f(cx - d[0]), f(cy + d[3]), f(cx + d[2]), Math.min(score, 1), c]);
      }
  }
  tf.dispose([input, ...outs]);
  table(rows, 6);
}

const passes = { [POSE]: 0, [PEOPLE]: 0, [OBJECTS]: 0 };

function run(models, model, side, rgb) {
  if (model in passes) passes[model] += 1;
  if (model === POSE && models.single && side === POSE_SIDE) return pose(models, rgb);
  if (model === PEOPLE && models.multi && side % 32 === 0 && side >= 128 && side <= 512)
    return people(models, side, rgb);
  if (model === OBJECTS && models.objects && side === OBJECT_SIDE) return objects(models, rgb);
  fail(`The pose worker cannot run model ${model} on ${side} pixel squares.`);
}

async function main() {
  const folder = process.argv[2];
  let models;
  try {
    models = await load(folder, process.argv[3]);
  } catch (error) {
    fail(`The models in ${folder} could not be loaded (${String(error.message || error).split('\n')[0]}).`);
    process.exit(3);
  }
  ready();

  let pending = Buffer.alloc(0);
  process.stdin.on('data', (chunk) => {
    pending = pending.length ? Buffer.concat([pending, chunk]) : chunk;
    for (;;) {
      if (pending.length < 12) return;
      const side = pending.readUInt32LE(8);
      if (pending.readUInt32LE(0) !== MAGIC || side > 1024) {
        fail('The pose worker received a damaged request.');
        process.exit(4);
      }
      const size = 12 + side * side * 3;
      if (pending.length < size) return;
      run(models, pending.readUInt32LE(4), side, pending.subarray(12, size));
      pending = pending.subarray(size);
    }
  });
  process.stdin.on('end', () => {
    const total = passes[POSE] + passes[PEOPLE] + passes[OBJECTS];
    process.stderr.write(
      `The models ran ${total} passes: ${passes[POSE]} pose, ${passes[PEOPLE]} people, ${passes[OBJECTS]} objects.\n`,
    );
    process.exit(0);
  });
}

main();
