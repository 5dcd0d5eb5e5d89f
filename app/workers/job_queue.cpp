// SPDX-License-Identifier: Apache-2.0
#include "job_queue.h"

#include <algorithm>
#include <sys/resource.h>
#include <unistd.h>

namespace tessary {

JobQueue::JobQueue(int threads, std::size_t capacity)
    : capacity_(std::max<std::size_t>(capacity, 1)) {
    for (int i = 0; i < std::max(threads, 1); ++i)
        threads_.emplace_back([this](std::stop_token stop) {
            // Below the window's thread, so that a decode or a copy never keeps a paint waiting
            // for a core; on Linux a thread has its own niceness.
            setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), 10);
            work(stop);
        });
}

JobQueue::~JobQueue() {
    {
        const std::lock_guard lock(mutex_);
        waiting_.clear();
    }
    for (std::jthread& thread : threads_)
        thread.request_stop();
    threads_.clear(); // joins
}

std::vector<std::string> JobQueue::submit(Job job) {
    std::vector<std::string> dropped;
    {
        const std::lock_guard lock(mutex_);
        std::erase_if(waiting_, [&](const Job& waiting) { return waiting.key == job.key; });
        auto before = std::find_if(waiting_.begin(), waiting_.end(), [&](const Job& waiting) {
            return waiting.priority > job.priority;
        });
        waiting_.insert(before, std::move(job));
        while (waiting_.size() > capacity_) {
            dropped.push_back(std::move(waiting_.back().key));
            waiting_.pop_back();
        }
    }
    wake_.notify_one();
    return dropped;
}

std::vector<std::string> JobQueue::withdrawIf(const std::function<bool(const std::string&)>& drop) {
    std::vector<std::string> withdrawn;
    const std::lock_guard lock(mutex_);
    std::erase_if(waiting_, [&](const Job& waiting) {
        if (!drop(waiting.key))
            return false;
        withdrawn.push_back(waiting.key);
        return true;
    });
    return withdrawn;
}

void JobQueue::waitFor(const std::string& key) {
    std::unique_lock lock(mutex_);
    finished_.wait(lock, [&] { return !running_.contains(key); });
}

void JobQueue::drain() {
    std::unique_lock lock(mutex_);
    waiting_.clear();
    finished_.wait(lock, [&] { return running_.empty(); });
}

bool JobQueue::idle() const {
    const std::lock_guard lock(mutex_);
    return waiting_.empty() && running_.empty();
}

void JobQueue::work(std::stop_token stop) {
    std::unique_lock lock(mutex_);
    while (wake_.wait(lock, stop, [this] { return !waiting_.empty(); })) {
        Job job = std::move(waiting_.front());
        waiting_.pop_front();
        const auto running = running_.insert(job.key);
        lock.unlock();
        try {
            job.run();
        } catch (...) {
            // A job reports its own failures; one that throws must not take the thread with it.
        }
        lock.lock();
        running_.erase(running);
        finished_.notify_all();
    }
}

} // namespace tessary
