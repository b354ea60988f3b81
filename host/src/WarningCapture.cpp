#include <host/WarningCapture.hpp>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <unordered_map>

namespace tessel::host {

namespace {

// The live captures of every thread, innermost last, under one lock: a capture may be
// destroyed on another thread than its own, while its own thread issues warnings.
struct Captures {
    std::mutex mutex;
    std::unordered_map<std::uint64_t, std::vector<WarningCapture*>> byThread;
};

Captures& captures() {
    // Never destroyed: calls made from atexit handlers and static destructors still warn.
    static Captures* const all = new Captures;
    return *all;
}

// The calling thread's number. Not the thread id, which a new thread may get as soon as
// the previous one ended, and which would then find a capture left behind by the other.
// A plain thread_local: one with a destructor is gone before atexit handlers run.
std::uint64_t threadNumber() {
    static std::atomic<std::uint64_t> next{1};
    thread_local std::uint64_t number = 0;
    if (number == 0) {
        number = next.fetch_add(1, std::memory_order_relaxed);
    }
    return number;
}

}  // namespace

WarningCapture::WarningCapture() : thread_(threadNumber()) {
    Captures& all = captures();
    std::lock_guard lock(all.mutex);
    all.byThread[thread_].push_back(this);
}

WarningCapture::~WarningCapture() {
    Captures& all = captures();
    std::lock_guard lock(all.mutex);
    const auto own = all.byThread.find(thread_);
    std::erase(own->second, this);
    if (own->second.empty()) {
        all.byThread.erase(own);
    }
}

std::vector<IssuedWarning> WarningCapture::warnings() const {
    std::lock_guard lock(captures().mutex);
    return warnings_;
}

bool WarningCapture::recordOnThisThread(IssuedWarning& warning) {
    Captures& all = captures();
    std::lock_guard lock(all.mutex);
    const auto own = all.byThread.find(threadNumber());
    if (own == all.byThread.end()) {
        return false;
    }
    own->second.back()->warnings_.push_back(std::move(warning));
    return true;
}

}  // namespace tessel::host
