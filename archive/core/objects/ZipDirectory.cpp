#include <archive/core/objects/ZipDirectory.hpp>

#include <algorithm>
#include <array>

namespace tessel::io::archive::core {

namespace {

constexpr std::uint32_t kLocalSignature = 0x04034b50;
constexpr std::uint32_t kCentralSignature = 0x02014b50;
constexpr std::uint32_t kEndSignature = 0x06054b50;
constexpr std::uint32_t kZip64EndSignature = 0x06064b50;
constexpr std::uint32_t kZip64LocatorSignature = 0x07064b50;
constexpr std::size_t kEndSize = 22;
constexpr std::size_t kLocatorSize = 20;
constexpr std::size_t kZip64EndSize = 56;
constexpr std::size_t kCentralSize = 46;
constexpr std::size_t kLocalSize = 30;
constexpr std::uint16_t kZip64Field = 0x0001;
constexpr std::uint16_t kUnicodePathField = 0x7075;
constexpr std::uint16_t kUtf8Flag = 0x0800;
constexpr std::uint16_t kDescriptorFlag = 0x0008;
constexpr std::uint32_t kSaturated32 = 0xffffffffU;
constexpr std::uint16_t kSaturated16 = 0xffffU;

std::uint64_t little(const unsigned char* bytes, std::size_t count) {
    std::uint64_t value = 0;
    for (std::size_t i = count; i-- > 0;) {
        value = (value << 8) | bytes[i];
    }
    return value;
}

struct Sizes {
    std::uint64_t compressed = 0;
    std::uint64_t uncompressed = 0;
    std::uint64_t localOffset = 0;
};

struct Record {
    std::string name;
    std::string unicodeName;
    std::uint16_t flags = 0;
    std::uint16_t method = 0;
    std::uint32_t crc = 0;
    Sizes sizes;
};

// Replaces the saturated fields by the zip64 extra field's values, which come in the order
// uncompressed, compressed, offset, and only for the fields that are saturated.
bool readExtra(const std::string& extra, Record& record, bool saturatedCompressed,
               bool saturatedUncompressed, bool saturatedOffset) {
    std::size_t at = 0;
    while (at + 4 <= extra.size()) {
        const auto* field = reinterpret_cast<const unsigned char*>(extra.data() + at);
        const auto id = static_cast<std::uint16_t>(little(field, 2));
        const std::size_t size = little(field + 2, 2);
        if (at + 4 + size > extra.size()) {
            return false;
        }
        const unsigned char* value = field + 4;
        if (id == kZip64Field) {
            std::size_t used = 0;
            const auto take = [&](bool wanted, std::uint64_t& into) {
                if (!wanted) {
                    return true;
                }
                if (used + 8 > size) {
                    return false;
                }
                into = little(value + used, 8);
                used += 8;
                return true;
            };
            if (!take(saturatedUncompressed, record.sizes.uncompressed) ||
                !take(saturatedCompressed, record.sizes.compressed) ||
                !take(saturatedOffset, record.sizes.localOffset)) {
                return false;
            }
        } else if (id == kUnicodePathField && size > 5 && value[0] == 1) {
            record.unicodeName.assign(reinterpret_cast<const char*>(value + 5), size - 5);
        }
        at += 4 + size;
    }
    return true;
}

std::string describe(const std::string& name, const char* what) {
    return "the central directory and the local header of " + name + " disagree on " + what;
}

}  // namespace

ZipDirectory readZipDirectory(const ReadAt& readAt, std::uint64_t fileSize) {
    ZipDirectory directory;
    const auto fail = [&directory](std::string why) {
        directory.entries.clear();
        directory.damage = std::move(why);
        return directory;
    };
    // Without an end record there is no directory: libarchive then reads the local headers
    // alone, as every streaming reader does, and there is nothing to disagree with.
    if (fileSize < kEndSize) {
        return directory;
    }
    // The end record is the last one whose comment reaches the end of the file; a comment
    // is at most 65535 bytes.
    const std::uint64_t searched = std::min<std::uint64_t>(fileSize, kEndSize + kSaturated16);
    std::string tail(searched, '\0');
    if (!readAt(fileSize - searched, tail.data(), tail.size())) {
        return fail("the end of the file cannot be read");
    }
    std::optional<std::uint64_t> endAt;
    for (std::size_t at = tail.size() - kEndSize + 1; at-- > 0;) {
        const auto* bytes = reinterpret_cast<const unsigned char*>(tail.data() + at);
        if (little(bytes, 4) == kEndSignature &&
            at + kEndSize + little(bytes + 20, 2) <= tail.size()) {
            endAt = fileSize - searched + at;
            break;
        }
    }
    if (!endAt) {
        return directory;
    }
    const auto* end =
        reinterpret_cast<const unsigned char*>(tail.data() + (*endAt - (fileSize - searched)));
    std::uint64_t count = little(end + 10, 2);
    std::uint64_t directorySize = little(end + 12, 4);
    std::uint64_t directoryOffset = little(end + 16, 4);
    std::uint64_t directoryEnd = *endAt;
    if (count == kSaturated16 || directorySize == kSaturated32 || directoryOffset == kSaturated32) {
        std::array<unsigned char, kLocatorSize> locator{};
        std::array<unsigned char, kZip64EndSize> end64{};
        if (*endAt >= kLocatorSize && readAt(*endAt - kLocatorSize, locator.data(), kLocatorSize) &&
            little(locator.data(), 4) == kZip64LocatorSignature) {
            const std::uint64_t end64At = little(locator.data() + 8, 8);
            if (end64At > *endAt || !readAt(end64At, end64.data(), end64.size()) ||
                little(end64.data(), 4) != kZip64EndSignature) {
                return fail("unreadable zip64 end of central directory record");
            }
            count = little(end64.data() + 32, 8);
            directorySize = little(end64.data() + 40, 8);
            directoryOffset = little(end64.data() + 48, 8);
            directoryEnd = end64At;
        }
    }
    // Data before the archive (a self-extracting stub) shifts every offset alike.
    if (directorySize > directoryEnd || directoryOffset > directoryEnd - directorySize) {
        return fail("the central directory lies outside the file");
    }
    const std::uint64_t shift = directoryEnd - directorySize - directoryOffset;
    if (count > directorySize / kCentralSize) {
        return fail("more central directory records than fit in it");
    }
    std::string records(directorySize, '\0');
    if (!readAt(directoryEnd - directorySize, records.data(), records.size())) {
        return fail("the central directory cannot be read");
    }
    std::vector<Record> central;
    central.reserve(count);
    std::size_t at = 0;
    for (std::uint64_t i = 0; i < count; ++i) {
        if (at + kCentralSize > records.size()) {
            return fail("the central directory is cut short");
        }
        const auto* bytes = reinterpret_cast<const unsigned char*>(records.data() + at);
        if (little(bytes, 4) != kCentralSignature) {
            return fail("a central directory record is damaged");
        }
        const std::size_t nameSize = little(bytes + 28, 2);
        const std::size_t extraSize = little(bytes + 30, 2);
        const std::size_t commentSize = little(bytes + 32, 2);
        if (at + kCentralSize + nameSize + extraSize + commentSize > records.size()) {
            return fail("the central directory is cut short");
        }
        Record record;
        record.flags = static_cast<std::uint16_t>(little(bytes + 8, 2));
        record.method = static_cast<std::uint16_t>(little(bytes + 10, 2));
        record.crc = static_cast<std::uint32_t>(little(bytes + 16, 4));
        record.sizes = {little(bytes + 20, 4), little(bytes + 24, 4), little(bytes + 42, 4)};
        record.name = records.substr(at + kCentralSize, nameSize);
        if (!readExtra(records.substr(at + kCentralSize + nameSize, extraSize), record,
                       record.sizes.compressed == kSaturated32,
                       record.sizes.uncompressed == kSaturated32,
                       record.sizes.localOffset == kSaturated32)) {
            return fail("a central directory record's extra field is damaged");
        }
        central.push_back(std::move(record));
        at += kCentralSize + nameSize + extraSize + commentSize;
    }
    std::stable_sort(central.begin(), central.end(), [](const Record& a, const Record& b) {
        return a.sizes.localOffset < b.sizes.localOffset;
    });
    std::optional<std::uint64_t> previous;
    for (const Record& record : central) {
        const std::uint64_t localAt = record.sizes.localOffset + shift;
        if (previous && *previous == localAt) {
            return fail("two central directory records point at one local header of " +
                        record.name);
        }
        previous = localAt;
        std::array<unsigned char, kLocalSize> header{};
        if (localAt > fileSize || !readAt(localAt, header.data(), header.size()) ||
            little(header.data(), 4) != kLocalSignature) {
            return fail("the local header of " + record.name + " is missing");
        }
        const std::size_t nameSize = little(header.data() + 26, 2);
        const std::size_t extraSize = little(header.data() + 28, 2);
        std::string nameAndExtra(nameSize + extraSize, '\0');
        if (!readAt(localAt + kLocalSize, nameAndExtra.data(), nameAndExtra.size())) {
            return fail("the local header of " + record.name + " is cut short");
        }
        Record local;
        local.flags = static_cast<std::uint16_t>(little(header.data() + 6, 2));
        local.method = static_cast<std::uint16_t>(little(header.data() + 8, 2));
        local.crc = static_cast<std::uint32_t>(little(header.data() + 14, 4));
        local.sizes = {little(header.data() + 18, 4), little(header.data() + 22, 4), 0};
        local.name = nameAndExtra.substr(0, nameSize);
        // A local zip64 field holds both sizes whenever it is there.
        const bool zip64 =
            local.sizes.compressed == kSaturated32 || local.sizes.uncompressed == kSaturated32;
        if (!readExtra(nameAndExtra.substr(nameSize), local, zip64, zip64, false)) {
            return fail("the local header of " + record.name + " has a damaged extra field");
        }
        if (local.name != record.name) {
            return fail(describe(record.name, "its name"));
        }
        if (local.method != record.method) {
            return fail(describe(record.name, "its compression method"));
        }
        // With a data descriptor the local header leaves CRC and sizes to the descriptor.
        if ((local.flags & kDescriptorFlag) == 0 &&
            (local.crc != record.crc || local.sizes.compressed != record.sizes.compressed ||
             local.sizes.uncompressed != record.sizes.uncompressed)) {
            return fail(describe(record.name, "its CRC or sizes"));
        }
        ZipDirectoryEntry entry;
        entry.localOffset = localAt;
        if (!local.unicodeName.empty()) {
            entry.name = local.unicodeName;
            entry.utf8 = true;
        } else {
            entry.name = record.name;
            entry.utf8 = (record.flags & kUtf8Flag) != 0;
        }
        directory.entries.push_back(std::move(entry));
    }
    return directory;
}

}  // namespace tessel::io::archive::core
