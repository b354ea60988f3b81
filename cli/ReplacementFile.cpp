#include "ReplacementFile.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

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

}  // namespace

ReplacementFile::ReplacementFile(fs::path target, const std::string& openError)
    : target_(std::move(target)) {
    const fs::path folder = target_.parent_path().empty() ? fs::path(".") : target_.parent_path();
    // Hidden and named after the target, so a leftover (after a second Ctrl-C) is recognisable.
    std::string hidden = ".";
    hidden += target_.filename().string();
    hidden += ".XXXXXX";
    std::string pattern = (folder / hidden).string();
    descriptor_ = ::mkstemp(pattern.data());
    if (descriptor_ < 0) {
        const std::size_t colon = openError.rfind(':');
        tessel::host::MessageIdError(openError.substr(0, colon), openError.substr(colon + 1),
                                     {shown(target_)})
            .raise();
    }
    temporary_ = pattern;
}

ReplacementFile::~ReplacementFile() {
    if (!committed_) {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
        ::unlink(temporary_.c_str());
    }
}

void ReplacementFile::commit() {
    InterruptFlag::check();
    const auto fail = [this](int code) {
        raiseError("replaceFailed", {shown(target_), std::string(std::strerror(code))});
    };
    if (::fchmod(descriptor_, newFileMode()) != 0) {
        fail(errno);
    }
    const int descriptor = descriptor_;
    descriptor_ = -1;
    if (::close(descriptor) != 0) {
        fail(errno);
    }
    if (std::rename(temporary_.c_str(), target_.c_str()) != 0) {
        fail(errno);
    }
    committed_ = true;
}

}  // namespace tqarchive
