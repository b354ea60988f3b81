#include "BackgroundStreamCheck.hpp"

#include <cstring>
#include <exception>

namespace tqarchive {

namespace core = tessel::io::archive::core;

namespace {

constexpr std::size_t kQueuedBlocks = 64;  // at most a few MiB waiting

}  // namespace

BackgroundStreamCheck::BackgroundStreamCheck()
    : check_(core::makeGzipStreamCheck()), worker_([this] { run(); }) {}

BackgroundStreamCheck::~BackgroundStreamCheck() {
    {
        const std::lock_guard lock(mutex_);
        ended_ = true;
        queue_.clear();  // a call that failed does not wait for the check
    }
    changed_.notify_all();
    worker_.join();
}

void BackgroundStreamCheck::consume(const void* bytes, std::size_t size) {
    std::vector<char> block(size);
    std::memcpy(block.data(), bytes, size);
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return queue_.size() < kQueuedBlocks; });
    queue_.push_back(std::move(block));
    lock.unlock();
    changed_.notify_all();
}

std::optional<std::string> BackgroundStreamCheck::finish() {
    std::unique_lock lock(mutex_);
    ended_ = true;
    changed_.notify_all();
    changed_.wait(lock, [this] { return drained_; });
    return verdict_;
}

void BackgroundStreamCheck::run() {
    // An exception cannot leave this thread: it becomes the verdict.
    std::optional<std::string> failure;
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return !queue_.empty() || ended_; });
        if (queue_.empty()) {
            break;
        }
        std::vector<char> block = std::move(queue_.front());
        queue_.pop_front();
        lock.unlock();
        changed_.notify_all();
        if (!failure) {
            try {
                check_->consume(block.data(), block.size());
            } catch (const std::exception& error) {
                failure = std::string("the check could not run: ") + error.what();
            }
        }
        lock.lock();
    }
    lock.unlock();
    std::optional<std::string> verdict = failure;
    if (!failure) {
        try {
            verdict = check_->finish();
        } catch (const std::exception& error) {
            verdict = std::string("the check could not run: ") + error.what();
        }
    }
    lock.lock();
    verdict_ = std::move(verdict);
    drained_ = true;
    lock.unlock();
    changed_.notify_all();
}

core::StreamCheckFactory BackgroundStreamCheck::factory() {
    return [] { return std::make_unique<BackgroundStreamCheck>(); };
}

}  // namespace tqarchive
