#include <host/HostPath.hpp>

#include <cerrno>
#include <system_error>

#include <host/FileSystemError.hpp>
#include <host/TextConversion.hpp>

namespace tessel::host {

namespace fs = std::filesystem;

namespace {

int kindOf(const std::error_code& code) {
    if (code == std::errc::permission_denied || code == std::errc::operation_not_permitted) {
        return FileSystemError::AccessDenied;
    }
    if (code == std::errc::no_such_file_or_directory || code == std::errc::not_a_directory) {
        return FileSystemError::NotFound;
    }
    return FileSystemError::Other;
}

[[noreturn]] void raiseFileSystemError(const char* operation, const HostPath& path,
                                       const std::error_code& code) {
    throw FileSystemError(kindOf(code),
                          std::string(operation) + " '" + path.access() + "': " + code.message());
}

bool isNotFound(const std::error_code& code) {
    return kindOf(code) == FileSystemError::NotFound;
}

}  // namespace

HostPath::HostPath(std::u16string text) : text_(std::move(text)) {}

HostPath::HostPath(const fs::path& path) : text_(fromFileSystemText(path.native())) {}

HostPath HostPath::fromFileSystem(std::string_view text) {
    return HostPath(fromFileSystemText(text));
}

HostPath HostPath::currentDirectory() {
    std::error_code code;
    const fs::path current = fs::current_path(code);
    if (code) {
        raiseFileSystemError("Cannot read the current folder", HostPath(), code);
    }
    return HostPath(current);
}

char16_t HostPath::separator() noexcept {
    return static_cast<char16_t>(fs::path::preferred_separator);
}

// On this platform the native separator is the generic one, so both forms are the text.
std::u16string HostPath::generic() const {
    return text_;
}

std::string HostPath::access() const {
    return toNarrow(text_);
}

fs::path HostPath::fsPath() const {
    return fs::path(access());
}

HostPath HostPath::fromText(const std::u16string& text, std::string_view argument) {
    requireFileSystemName(text, argument);
    return text.empty() ? HostPath() : HostPath(text).nativeForm();
}

HostPath HostPath::nativeForm() const {
    return *this;
}

// On this platform a path is absolute when it starts with the separator; the path
// operations below work on the text itself, as std::filesystem defines them, without
// building a std::filesystem::path for every entry of an archive.
bool HostPath::isAbsolute() const {
    return !text_.empty() && text_.front() == u'/';
}

HostPath HostPath::absolute(const HostPath& base) const {
    if (isAbsolute()) {
        return *this;
    }
    const HostPath anchor = base.empty() ? currentDirectory() : base.absolute();
    // An empty path names the base itself; appending "" would add a trailing separator.
    return empty() ? anchor : anchor / *this;
}

HostPath HostPath::parent() const {
    return HostPath(fsPath().parent_path());
}

std::u16string HostPath::stem() const {
    return fromFileSystemText(fsPath().stem().native());
}

std::u16string HostPath::extension() const {
    const std::string dotted = fsPath().extension().native();
    return dotted.empty() ? std::u16string() : fromFileSystemText(dotted.substr(1));
}

HostPath HostPath::relative() const {
    const std::size_t start = text_.find_first_not_of(u'/');
    return HostPath(start == std::u16string::npos ? std::u16string() : text_.substr(start));
}

HostPath HostPath::operator/(const HostPath& other) const {
    if (other.isAbsolute() || text_.empty()) {
        return other;
    }
    std::u16string joined = text_;
    if (joined.back() != u'/') {
        joined.push_back(u'/');
    }
    joined += other.text_;
    return HostPath(std::move(joined));
}

bool HostPath::exists() const {
    std::error_code code;
    const fs::file_status status = fs::status(fsPath(), code);
    if (!code) {
        return fs::exists(status);
    }
    if (isNotFound(code)) {
        return false;
    }
    raiseFileSystemError("Cannot check whether this exists", *this, code);
}

FileStatus HostPath::status() const {
    std::optional<FileStatus> status = statusIfExists();
    if (!status) {
        raiseFileSystemError("Cannot read the status of", *this,
                             std::make_error_code(std::errc::no_such_file_or_directory));
    }
    return *status;
}

std::optional<FileStatus> HostPath::statusIfExists() const {
    std::error_code code;
    const fs::file_status status = fs::status(fsPath(), code);
    if (code && isNotFound(code)) {
        return std::nullopt;
    }
    if (code) {
        raiseFileSystemError("Cannot read the status of", *this, code);
    }
    if (!fs::exists(status)) {
        return std::nullopt;
    }
    const auto has = [&status](fs::perms bit) {
        return (status.permissions() & bit) != fs::perms::none;
    };
    FileStatus result;
    result.isFolder = fs::is_directory(status);
    result.ownerRead = has(fs::perms::owner_read);
    result.ownerWrite = has(fs::perms::owner_write);
    result.groupRead = has(fs::perms::group_read);
    result.othersRead = has(fs::perms::others_read);
    return result;
}

bool HostPath::remove() const {
    std::error_code code;
    const bool removed = fs::remove(fsPath(), code);
    if (code) {
        raiseFileSystemError("Cannot remove", *this, code);
    }
    return removed;
}

}  // namespace tessel::host
