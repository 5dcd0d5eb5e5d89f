// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <thread>
#include <vector>

namespace tessary::samplegen {

// Runs `work(row)` for every row on all cores. Each row's result depends only on the row,
// so the picture does not depend on the number of threads.
template <typename Work> void forEachRow(int rows, const Work& work) {
    const int threads = std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 1, 16);
    std::vector<std::jthread> pool;
    for (int t = 0; t < threads; ++t)
        pool.emplace_back([&, t] {
            for (int row = t; row < rows; row += threads)
                work(row);
        });
}

} // namespace tessary::samplegen
