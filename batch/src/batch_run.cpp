// SPDX-License-Identifier: Apache-2.0
#include "batch_run.h"

#include <exception>
#include <iostream>

namespace dravik::batch {

int runBatch(const std::vector<std::string>& arguments,
             const std::function<WorkerSetup()>& worker) {
    const bool known =
        arguments.size() == 3 && (arguments[0] == "redetect" || arguments[0] == "feasibility");
    if (!known) {
        std::cerr
            << "dravik-batch needs either \u201credetect <request.json> <result.json>\u201d or "
               "\u201cfeasibility <manifest> <output>\u201d.\n";
        return usage;
    }
    try {
        WorkerSetup setup = worker();
        if (arguments[0] == "redetect")
            return redetect(arguments[1], arguments[2], setup);
        return feasibility(arguments[1], arguments[2], setup);
    } catch (const std::exception& error) {
        std::cerr << error.what() << "\n";
    }
    return failure;
}

} // namespace dravik::batch
