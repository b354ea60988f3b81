#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace tessel::host {

// Status of a path as the host reports it.
struct FileStatus {
    bool isFolder = false;
    bool ownerRead = false;
    bool ownerWrite = false;
    bool groupRead = false;
    bool othersRead = false;
};

// The host's path value: UTF-16 text over std::filesystem. On Linux the native and
// generic forms coincide and the access form (for operating-system calls) is UTF-8.
class HostPath {
  public:
    HostPath() = default;
    explicit HostPath(std::u16string text);
    explicit HostPath(const char16_t* text) : HostPath(std::u16string(text)) {}
    explicit HostPath(const std::filesystem::path& path);

    // The native form of a path text given by a caller; an empty text stays an empty path.
    // Text that cannot name a file as written (a NUL, a lone surrogate) is refused with
    // the host's path-text error naming the argument.
    static HostPath fromText(const std::u16string& text, std::string_view argument = "path");
    // Decodes file-system text (bytes, UTF-8 by convention) into a path, losslessly.
    static HostPath fromFileSystem(std::string_view text);
    // The process's current folder.
    static HostPath currentDirectory();
    // The preferred separator and the generic separator "/".
    static char16_t separator() noexcept;
    static char16_t genericSeparator() noexcept { return u'/'; }

    bool empty() const noexcept { return text_.empty(); }
    // Native form, UTF-16.
    const std::u16string& native() const noexcept { return text_; }
    // Generic form (separators "/"), UTF-16.
    std::u16string generic() const;
    // Narrow form for operating-system calls.
    std::string access() const;
    std::filesystem::path fsPath() const;

    // This path in native form (separators made native, nothing else changed).
    HostPath nativeForm() const;
    bool isAbsolute() const;
    // Absolute form against base; an empty base means the current folder.
    HostPath absolute(const HostPath& base = HostPath()) const;
    HostPath parent() const;
    // File name without its last extension.
    std::u16string stem() const;
    // Last extension, without its dot; empty when there is none.
    std::u16string extension() const;
    // The path with its root (root name and root folder) stripped.
    HostPath relative() const;
    // Concatenation with the separator between the two parts.
    HostPath operator/(const HostPath& other) const;

    // File-system queries; failures raise FileSystemError (kind 6 = access denied).
    bool exists() const;
    FileStatus status() const;
    // The status, or nothing when the path does not exist (one query instead of two).
    std::optional<FileStatus> statusIfExists() const;
    // Removes a file or an empty folder; returns whether something was removed.
    bool remove() const;

    friend bool operator==(const HostPath&, const HostPath&) = default;

  private:
    std::u16string text_;
};

}  // namespace tessel::host
