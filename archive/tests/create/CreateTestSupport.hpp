#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace tqtest {

namespace fs = std::filesystem;

inline constexpr const char* kInternalError = "TESSEL:io:archive:extractArchive:internalError";

// Relative generic path (no trailing slash) -> "folder" or the file's bytes, and its mode
// (0 when modes are not compared).
using TreeSnapshot = std::map<std::string, std::pair<std::string, unsigned>>;
TreeSnapshot snapshotTree(const fs::path& root, bool withModes);

// Accented, CJK and emoji names, nested folders (named with a trailing slash), an empty
// file, a file of exactly one copy chunk, incompressible data and several modes.
struct SampleInputs {
    std::vector<std::u16string> files;
    std::vector<std::u16string> names;
};
SampleInputs makeSampleTree(const fs::path& root);

// "identifier(argument,...)" of the host error the call raised, or "no error".
std::string outcome(const std::function<void()>& call);
// What bsdtar lists, one name a line, or "unreadable: ...".
std::string listing(const fs::path& archive);

}  // namespace tqtest
