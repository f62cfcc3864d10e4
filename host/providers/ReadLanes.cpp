#include "host/providers/ReadLanes.h"

#include <algorithm>
#include <condition_variable>
#include <deque>
#include <exception>
#include <map>
#include <mutex>
#include <thread>

namespace emstatus::host {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kFarewell{200};

}  // namespace

struct ReadLanes::Shared {
  FilesFactory makeFiles;

  std::mutex lock;
  /// A job was begun or has ended, or a thread has.
  std::condition_variable progress;
  // All guarded by lock
  std::deque<std::pair<std::string, Job>> queue;
  std::map<std::string, Clock::time_point> running;
  /// Left by the threads that have ended, with their open descriptors.
  std::vector<std::unique_ptr<SystemFiles>> freeFiles;
  std::size_t threads = 0;
  /// Threads that have not looked for a job yet.
  std::size_t starting = 0;
  bool ending = false;
};

ReadLanes::ReadLanes(FilesFactory makeFiles, std::chrono::milliseconds patience)
    : patience_(patience), shared_(std::make_shared<Shared>()) {
  shared_->makeFiles = std::move(makeFiles);
}

ReadLanes::~ReadLanes() {
  std::unique_lock lock(shared_->lock);
  shared_->ending = true;
  shared_->queue.clear();
  shared_->progress.wait_for(lock, kFarewell, [this] { return shared_->threads == 0; });
}

bool ReadLanes::IsRunning(const std::string& key) const {
  const std::lock_guard lock(shared_->lock);
  return shared_->running.contains(key);
}

void ReadLanes::Run(std::vector<std::pair<std::string, Job>> jobs) {
  std::unique_lock lock(shared_->lock);
  for (auto& job : jobs) {
    if (!shared_->running.contains(job.first)) {
      shared_->queue.push_back(std::move(job));
    }
  }
  for (std::size_t batch = 1;;) {
    const Clock::time_point now = Clock::now();
    Clock::time_point next = Clock::time_point::max();
    for (const auto& [key, begun] : shared_->running) {
      if (begun + patience_ > now) {
        next = std::min(next, begun + patience_);
      }
    }
    const bool nobodyElse = next == Clock::time_point::max();
    if (nobodyElse && shared_->queue.empty()) {
      return;
    }
    if (nobodyElse && shared_->starting == 0) {
      if (shared_->threads >= kMostThreads) {
        shared_->queue.clear();
        return;
      }
      // Twice as many each time, so that many that hang do not take their patience one after the other.
      for (std::size_t added = 0;
           added < batch && added < shared_->queue.size() && shared_->threads < kMostThreads; ++added) {
        AddThread();
      }
      batch *= 2;
    }
    shared_->progress.wait_until(lock, std::min(next, now + patience_));
  }
}

void ReadLanes::AddThread() {
  std::thread(&ReadLanes::Work, shared_).detach();
  ++shared_->threads;
  ++shared_->starting;
}

void ReadLanes::Work(const std::shared_ptr<Shared>& shared) {
  std::unique_lock lock(shared->lock);
  --shared->starting;
  std::unique_ptr<SystemFiles> files;
  if (!shared->freeFiles.empty()) {
    files = std::move(shared->freeFiles.back());
    shared->freeFiles.pop_back();
  }
  while (!shared->ending && !shared->queue.empty()) {
    auto [key, job] = std::move(shared->queue.front());
    shared->queue.pop_front();
    shared->running.emplace(key, Clock::now());
    shared->progress.notify_all();
    lock.unlock();
    try {
      files = files ? std::move(files) : shared->makeFiles();
      job(*files);
    } catch (const std::exception&) {
      // No sample is delivered, which shows the device as late.
    }
    job = nullptr;
    lock.lock();
    shared->running.erase(key);
    shared->progress.notify_all();
  }
  if (files) {
    shared->freeFiles.push_back(std::move(files));
  }
  --shared->threads;
  shared->progress.notify_all();
}

}  // namespace emstatus::host
