#pragma once

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <archive/core/CompressedStreamCheck.hpp>

namespace tqarchive {

// The library's gzip trailer check, run on a thread of its own: the second inflate it
// needs then costs no time on the thread that extracts, lists or tests. The bytes wait in
// a bounded queue, so memory stays flat however large the archive.
class BackgroundStreamCheck : public tessel::io::archive::core::CompressedStreamCheck {
  public:
    BackgroundStreamCheck();
    ~BackgroundStreamCheck() override;
    BackgroundStreamCheck(const BackgroundStreamCheck&) = delete;
    BackgroundStreamCheck& operator=(const BackgroundStreamCheck&) = delete;

    void consume(const void* bytes, std::size_t size) override;
    std::optional<std::string> finish() override;

    // What ExtractOptions::gzipCheck takes.
    static tessel::io::archive::core::StreamCheckFactory factory();

  private:
    void run();

    std::unique_ptr<tessel::io::archive::core::CompressedStreamCheck> check_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::vector<char>> queue_;
    bool ended_ = false;  // no more bytes will come (finish, or the call gave up)
    bool drained_ = false;
    std::optional<std::string> verdict_;
    std::thread worker_;  // last: started once everything above exists
};

}  // namespace tqarchive
