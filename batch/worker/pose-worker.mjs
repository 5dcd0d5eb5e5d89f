// Pose worker of dravik-batch: runs the MoveNet models on TensorFlow.js (WebAssembly backend).
// usage: node pose-worker.mjs <models folder>
//
// Frames on stdin and stdout, little-endian, one answer per request, in order:
//   request: u32 magic, u32 flags (1 = also count people), u32 side, side*side*3 bytes RGB
//   answer:  u32 magic, i32 status (0 = ok), then either
//            i32 people (-1 when not asked), u32 n, n*3 float32 (y, x, score)
//            or u32 length and a UTF-8 sentence (status 1)
// A first answer with n = 0 says the models are loaded. stderr is for diagnostics only.
import fs from 'node:fs';
import path from 'node:path';
import { createRequire } from 'node:module';

import * as tf from '@tensorflow/tfjs-core';
import { loadGraphModel } from '@tensorflow/tfjs-converter';
import { setWasmPaths } from '@tensorflow/tfjs-backend-wasm';

const MAGIC = 0x31505344;
const COUNT_PEOPLE = 1;
const SIDE = 256;
const PERSON_SCORE = 0.3; // MoveNet multipose instance score above which a person counts

function fileHandler(jsonPath) {
  return {
    load: async () => {
      const model = JSON.parse(fs.readFileSync(jsonPath, 'utf8'));
      const folder = path.dirname(jsonPath);
      const weightSpecs = [];
      const buffers = [];
      for (const group of model.weightsManifest) {
        weightSpecs.push(...group.weights);
        for (const p of group.paths) buffers.push(fs.readFileSync(path.join(folder, p)));
      }
      const all = Buffer.concat(buffers);
      return {
        modelTopology: model.modelTopology,
        format: model.format,
        generatedBy: model.generatedBy,
        convertedBy: model.convertedBy,
        signature: model.signature,
        userDefinedMetadata: model.userDefinedMetadata,
        weightSpecs,
        weightData: all.buffer.slice(all.byteOffset, all.byteOffset + all.byteLength),
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

function points(people, values) {
  const body = Buffer.alloc(8 + values.length * 4);
  body.writeInt32LE(people, 0);
  body.writeUInt32LE(values.length / 3, 4);
  for (let i = 0; i < values.length; ++i) body.writeFloatLE(values[i], 8 + i * 4);
  answer(0, body);
}

async function load(folder) {
  const require = createRequire(import.meta.url);
  const wasmDist = path.dirname(require.resolve('@tensorflow/tfjs-backend-wasm'));
  setWasmPaths(wasmDist + path.sep);
  await tf.setBackend('wasm');
  await tf.ready();
  const single = await loadGraphModel(fileHandler(path.join(folder, 'movenet-thunder.json')));
  const multi = await loadGraphModel(fileHandler(path.join(folder, 'movenet-multipose.json')));
  return { single, multi };
}

function countPeople(model, input) {
  const out = model.execute(input);
  const rows = out.arraySync()[0];
  out.dispose();
  return rows.filter((row) => row[55] >= PERSON_SCORE).length;
}

function detect(models, flags, side, rgb) {
  if (side !== SIDE) return fail(`The pose worker expects ${SIDE} pixel squares, not ${side}.`);
  const input = tf.tensor4d(Int32Array.from(rgb), [1, SIDE, SIDE, 3], 'int32');
  try {
    const out = models.single.execute(input);
    const values = Array.from(out.dataSync());
    out.dispose();
    const people = flags & COUNT_PEOPLE ? countPeople(models.multi, input) : -1;
    points(people, values);
  } finally {
    input.dispose();
  }
}

async function main() {
  const folder = process.argv[2];
  let models;
  try {
    models = await load(folder);
  } catch (error) {
    fail(`The pose models in ${folder} could not be loaded (${String(error.message || error).split('\n')[0]}).`);
    process.exit(3);
  }
  points(0, []);

  let pending = Buffer.alloc(0);
  process.stdin.on('data', (chunk) => {
    pending = pending.length ? Buffer.concat([pending, chunk]) : chunk;
    for (;;) {
      if (pending.length < 12) return;
      if (pending.readUInt32LE(0) !== MAGIC) {
        fail('The pose worker received a damaged request.');
        process.exit(4);
      }
      const flags = pending.readUInt32LE(4);
      const side = pending.readUInt32LE(8);
      const size = 12 + side * side * 3;
      if (pending.length < size) return;
      detect(models, flags, side, pending.subarray(12, size));
      pending = pending.subarray(size);
    }
  });
  process.stdin.on('end', () => process.exit(0));
}

main();
