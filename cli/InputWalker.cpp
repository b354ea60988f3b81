#include "InputWalker.hpp"

#include <fnmatch.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>

#include "CliMessages.hpp"

namespace tqarchive {

namespace fs = std::filesystem;

namespace {

std::string errnoText(int code) {
    return std::strerror(code);
}

// The name of the input relative to base, "" for base itself; false when it lies outside.
bool nameUnder(const fs::path& input, const fs::path& base, std::string& name) {
    const fs::path relative = input.lexically_relative(base);
    if (relative.empty()) {
        return false;
    }
    const auto first = *relative.begin();
    if (first == "..") {
        return false;
    }
    name = relative == "." ? std::string() : relative.generic_string();
    return true;
}

}  // namespace

fs::path InputWalker::normal(const fs::path& path) {
    fs::path result = fs::absolute(path).lexically_normal();
    // "dir/" and "dir" are the same input.
    if (!result.has_filename() && result.has_relative_path()) {
        result = result.parent_path();
    }
    return result;
}

void InputWalker::exclude(const fs::path& file) {
    struct stat info {};
    if (::stat(file.c_str(), &info) == 0) {
        excluded_.insert({info.st_dev, info.st_ino});
    }
}

void InputWalker::add(const fs::path& input, const fs::path& base) {
    std::string name;
    if (!nameUnder(normal(input), base, name)) {
        raiseError("inputOutsideRoot", {input.string(), base.string()});
    }
    struct stat info {};
    if (::stat(input.c_str(), &info) != 0) {
        const int code = errno;
        if (code == ELOOP) {
            raiseError("symlinkLoop", {input.string()});
        }
        raiseError("inputNotFound", {input.string(), errnoText(code)});
    }
    if (!S_ISREG(info.st_mode) && !S_ISDIR(info.st_mode)) {
        // Named by the user, it was asked for: leaving it out would end the run as if done.
        raiseError("unsupportedFileType", {input.string()});
    }
    // The folders that really contain the input count as ancestors too, so that a link
    // to one of them (to "/", say) is a loop rather than a walk of the whole disk.
    std::vector<FileId> ancestors;
    std::error_code error;
    const fs::path real = fs::canonical(input, error);
    for (fs::path folder = real.parent_path(); !error && !folder.empty();
         folder = folder.parent_path()) {
        if (::stat(folder.c_str(), &info) == 0) {
            ancestors.push_back({info.st_dev, info.st_ino});
        }
        if (folder == folder.root_path()) {
            break;
        }
    }
    visit(input, normal(input).native(), name, ancestors, false);
}

bool InputWalker::excluded(const std::string& name) const {
    if (name.empty()) {
        return false;  // the root folder itself, which has no entry
    }
    const std::string base = name.substr(name.rfind('/') + 1);
    return std::any_of(patterns_.begin(), patterns_.end(), [&](const std::string& pattern) {
        return ::fnmatch(pattern.c_str(), name.c_str(), 0) == 0 ||
               ::fnmatch(pattern.c_str(), base.c_str(), 0) == 0;
    });
}

void InputWalker::visit(const fs::path& diskPath, const std::string& normalPath,
                        const std::string& name, std::vector<FileId>& ancestors, bool nested) {
    if (excluded(name)) {
        return;
    }
    struct stat info {};
    if (nested && skipNestedLinks_ && ::lstat(diskPath.c_str(), &info) == 0 &&
        S_ISLNK(info.st_mode)) {
        issueWarning("linkSkipped", {diskPath.string()});
        return;
    }
    if (::stat(diskPath.c_str(), &info) != 0) {
        const int code = errno;
        issueWarning(code == ELOOP ? "symlinkLoop" : "brokenLink",
                     code == ELOOP ? std::vector<tessel::host::MessageArgument>{diskPath.string()}
                                   : std::vector<tessel::host::MessageArgument>{diskPath.string(),
                                                                                errnoText(code)});
        return;
    }
    const FileId id{info.st_dev, info.st_ino};
    if (S_ISREG(info.st_mode)) {
        if (!excluded_.contains(id)) {
            emit(diskPath, normalPath, name, false, nested,
                 static_cast<std::uint64_t>(info.st_size));
        }
        return;
    }
    if (!S_ISDIR(info.st_mode)) {
        issueWarning("unsupportedFileType", {diskPath.string()});
        return;
    }
    if (std::find(ancestors.begin(), ancestors.end(), id) != ancestors.end()) {
        issueWarning("symlinkLoop", {diskPath.string()});
        return;
    }
    // A folder listed before was walked then, with everything beneath it.
    if (!name.empty() && !emit(diskPath, normalPath, name + "/", true, nested, 0)) {
        return;
    }

    std::vector<fs::path> children;
    std::error_code error;
    for (fs::directory_iterator it(diskPath, error), end; !error && it != end;
         it.increment(error)) {
        children.push_back(it->path().filename());
    }
    if (error) {
        issueWarning("unreadableFolder", {diskPath.string(), error.message()});
        return;
    }
    std::sort(children.begin(), children.end());

    ancestors.push_back(id);
    for (const fs::path& child : children) {
        const std::string childName = name.empty() ? child.string() : name + "/" + child.string();
        // A name read from a folder is neither "." nor "..": the normal form only grows.
        const std::string separator = normalPath.ends_with('/') ? "" : "/";  // "/" itself
        visit(diskPath / child, normalPath + separator + child.native(), childName, ancestors,
              true);
    }
    ancestors.pop_back();
}

bool InputWalker::emit(const fs::path& diskPath, const std::string& normalPath, std::string name,
                       bool folder, bool nested, std::uint64_t size) {
    if (!seen_.insert(normalPath).second) {
        return false;
    }
    inputs_.push_back({diskPath, std::move(name), folder, nested, size});
    return true;
}

}  // namespace tqarchive
