#include <archive/core/objects/StoredTarNames.hpp>

#include <algorithm>
#include <string>

#include <archive_entry.h>

namespace tessel::io::archive::core {

namespace {

constexpr std::size_t kBlock = 512;
constexpr std::uint64_t kMaxPaxHeader = 16U << 20;  // more than libarchive itself accepts
constexpr std::size_t kFileBlock = 64 * 1024;

// A tar number: octal text, or base-256 when the first byte's high bit is set.
std::optional<std::uint64_t> number(const char* field, std::size_t size) {
    std::uint64_t value = 0;
    if ((static_cast<unsigned char>(field[0]) & 0x80U) != 0) {
        for (std::size_t i = 1; i < size; ++i) {
            if (value >> 56 != 0) {
                return std::nullopt;
            }
            value = (value << 8) | static_cast<unsigned char>(field[i]);
        }
        return value;
    }
    for (std::size_t i = 0; i < size && field[i] != '\0' && field[i] != ' '; ++i) {
        if (field[i] < '0' || field[i] > '7' || value >> 60 != 0) {
            return std::nullopt;
        }
        value = value * 8 + static_cast<std::uint64_t>(field[i] - '0');
    }
    return value;
}

// "length key=value\n" records; a later record wins, as in libarchive.
void readRecords(const std::string& data, PaxNames& names) {
    std::size_t at = 0;
    while (at < data.size()) {
        std::size_t length = 0;
        std::size_t i = at;
        while (i < data.size() && data[i] >= '0' && data[i] <= '9' && length <= data.size()) {
            length = length * 10 + static_cast<std::size_t>(data[i] - '0');
            ++i;
        }
        if (i >= data.size() || data[i] != ' ' || length <= i - at + 1 ||
            length > data.size() - at || data[at + length - 1] != '\n') {
            return;
        }
        const std::string record = data.substr(i + 1, at + length - 1 - (i + 1));
        const std::size_t equals = record.find('=');
        if (equals != std::string::npos) {
            const std::string key = record.substr(0, equals);
            if (key == "path") {
                names.path = record.substr(equals + 1);
            } else if (key == "linkpath") {
                names.linkPath = record.substr(equals + 1);
            }
        }
        at += length;
    }
}

}  // namespace

std::optional<PaxNames> readPaxNames(const ReadAt& readAt, std::uint64_t position) {
    PaxNames names;
    std::string header(kBlock, '\0');
    std::string data;
    // Extension headers come before the entry's own header: pax ('x'), global ('g'), GNU
    // long names ('L', 'K'). The first other header is the entry's.
    for (;;) {
        if (!readAt(position, header.data(), kBlock)) {
            return std::nullopt;
        }
        position += kBlock;
        const char type = header[156];
        if (type != 'x' && type != 'X' && type != 'g' && type != 'L' && type != 'K') {
            return names;
        }
        const std::optional<std::uint64_t> size = number(header.data() + 124, 12);
        if (!size || *size > kMaxPaxHeader) {
            return std::nullopt;
        }
        data.resize(*size);
        if (!readAt(position, data.data(), data.size())) {
            return std::nullopt;
        }
        position += (*size + kBlock - 1) / kBlock * kBlock;
        if (type == 'x' || type == 'X') {
            readRecords(data, names);
        }
    }
}

DecodedStream::DecodedStream(ReadAt file) : file_(std::move(file)) {}

DecodedStream::~DecodedStream() = default;

la_ssize_t DecodedStream::readCallback(::archive*, void* self, const void** buffer) {
    auto& stream = *static_cast<DecodedStream*>(self);
    // A file's last block is short: halve until the bytes are there.
    std::size_t size = kFileBlock;
    stream.block_.resize(kFileBlock);
    while (size > 0 && !stream.file_(stream.fileAt_, stream.block_.data(), size)) {
        size /= 2;
    }
    stream.fileAt_ += size;
    *buffer = stream.block_.data();
    return static_cast<la_ssize_t>(size);
}

bool DecodedStream::open() {
    handle_.reset(archive_read_new());
    ::archive_entry* entry = nullptr;
    return handle_ && archive_read_support_format_raw(handle_.get()) == ARCHIVE_OK &&
           archive_read_support_filter_all(handle_.get()) == ARCHIVE_OK &&
           archive_read_open(handle_.get(), this, nullptr, &DecodedStream::readCallback, nullptr) ==
               ARCHIVE_OK &&
           archive_read_next_header(handle_.get(), &entry) == ARCHIVE_OK;
}

bool DecodedStream::readAt(std::uint64_t offset, void* into, std::size_t size) {
    if (failed_ || offset < position_ || (!handle_ && !open())) {
        failed_ = failed_ || !handle_;
        return false;
    }
    std::string skipped;
    while (position_ < offset) {
        skipped.resize(
            static_cast<std::size_t>(std::min<std::uint64_t>(kFileBlock, offset - position_)));
        const la_ssize_t got = archive_read_data(handle_.get(), skipped.data(), skipped.size());
        if (got <= 0) {
            failed_ = true;
            return false;
        }
        position_ += static_cast<std::uint64_t>(got);
    }
    auto* bytes = static_cast<char*>(into);
    while (size > 0) {
        const la_ssize_t got = archive_read_data(handle_.get(), bytes, size);
        if (got <= 0) {
            failed_ = true;
            return false;
        }
        bytes += got;
        size -= static_cast<std::size_t>(got);
        position_ += static_cast<std::uint64_t>(got);
    }
    return true;
}

}  // namespace tessel::io::archive::core
