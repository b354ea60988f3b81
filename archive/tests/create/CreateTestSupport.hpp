#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace tqtest {

namespace fs = std::filesystem;

// One file or folder of a tree on disk.
struct TreeNode {
    bool folder = false;
    std::string bytes;
    unsigned mode = 0;
    friend bool operator==(const TreeNode&, const TreeNode&) = default;
};
// Relative generic path (UTF-8, no trailing slash) -> node.
using TreeSnapshot = std::map<std::string, TreeNode>;

// Every file and folder under root. Without modes, they are all 0 (for readers that do
// not restore permissions).
TreeSnapshot snapshotTree(const fs::path& root, bool withModes = true);

// The inputs of an archive: paths on disk and the entry name of each (folders named
// with a trailing slash), parents before their contents.
struct SampleInputs {
    std::vector<std::u16string> files;
    std::vector<std::u16string> names;
};

// A tree with accented, CJK and emoji names, nested folders, an empty file, a file of
// exactly one copy chunk, incompressible data and several permission modes.
SampleInputs makeSampleTree(const fs::path& root);

// Entry names without the trailing slash that tar formats drop from folder names.
std::vector<std::u16string> withoutTrailingSlash(std::vector<std::u16string> names);

}  // namespace tqtest
