#include "SafePathCheck.hpp"

#include <archive.h>
#include <archive_entry.h>

#include <memory>

#include "CliMessages.hpp"

namespace tqarchive {

namespace {

// The components of an entry name as extraction will use it: one trailing carriage return
// dropped (extraction strips it), the root dropped (extraction re-roots absolute names),
// empty and "." components dropped.
std::vector<std::string> components(std::string name) {
    if (!name.empty() && name.back() == '\r') {
        name.pop_back();
    }
    std::vector<std::string> parts;
    std::size_t at = 0;
    while (at <= name.size()) {
        std::size_t slash = name.find('/', at);
        if (slash == std::string::npos) {
            slash = name.size();
        }
        std::string part = name.substr(at, slash - at);
        if (!part.empty() && part != ".") {
            parts.push_back(std::move(part));
        }
        at = slash + 1;
    }
    return parts;
}

bool hasDotDot(const std::vector<std::string>& parts) {
    for (const std::string& part : parts) {
        if (part == "..") {
            return true;
        }
    }
    return false;
}

std::string join(const std::vector<std::string>& parts, std::size_t count) {
    std::string joined;
    for (std::size_t i = 0; i < count; ++i) {
        joined += (i == 0 ? "" : "/") + parts[i];
    }
    return joined;
}

const char* entryName(archive_entry* entry) {
    const char* name = archive_entry_pathname(entry);
    return name != nullptr ? name : archive_entry_pathname_utf8(entry);
}

const char* hardlinkTarget(archive_entry* entry) {
    const char* target = archive_entry_hardlink(entry);
    return target != nullptr ? target : archive_entry_hardlink_utf8(entry);
}

bool enableFormats(archive* handle, const std::string& format) {
    if (format == "zip") {
        return archive_read_support_format_zip(handle) == ARCHIVE_OK;
    }
    if (format == "tgz") {
        return archive_read_support_format_tar(handle) == ARCHIVE_OK &&
               archive_read_support_filter_gzip(handle) == ARCHIVE_OK;
    }
    return archive_read_support_format_all(handle) == ARCHIVE_OK &&
           archive_read_support_filter_all(handle) == ARCHIVE_OK;
}

}  // namespace

void SafePathCheck::verify(const std::string& archivePath, const std::string& format,
                           const std::string& password, bool outputIsCurrentFolder) {
    auto closeAndFree = [](archive* handle) { archive_read_free(handle); };
    std::unique_ptr<archive, decltype(closeAndFree)> reader(archive_read_new(), closeAndFree);
    if (!reader || !enableFormats(reader.get(), format)) {
        return;
    }
    if (!password.empty()) {
        archive_read_add_passphrase(reader.get(), password.c_str());
    }
    if (archive_read_open_filename(reader.get(), archivePath.c_str(), 10240) != ARCHIVE_OK) {
        return;
    }

    SafePathCheck pass(archivePath, outputIsCurrentFolder);
    archive_entry* entry = nullptr;
    for (;;) {
        const int status = archive_read_next_header(reader.get(), &entry);
        if (status == ARCHIVE_EOF || status < ARCHIVE_WARN) {
            return;
        }
        pass.check(entry);
        // A failed skip loses only this entry's data; the next header may still be read.
        if (archive_read_data_skip(reader.get()) == ARCHIVE_FATAL) {
            return;
        }
    }
}

void SafePathCheck::check(archive_entry* entry) {
    const char* rawName = entryName(entry);
    if (rawName == nullptr) {
        return;  // extraction reports a nameless entry itself
    }
    const std::string name(rawName);
    const std::vector<std::string> parts = components(name);
    if (hasDotDot(parts)) {
        refuse(name, "its name has a '..' component");
    }

    const bool isLink = archive_entry_filetype(entry) == AE_IFLNK;
    for (std::size_t count = 1; count <= parts.size(); ++count) {
        // The entry may replace a link with another link, never write through one.
        if (count == parts.size() && isLink) {
            break;
        }
        const std::string prefix = join(parts, count);
        if (links_.contains(prefix)) {
            refuse(name, "it is written through the symbolic link '" + prefix +
                             "' that an earlier entry of the archive creates");
        }
    }

    if (const char* target = hardlinkTarget(entry); target != nullptr) {
        const std::string linked(target);
        const std::vector<std::string> targetParts = components(linked);
        if (linked.starts_with("/") || hasDotDot(targetParts)) {
            refuse(name, "it is a hard link to '" + linked + "'");
        }
        if (!outputIsCurrentFolder_) {
            refuse(name, "it is a hard link to '" + linked +
                             "', which extraction looks up from the current folder, not from "
                             "the output folder (extract with -d . from the output folder)");
        }
        for (std::size_t count = 1; count <= targetParts.size(); ++count) {
            if (links_.contains(join(targetParts, count))) {
                refuse(name, "it is a hard link through the symbolic link '" +
                                 join(targetParts, count) + "' that the archive creates");
            }
        }
    }

    if (isLink) {
        links_.insert(join(parts, parts.size()));
    }
}

void SafePathCheck::refuse(const std::string& entryName, const std::string& reason) const {
    raiseError("unsafeEntryPath", {archivePath_, entryName, reason});
}

}  // namespace tqarchive
