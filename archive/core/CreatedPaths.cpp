#include <archive/core/CreatedPaths.hpp>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <string_view>

namespace tessel::io::archive::core {

namespace {

std::string parentOf(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    if (slash == std::string::npos) {
        return std::string();
    }
    return slash == 0 ? std::string("/") : path.substr(0, slash);
}

}  // namespace

CreatedPaths::Plan CreatedPaths::plan(const std::string& path) {
    Plan plan;
    std::string target = path;
    while (target.size() > 1 && target.back() == '/') {
        target.pop_back();
    }
    // Nothing was in a folder this call made but what the call put there ("." and ".."
    // name other things).
    const std::size_t slash = target.find_last_of('/');
    const std::string_view name =
        std::string_view(target).substr(slash == std::string::npos ? 0 : slash + 1);
    if (name != "." && name != ".." && createdFolders_.contains(parentOf(target)) &&
        !createdItems_.contains(target) && !createdFolders_.contains(target)) {
        return plan;
    }
    struct stat status {};
    if (::lstat(target.c_str(), &status) == 0) {
        plan.targetExists = true;
        plan.targetIsFolder = S_ISDIR(status.st_mode);
        return plan;
    }
    for (std::string folder = parentOf(target);
         !folder.empty() && folder != "/" && !knownFolders_.contains(folder);
         folder = parentOf(folder)) {
        if (::lstat(folder.c_str(), &status) == 0) {
            knownFolders_.insert(folder);
            break;
        }
        plan.missingFolders.insert(plan.missingFolders.begin(), folder);
    }
    return plan;
}

void CreatedPaths::confirm(const std::string& path, const Plan& plan, bool isFolder) {
    std::string target = path;
    while (target.size() > 1 && target.back() == '/') {
        target.pop_back();
    }
    for (const std::string& folder : plan.missingFolders) {
        created_.push_back(folder);
        knownFolders_.insert(folder);
        createdFolders_.insert(folder);
    }
    if (!plan.targetExists) {
        created_.push_back(target);
        (isFolder ? createdFolders_ : createdItems_).insert(target);
    } else if (!isFolder && createdFolders_.contains(target)) {
        // A folder made here is replaced (by a link, say): paths beneath it may lead
        // elsewhere now, so every entry is looked up again.
        createdFolders_.clear();
    }
    if (isFolder) {
        knownFolders_.insert(target);
    }
}

void CreatedPaths::removeAll() noexcept {
    for (auto path = created_.rbegin(); path != created_.rend(); ++path) {
        struct stat status {};
        if (::lstat(path->c_str(), &status) != 0) {
            continue;
        }
        if (S_ISDIR(status.st_mode)) {
            ::rmdir(path->c_str());  // only when empty: anything else in it is not ours
        } else {
            ::unlink(path->c_str());
        }
    }
    created_.clear();
    knownFolders_.clear();
    createdFolders_.clear();
    createdItems_.clear();
}

}  // namespace tessel::io::archive::core
