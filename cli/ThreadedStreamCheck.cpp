#include "ThreadedStreamCheck.hpp"

#include <cstring>

namespace tqarchive {

namespace {

// Blocks the reader may be ahead of the check: enough to ride out scheduling, little
// memory (libarchive reads 64 KiB at a time).
constexpr std::size_t kQueueLimit = 32;

}  // namespace

ThreadedStreamCheck::ThreadedStreamCheck()
    : check_(tessel::io::archive::core::makeGzipStreamCheck()), worker_([this] { work(); }) {}

ThreadedStreamCheck::~ThreadedStreamCheck() {
    stop();
}

std::unique_ptr<tessel::io::archive::core::CompressedStreamCheck> ThreadedStreamCheck::make() {
    return std::make_unique<ThreadedStreamCheck>();
}

void ThreadedStreamCheck::consume(const void* bytes, std::size_t size) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return queue_.size() < kQueueLimit; });
    std::vector<unsigned char> block;
    if (!spare_.empty()) {
        block = std::move(spare_.back());
        spare_.pop_back();
    }
    block.resize(size);
    std::memcpy(block.data(), bytes, size);
    queue_.push_back(std::move(block));
    changed_.notify_all();
}

void ThreadedStreamCheck::work() {
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return !queue_.empty() || ended_; });
        if (queue_.empty()) {
            return;  // ended, and everything handed over is checked
        }
        std::vector<unsigned char> block = std::move(queue_.front());
        queue_.pop_front();
        changed_.notify_all();
        lock.unlock();
        check_->consume(block.data(), block.size());
        lock.lock();
        spare_.push_back(std::move(block));
    }
}

void ThreadedStreamCheck::stop() {
    {
        std::lock_guard lock(mutex_);
        ended_ = true;
    }
    changed_.notify_all();
    if (worker_.joinable()) {
        worker_.join();
    }
}

std::optional<std::string> ThreadedStreamCheck::finish() {
    stop();
    return check_->finish();
}

}  // namespace tqarchive
