# Copies the pose worker and its models into the build tree; file(COPY) skips unchanged files.
file(COPY "${WORKER_SOURCE}/pose-worker.mjs" "${WORKER_SOURCE}/package.json"
     DESTINATION "${WORKER_DESTINATION}")
if(IS_DIRECTORY "${WORKER_SOURCE}/node_modules")
    # Node loads each package's "main" bundle (dist/*.node.js) and the WebAssembly binaries; the
    # browser bundles, source maps, typings, tests and per-module trees are never read.
    file(COPY "${WORKER_SOURCE}/node_modules" DESTINATION "${WORKER_DESTINATION}"
         PATTERN "*.map" EXCLUDE
         PATTERN "*.d.ts" EXCLUDE
         PATTERN "*_test.js" EXCLUDE
         PATTERN "*.md" EXCLUDE
         PATTERN "*.es2017.js" EXCLUDE
         PATTERN "*.fesm.js" EXCLUDE
         PATTERN "*.esm.js" EXCLUDE
         PATTERN "*.min.js" EXCLUDE
         REGEX "/@tensorflow/[^/]+/dist/[^/]+/" EXCLUDE)
else()
    message(WARNING "The pose worker's Node packages are missing: run `npm ci` in ${WORKER_SOURCE}.")
endif()
# Exactly the models the worker loads, and their licences.
file(GLOB models "${MODEL_SOURCE}/movenet-thunder.*" "${MODEL_SOURCE}/movenet-multipose.*"
     "${MODEL_SOURCE}/nanodet.*" "${MODEL_SOURCE}/LICENSE*")
if(models)
    file(COPY ${models} DESTINATION "${MODEL_DESTINATION}")
else()
    message(WARNING "The pose models are missing: run batch/worker/fetch-models.sh ${MODEL_SOURCE}.")
endif()
