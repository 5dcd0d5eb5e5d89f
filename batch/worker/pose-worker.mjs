// SPDX-License-Identifier: Apache-2.0
// Model worker of dravik-batch: runs the MoveNet pose models and the NanoDet object detector on
// TensorFlow.js (WebAssembly backend).
// usage: node pose-worker.mjs <models folder> [search | pose]
// "search" loads the two finders (people, objects), "pose" the single-person model, neither both.
//
// Frames on stdin and stdout, little-endian, one answer per request, in order:
//   request: u32 magic, u32 model (1 pose, 2 people, 3 objects), u32 side, side*side*3 bytes RGB
//   answer:  u32 magic, i32 status (0 = ok), then either
//            u32 rows, u32 columns, rows*columns float32
//            or u32 length and a UTF-8 sentence (status 1)
// A first answer with no rows says the models are loaded and have run once (the first run of a
// model costs several later ones). stderr is for diagnostics only.
import fs from 'node:fs';
import path from 'node:path';
import { createRequire } from 'node:module';

import * as tf from '@tensorflow/tfjs-core';
import { loadGraphModel } from '@tensorflow/tfjs-converter';
import { setWasmPaths } from '@tensorflow/tfjs-backend-wasm';

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

// Reads the weight files straight into one buffer: every extra copy of tens of megabytes costs
// as much as a model pass on a machine slow to hand out fresh memory.
function fileHandler(jsonPath) {
  return {
    load: async () => {
      const model = JSON.parse(fs.readFileSync(jsonPath, 'utf8'));
      const folder = path.dirname(jsonPath);
      const weightSpecs = [];
      const files = [];
      for (const group of model.weightsManifest) {
        weightSpecs.push(...group.weights);
        for (const p of group.paths) files.push(path.join(folder, p));
      }
      const sizes = files.map((file) => fs.statSync(file).size);
      const all = Buffer.allocUnsafeSlow(sizes.reduce((a, b) => a + b, 0));
      let at = 0;
      files.forEach((file, i) => {
        const fd = fs.openSync(file, 'r');
        try {
          for (let got = 0; got < sizes[i]; ) {
            const n = fs.readSync(fd, all, at + got, sizes[i] - got, null);
            if (n === 0) throw new Error(`${file} ended early`);
            got += n;
          }
        } finally {
          fs.closeSync(fd);
        }
        at += sizes[i];
      });
      return {
        modelTopology: model.modelTopology,
        format: model.format,
        generatedBy: model.generatedBy,
        convertedBy: model.convertedBy,
        signature: model.signature,
        userDefinedMetadata: model.userDefinedMetadata,
        weightSpecs,
        weightData: all.buffer,
      };
    },
  };
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
  const require = createRequire(import.meta.url);
  const wasmDist = path.dirname(require.resolve('@tensorflow/tfjs-backend-wasm'));
  setWasmPaths(wasmDist + path.sep);
  await tf.setBackend('wasm');
  await tf.ready();
  const model = (name) => loadGraphModel(fileHandler(path.join(folder, name)));
  const models = {};
  if (role !== 'search') models.single = await model('movenet-thunder.json');
  if (role !== 'pose') {
    models.multi = await model('movenet-multipose.json');
    models.objects = await model('nanodet.json');
  }
  return models;
}

function warmUp(models) {
  const square = (side, dtype) => tf.zeros([1, side, side, 3], dtype);
  const runs = [];
  if (models.single) runs.push([models.single, square(POSE_SIDE, 'int32')]);
  if (models.multi) runs.push([models.multi, square(256, 'int32')]);
  if (models.objects) runs.push([models.objects, tf.zeros([1, 3, OBJECT_SIDE, OBJECT_SIDE])]);
  for (const [model, input] of runs) {
    const out = model.execute(input, model.outputs.map((o) => o.name));
    tf.dispose([input, out]);
  }
}

// 17 rows of (y, x, score), fractions of the square.
function pose(models, rgb) {
  const input = tf.tensor4d(Int32Array.from(rgb), [1, POSE_SIDE, POSE_SIDE, 3], 'int32');
  const out = models.single.execute(input);
  const values = out.dataSync();
  tf.dispose([input, out]);
  const rows = [];
  for (let i = 0; i < 17; ++i) rows.push([values[i * 3], values[i * 3 + 1], values[i * 3 + 2]]);
  table(rows, 3);
}

// Up to 6 rows: 17 × (y, x, score), then ymin, xmin, ymax, xmax and the person's score.
function people(models, side, rgb) {
  const input = tf.tensor4d(Int32Array.from(rgb), [1, side, side, 3], 'int32');
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
    warmUp(models);
  } catch (error) {
    fail(`The models in ${folder} could not be loaded (${String(error.message || error).split('\n')[0]}).`);
    process.exit(3);
  }
  table([], 0);

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
