// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <exception>
#include <functional>
#include <optional>
#include <thread>
#include <vector>

namespace dravik {

// Runs job(i) for every i in [0, count) on up to `threads` workers (all cores by default).
// Results come back in index order; if any job throws, the failure of the lowest index is
// rethrown after every worker has stopped.
template <class T>
std::vector<T> parallelMap(std::size_t count, const std::function<T(std::size_t)>& job,
                           unsigned threads = 0) {
    if (threads == 0)
        threads = std::max(1u, std::thread::hardware_concurrency());
    threads =
        static_cast<unsigned>(std::min<std::size_t>(threads, std::max<std::size_t>(count, 1)));
    std::vector<std::optional<T>> results(count);
    std::vector<std::exception_ptr> failures(count);
    std::atomic<std::size_t> next{0};
    std::atomic<std::size_t> firstFailure{count};
    auto work = [&] {
        for (std::size_t i = next++; i < count; i = next++) {
            if (i > firstFailure.load())
                continue; // a lower index already failed; its error wins
            try {
                results[i].emplace(job(i));
            } catch (...) {
                failures[i] = std::current_exception();
                std::size_t seen = firstFailure.load();
                while (i < seen && !firstFailure.compare_exchange_weak(seen, i)) {
                }
            }
        }
    };
    std::vector<std::jthread> workers;
    for (unsigned t = 1; t < threads; ++t)
        workers.emplace_back(work);
    work();
    workers.clear();
    if (firstFailure.load() < count)
        std::rethrow_exception(failures[firstFailure.load()]);
    std::vector<T> out;
    out.reserve(count);
    for (auto& r : results)
        out.push_back(std::move(*r));
    return out;
}

} // namespace dravik
