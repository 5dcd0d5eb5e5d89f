// SPDX-License-Identifier: Apache-2.0
#include "batch_run.h"
#include "dravik/atomic_file.h"
#include "dravik/detection.h"
#include "photo_check.h"
#include "rider_detector.h"
#include "upright.h"

namespace dravik::batch {

int redetect(const std::filesystem::path& request, const std::filesystem::path& result,
             const WorkerSetup& setup) {
    RetryRequest asked = RetryRequest::load(request);
    PoseWorker worker(setup); // loads its models while the photo is read
    ImageInput photo = loadCheckedPhoto(asked.source, asked.sourceHash);
    RiderDetector detector(worker);
    std::optional<double> lean;
    if (asked.wheel)
        lean = wheelLean(*asked.wheel);
    Detection found = detector.detect(photo, asked.crop, photoLabel(asked.source), lean);
    DetectionRetry answer{found.primary, found.refined};
    writeFileAtomically(result, answer.encode());
    return success;
}

} // namespace dravik::batch
