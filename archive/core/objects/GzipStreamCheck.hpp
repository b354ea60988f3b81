#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include <zlib.h>

#include <archive/core/CompressedStreamCheck.hpp>

namespace tessel::io::archive::core {

// Inflates a gzip stream member by member with zlib, which compares each member's CRC-32
// and length with its trailer; the output is thrown away. Bytes after the last member
// that do not start another one are ignored, as libarchive's reader ignores them.
class GzipStreamCheck final : public CompressedStreamCheck {
  public:
    GzipStreamCheck();
    ~GzipStreamCheck() override;
    GzipStreamCheck(const GzipStreamCheck&) = delete;
    GzipStreamCheck& operator=(const GzipStreamCheck&) = delete;

    void consume(const void* bytes, std::size_t size) override;
    std::optional<std::string> finish() override;

  private:
    enum class State { Sniffing, InMember, BetweenMembers, Done, Failed };

    void inflateSome(const unsigned char* bytes, std::size_t size);

    z_stream stream_{};
    bool initialised_ = false;
    State state_ = State::Sniffing;
    unsigned char first_ = 0;  // the first byte, while the second is awaited
    std::size_t memberBytesIn_ = 0;
    std::size_t membersDone_ = 0;
    std::string error_;
    std::vector<unsigned char> scratch_;
};

}  // namespace tessel::io::archive::core
