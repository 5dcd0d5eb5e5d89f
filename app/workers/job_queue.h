// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <set>
#include <stop_token>
#include <string>
#include <thread>
#include <vector>

namespace tessary {

// Worker threads taking jobs from a bounded queue, most urgent first. A job still waiting can be
// withdrawn, and one submitted under the key of a waiting job takes its place; when the queue is
// full the least urgent waiting job gives way. A running job always finishes: the destructor
// drops what waits and waits for what runs.
class JobQueue {
  public:
    struct Job {
        std::string key;
        int priority = 0; // lower runs first; equal ones in the order submitted
        std::function<void()> run;
    };

    JobQueue(int threads, std::size_t capacity);
    ~JobQueue();
    JobQueue(const JobQueue&) = delete;
    JobQueue& operator=(const JobQueue&) = delete;

    // The keys of the jobs that gave way to this one (possibly its own), which will never run.
    std::vector<std::string> submit(Job job);
    // Withdraws the waiting jobs whose key `drop` accepts and returns their keys.
    std::vector<std::string> withdrawIf(const std::function<bool(const std::string&)>& drop);
    // Returns once no job under `key` is running.
    void waitFor(const std::string& key);
    // Drops what waits and returns once nothing runs.
    void drain();
    // Nothing waits and nothing runs.
    bool idle() const;

  private:
    void work(std::stop_token stop);

    const std::size_t capacity_;
    mutable std::mutex mutex_;
    std::condition_variable_any wake_;
    std::condition_variable finished_;
    std::deque<Job> waiting_; // by priority
    std::multiset<std::string> running_;
    std::vector<std::jthread> threads_; // last: stopped and joined first
};

} // namespace tessary
