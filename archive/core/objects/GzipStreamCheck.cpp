#include <archive/core/objects/GzipStreamCheck.hpp>

#include <new>

namespace tessel::io::archive::core {

namespace {

constexpr unsigned char kMagic1 = 0x1f;
constexpr unsigned char kMagic2 = 0x8b;
// zlib's window bits for a gzip wrapper (trailer checked) around a 32 KiB window.
constexpr int kGzipWindowBits = 16 + MAX_WBITS;
constexpr std::size_t kScratchSize = 64 * 1024;

}  // namespace

GzipStreamCheck::GzipStreamCheck() : scratch_(kScratchSize) {}

GzipStreamCheck::~GzipStreamCheck() {
    if (initialised_) {
        inflateEnd(&stream_);
    }
}

void GzipStreamCheck::consume(const void* bytes, std::size_t size) {
    auto* data = static_cast<const unsigned char*>(bytes);
    if (state_ == State::Sniffing && size > 0) {
        if (memberBytesIn_ == 0) {
            first_ = data[0];
            memberBytesIn_ = 1;
            ++data;
            --size;
        }
        if (size == 0) {
            return;
        }
        if (first_ != kMagic1 || data[0] != kMagic2) {
            state_ = State::Done;  // not gzip: nothing to check
            return;
        }
        if (inflateInit2(&stream_, kGzipWindowBits) != Z_OK) {
            throw std::bad_alloc();
        }
        initialised_ = true;
        state_ = State::InMember;
        const unsigned char magic = kMagic1;
        memberBytesIn_ = 0;
        inflateSome(&magic, 1);
    }
    inflateSome(data, size);
}

void GzipStreamCheck::inflateSome(const unsigned char* bytes, std::size_t size) {
    while (size > 0 && (state_ == State::InMember || state_ == State::BetweenMembers)) {
        if (state_ == State::BetweenMembers) {
            // Another member must start with the magic byte; anything else is trailing data.
            if (bytes[0] != kMagic1) {
                state_ = State::Done;
                return;
            }
            inflateReset(&stream_);
            memberBytesIn_ = 0;
            state_ = State::InMember;
        }
        stream_.next_in = const_cast<unsigned char*>(bytes);
        stream_.avail_in = static_cast<uInt>(size);
        stream_.next_out = scratch_.data();
        stream_.avail_out = static_cast<uInt>(scratch_.size());
        const int status = inflate(&stream_, Z_NO_FLUSH);
        const std::size_t used = size - stream_.avail_in;
        memberBytesIn_ += used;
        bytes += used;
        size -= used;
        if (status == Z_STREAM_END) {
            ++membersDone_;
            state_ = State::BetweenMembers;
        } else if (status == Z_DATA_ERROR || status == Z_NEED_DICT || status == Z_MEM_ERROR) {
            // After a member, bytes that start like another but hold no gzip header are
            // trailing data, which readers ignore.
            if (membersDone_ > 0 && stream_.total_out == 0 && stream_.msg != nullptr &&
                std::string(stream_.msg) == "incorrect header check") {
                state_ = State::Done;
                return;
            }
            error_ = stream_.msg != nullptr ? stream_.msg : "invalid compressed data";
            state_ = State::Failed;
        } else if (status == Z_BUF_ERROR && used == 0 && stream_.avail_out != 0) {
            return;  // needs more input
        }
    }
}

std::optional<std::string> GzipStreamCheck::finish() {
    switch (state_) {
        case State::Failed:
            return error_;
        case State::InMember:
            return std::string("unexpected end of compressed data");
        default:
            return std::nullopt;
    }
}

std::unique_ptr<CompressedStreamCheck> makeGzipStreamCheck() {
    return std::make_unique<GzipStreamCheck>();
}

}  // namespace tessel::io::archive::core
