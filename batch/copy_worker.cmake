# SPDX-License-Identifier: Apache-2.0
# Copies the pose worker and its models into the build tree; file(COPY) skips unchanged files.
file(COPY "${WORKER_SOURCE}/pose-worker.cjs" "${WORKER_SOURCE}/package.json"
     DESTINATION "${WORKER_DESTINATION}")
file(REMOVE "${WORKER_DESTINATION}/pose-worker.mjs") # the ES-module worker of earlier builds
if(IS_DIRECTORY "${WORKER_SOURCE}/node_modules")
    # A copy made from other packages or by other rules than these is made anew, so that nothing
    # these rules leave out lingers in it.
    file(SHA256 "${WORKER_SOURCE}/package-lock.json" lock)
    file(SHA256 "${CMAKE_CURRENT_LIST_FILE}" rules)
    set(stamp "${WORKER_DESTINATION}/node_modules/.tessary-copy")
    if(EXISTS "${stamp}")
        file(READ "${stamp}" copied)
    endif()
    if(NOT copied STREQUAL "${lock} ${rules}")
        file(REMOVE_RECURSE "${WORKER_DESTINATION}/node_modules")
    endif()
    # Node loads each package's "main" bundle (dist/*.node.js) and the WebAssembly binaries; the
    # browser bundles, source maps, typings, tests, coverage reports, the packages' own build and
    # CI files and per-module trees are never read.
    file(COPY "${WORKER_SOURCE}/node_modules" DESTINATION "${WORKER_DESTINATION}"
         PATTERN "*.map" EXCLUDE
         PATTERN "*.d.ts" EXCLUDE
         PATTERN "*_test.js" EXCLUDE
         PATTERN "*test_util.js" EXCLUDE
         PATTERN "*test_lib.externs.js" EXCLUDE
         PATTERN "jasmine_util.js" EXCLUDE
         PATTERN "test_async_backends.js" EXCLUDE
         PATTERN "tests.js" EXCLUDE
         PATTERN "*.md" EXCLUDE
         PATTERN "*.es2017.js" EXCLUDE
         PATTERN "*.fesm.js" EXCLUDE
         PATTERN "*.esm.js" EXCLUDE
         PATTERN "*.min.js" EXCLUDE
         PATTERN "coverage" EXCLUDE
         PATTERN ".nyc_output" EXCLUDE
         PATTERN ".coveralls.yml" EXCLUDE
         PATTERN ".travis.yml" EXCLUDE
         PATTERN ".nvmrc" EXCLUDE
         PATTERN ".gitkeep" EXCLUDE
         PATTERN ".npmignore" EXCLUDE
         PATTERN "Gruntfile.js" EXCLUDE
         PATTERN "bower.json" EXCLUDE
         PATTERN "component.json" EXCLUDE
         PATTERN ".tessary-lock.json" EXCLUDE
         PATTERN ".package-lock.json" EXCLUDE
         REGEX "/@tensorflow/[^/]+/dist/[^/]+/" EXCLUDE)
    # file(COPY) keeps the folders whose every file was left out; deepest first, so that a folder
    # holding only empty ones goes too.
    file(GLOB_RECURSE folders LIST_DIRECTORIES true "${WORKER_DESTINATION}/node_modules/*")
    list(SORT folders ORDER DESCENDING)
    foreach(folder IN LISTS folders)
        if(IS_DIRECTORY "${folder}")
            file(GLOB entries "${folder}/*" "${folder}/.*")
            if(NOT entries)
                file(REMOVE_RECURSE "${folder}")
            endif()
        endif()
    endforeach()
    file(WRITE "${stamp}" "${lock} ${rules}")
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
