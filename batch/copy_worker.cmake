# Copies the pose worker and its models into the build tree; file(COPY) skips unchanged files.
file(COPY "${WORKER_SOURCE}/pose-worker.mjs" "${WORKER_SOURCE}/package.json"
     DESTINATION "${WORKER_DESTINATION}")
if(IS_DIRECTORY "${WORKER_SOURCE}/node_modules")
    file(COPY "${WORKER_SOURCE}/node_modules" DESTINATION "${WORKER_DESTINATION}")
else()
    message(WARNING "The pose worker's Node packages are missing: run `npm ci` in ${WORKER_SOURCE}.")
endif()
file(GLOB models "${MODEL_SOURCE}/movenet-*" "${MODEL_SOURCE}/LICENSE*")
if(models)
    file(COPY ${models} DESTINATION "${MODEL_DESTINATION}")
else()
    message(WARNING "The pose models are missing: run batch/worker/fetch-models.sh ${MODEL_SOURCE}.")
endif()
