#include <archive/core/CreatedPaths.hpp>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>

namespace tessel::io::archive::core {

namespace {

std::string parentOf(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    if (slash == std::string::npos) {
        return std::string();
    }
    return slash == 0 ? std::string("/") : path.substr(0, slash);
}

std::string nameOf(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string withoutTrailingSeparators(std::string path) {
    while (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
    return path;
}

// "." and ".." name other things than what an entry made.
bool isOwnName(std::string_view name) {
    return !name.empty() && name != "." && name != "..";
}

CreatedPaths::Identity identityOf(const struct stat& status) {
    return {status.st_dev, status.st_ino};
}

bool same(const CreatedPaths::Identity& identity, const struct stat& status) {
    return identity.device == status.st_dev && identity.inode == status.st_ino;
}

class Descriptor {
  public:
    explicit Descriptor(int fd) noexcept : fd_(fd) {}
    ~Descriptor() {
        if (fd_ >= 0) {
            ::close(fd_);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int get() const noexcept { return fd_; }
    int release() noexcept { return std::exchange(fd_, -1); }
    void reset(int fd) noexcept {
        if (fd_ >= 0) {
            ::close(fd_);
        }
        fd_ = fd;
    }

  private:
    int fd_;
};

constexpr int kFolderFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;

}  // namespace

CreatedPaths::~CreatedPaths() {
    if (start_ >= 0) {
        ::close(start_);
    }
}

CreatedPaths::Plan CreatedPaths::plan(const std::string& path) {
    if (start_ < 0) {
        start_ = ::open(".", kFolderFlags);
    }
    Plan plan;
    const std::string target = withoutTrailingSeparators(path);
    // Nothing was in a folder this call made but what the call put there.
    const std::string name = nameOf(target);
    if (trustCreated_ && isOwnName(name)) {
        const auto parent = index_.find(parentOf(target));
        if (parent != index_.end() && folders_[parent->second].created &&
            !folders_[parent->second].made.contains(name)) {
            return plan;
        }
    }
    struct stat status {};
    if (::lstat(target.c_str(), &status) == 0) {
        plan.targetExists = true;
        plan.targetIsFolder = S_ISDIR(status.st_mode);
        plan.target = identityOf(status);
        return plan;
    }
    for (std::string folder = parentOf(target);
         !folder.empty() && folder != "/" && !index_.contains(folder); folder = parentOf(folder)) {
        if (::lstat(folder.c_str(), &status) == 0) {
            if (S_ISDIR(status.st_mode)) {
                remember(folder, identityOf(status), false, false);
                break;
            }
            if (S_ISLNK(status.st_mode) && ::stat(folder.c_str(), &status) == 0 &&
                S_ISDIR(status.st_mode)) {
                remember(folder, identityOf(status), false, true);
                break;
            }
            plan.fileInTheWay = folder;
        }
        plan.missingFolders.insert(plan.missingFolders.begin(), folder);
    }
    return plan;
}

void CreatedPaths::confirm(const std::string& path, const Plan& plan, bool isFolder,
                           bool settlesLater) {
    // The entry before is finished once this one's header is written.
    settle();
    const std::string target = withoutTrailingSeparators(path);
    for (const std::string& folder : plan.missingFolders) {
        if (folder == plan.fileInTheWay) {
            recordReplacingFolder(folder);
        } else {
            recordMade(folder);
        }
    }
    if (!plan.targetExists || (isFolder && !plan.targetIsFolder)) {
        // New, or a folder that replaced a file.
        if (plan.targetExists) {
            recordReplacingFolder(target);
        } else {
            recordMade(target);
        }
        if (settlesLater) {
            unsettled_.push_back(target);
        }
    } else if (isFolder) {
        if (!index_.contains(target)) {
            remember(target, plan.target, false, false);
        }
    } else {
        if (const auto replaced = index_.find(target);
            replaced != index_.end() && folders_[replaced->second].created) {
            trustCreated_ = false;
        }
        // What replaces an object this call made is its own as well: looked at once the
        // entry is finished (a replacement is renamed into place only then).
        const auto parent = index_.find(parentOf(target));
        if (parent != index_.end() && folders_[parent->second].made.contains(nameOf(target))) {
            recordMade(target);
            unsettled_.push_back(target);
        }
    }
}

CreatedPaths::Folder& CreatedPaths::folder(const std::string& path) {
    if (const auto found = index_.find(path); found != index_.end()) {
        return folders_[found->second];
    }
    Folder added;
    added.path = path;
    folders_.push_back(std::move(added));
    index_.emplace(folders_.back().path, folders_.size() - 1);
    return folders_.back();
}

void CreatedPaths::remember(const std::string& path, const Identity& identity, bool created,
                            bool followed) {
    Folder& known = folder(path);
    known.identity = identity;
    known.created = created;
    known.followed = followed;
}

// One query per object made: what is there now is what the cleanup may take back.
void CreatedPaths::recordMade(const std::string& path) {
    const std::string name = nameOf(path);
    struct stat status {};
    if (!isOwnName(name) || ::lstat(path.c_str(), &status) != 0) {
        return;
    }
    const bool isFolder = S_ISDIR(status.st_mode);
    folder(parentOf(path)).made[name] = Made{identityOf(status), isFolder};
    if (isFolder) {
        remember(path, identityOf(status), true, false);
    }
}

bool CreatedPaths::madeByThisCall(const std::string& path) const {
    const auto parent = index_.find(parentOf(path));
    return parent != index_.end() && folders_[parent->second].made.contains(nameOf(path));
}

void CreatedPaths::recordReplacingFolder(const std::string& path) {
    const bool replacesCallersFile = !madeByThisCall(path);
    recordMade(path);
    if (replacesCallersFile) {
        const auto parent = index_.find(parentOf(path));
        if (parent != index_.end()) {
            if (const auto made = folders_[parent->second].made.find(nameOf(path));
                made != folders_[parent->second].made.end()) {
                made->second.kept = true;
            }
        }
    }
}

void CreatedPaths::settle() {
    for (const std::string& path : unsettled_) {
        recordMade(path);
    }
    unsettled_.clear();
}

// Walks down from "/" or from the folder held at the start. A recorded folder must still be
// the object recorded, and is not a link unless it was one before; beneath one, no level
// may be a link. -1 when the walk cannot reach the folder it recorded.
int CreatedPaths::openFolder(const std::string& path) const {
    const bool absolute = !path.empty() && path.front() == '/';
    Descriptor current(absolute ? ::open("/", kFolderFlags)
                                : (start_ >= 0 ? ::fcntl(start_, F_DUPFD_CLOEXEC, 0) : -1));
    bool belowRecorded = false;
    std::size_t begin = absolute ? 1 : 0;
    while (current.get() >= 0 && begin < path.size()) {
        std::size_t end = path.find('/', begin);
        if (end == std::string::npos) {
            end = path.size();
        }
        if (end > begin) {
            const std::string name = path.substr(begin, end - begin);
            const auto found = index_.find(std::string_view(path).substr(0, end));
            const Folder* known = found == index_.end() ? nullptr : &folders_[found->second];
            const bool noLinks = known != nullptr ? !known->followed : belowRecorded;
            current.reset(
                ::openat(current.get(), name.c_str(), kFolderFlags | (noLinks ? O_NOFOLLOW : 0)));
            struct stat status {};
            if (current.get() >= 0 &&
                (::fstat(current.get(), &status) != 0 || !S_ISDIR(status.st_mode) ||
                 (known != nullptr && known->identity && !same(*known->identity, status)))) {
                current.reset(-1);
            }
            belowRecorded = belowRecorded || known != nullptr;
        }
        begin = end + 1;
    }
    return current.release();
}

void CreatedPaths::removeMadeIn(const Folder& folder) const {
    const Descriptor opened(openFolder(folder.path));
    if (opened.get() < 0) {
        return;  // moved, replaced or turned into a link: nothing is removed through it
    }
    for (const auto& [name, made] : folder.made) {
        struct stat status {};
        if (::fstatat(opened.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0 ||
            !same(made.identity, status) || S_ISDIR(status.st_mode) != made.isFolder) {
            continue;  // not what this call made
        }
        if (made.kept) {
            continue;
        }
        // A folder only when empty: anything else in it is not ours.
        ::unlinkat(opened.get(), name.c_str(), made.isFolder ? AT_REMOVEDIR : 0);
    }
}

void CreatedPaths::removeAll() noexcept {
    try {
        settle();
        // A folder is recorded after the one it lies in: backwards, what is in a folder goes
        // before the folder.
        for (auto folder = folders_.rbegin(); folder != folders_.rend(); ++folder) {
            if (!folder->made.empty()) {
                removeMadeIn(*folder);
            }
        }
    } catch (...) {
        // Out of memory while taking back: what is left stays, the failure reported matters
        // more.
    }
    folders_.clear();
    index_.clear();
    unsettled_.clear();
    trustCreated_ = true;
}

}  // namespace tessel::io::archive::core
