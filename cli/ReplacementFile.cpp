#include "ReplacementFile.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <random>

#include <host/MessageIdError.hpp>
#include <host/TextConversion.hpp>

#include "CliMessages.hpp"
#include "InterruptFlag.hpp"

namespace tqarchive {

namespace fs = std::filesystem;

namespace {

mode_t newFileMode() {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    return 0666 & ~mask;
}

std::u16string shown(const fs::path& path) {
    return tessel::host::fromFileSystemText(path.string());
}

// Opens a new file named after the target, hidden (so a leftover after a second Ctrl-C is
// recognisable), readable by its owner only until commit gives it its mode.
int openTemporary(int folder, const std::string& target, std::string& name) {
    static constexpr char kLetters[] =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    std::random_device random;
    std::uniform_int_distribution<std::size_t> pick(0, sizeof(kLetters) - 2);
    for (int attempt = 0; attempt < 100; ++attempt) {
        name = "." + target + ".";
        for (int i = 0; i < 6; ++i) {
            name += kLetters[pick(random)];
        }
        const int descriptor = ::openat(folder, name.c_str(),
                                        O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
        if (descriptor >= 0 || errno != EEXIST) {
            return descriptor;
        }
    }
    errno = EEXIST;
    return -1;
}

}  // namespace

ReplacementFile::ReplacementFile(fs::path target, const std::string& openError)
    : target_(std::move(target)), name_(target_.filename().string()) {
    const fs::path folder = target_.parent_path().empty() ? fs::path(".") : target_.parent_path();
    folder_ = ::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    if (folder_ >= 0) {
        descriptor_ = openTemporary(folder_, name_, temporary_);
    }
    if (descriptor_ < 0) {
        if (folder_ >= 0) {
            ::close(folder_);
        }
        const std::size_t colon = openError.rfind(':');
        tessel::host::MessageIdError(openError.substr(0, colon), openError.substr(colon + 1),
                                     {shown(target_)})
            .raise();
    }
}

ReplacementFile::~ReplacementFile() {
    if (!committed_) {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
        ::unlinkat(folder_, temporary_.c_str(), 0);
    }
    ::close(folder_);
}

void ReplacementFile::takeAttributesOf(const struct stat& source) {
    source_ = source;
}

void ReplacementFile::commit() {
    InterruptFlag::check();
    const auto fail = [this](int code) {
        raiseError("replaceFailed", {shown(target_), std::string(std::strerror(code))});
    };
    mode_t mode = newFileMode();
    struct stat replaced {};
    if (source_) {
        mode = source_->st_mode & 0777;
    } else if (::fstatat(folder_, name_.c_str(), &replaced, AT_SYMLINK_NOFOLLOW) == 0 &&
               S_ISREG(replaced.st_mode)) {
        mode = replaced.st_mode & 0777;
    }
    if (::fchmod(descriptor_, mode) != 0) {
        fail(errno);
    }
    if (source_) {
        const struct timespec times[2] = {{0, UTIME_OMIT}, source_->st_mtim};
        if (::futimens(descriptor_, times) != 0) {
            fail(errno);
        }
    }
    const int descriptor = descriptor_;
    descriptor_ = -1;
    if (::close(descriptor) != 0) {
        fail(errno);
    }
    if (::renameat(folder_, temporary_.c_str(), folder_, name_.c_str()) != 0) {
        fail(errno);
    }
    committed_ = true;
}

}  // namespace tqarchive
