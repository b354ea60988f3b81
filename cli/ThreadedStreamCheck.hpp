#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <archive/core/CompressedStreamCheck.hpp>

namespace tqarchive {

// The library's gzip trailer check, run on another core: the extracting thread only
// copies each block it reads into a bounded queue, and a worker inflates them. The
// verdict is awaited when the archive ends, so the check costs the extraction about a
// copy of the compressed bytes instead of a second decompression.
class ThreadedStreamCheck final : public tessel::io::archive::core::CompressedStreamCheck {
  public:
    ThreadedStreamCheck();
    ~ThreadedStreamCheck() override;
    ThreadedStreamCheck(const ThreadedStreamCheck&) = delete;
    ThreadedStreamCheck& operator=(const ThreadedStreamCheck&) = delete;

    void consume(const void* bytes, std::size_t size) override;
    std::optional<std::string> finish() override;

    // What ExtractOptions::gzipCheck takes.
    static std::unique_ptr<tessel::io::archive::core::CompressedStreamCheck> make();

  private:
    void work();
    void stop();

    std::unique_ptr<tessel::io::archive::core::CompressedStreamCheck> check_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::vector<unsigned char>> queue_;
    std::vector<std::vector<unsigned char>> spare_;  // buffers to reuse
    bool ended_ = false;
    std::thread worker_;
};

}  // namespace tqarchive
