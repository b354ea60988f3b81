#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "../support/TestSupport.hpp"

namespace tqtest {

// Runs a shell command that must succeed (archives are made with real tools).
void sh(const std::string& commandLine);

// Skips the current test (from its body) when a tool is missing.
#define REQUIRE_TOOLS(...)                                \
    for (const char* tool_ : {__VA_ARGS__}) {             \
        if (!::tqtest::toolAvailable(tool_)) {            \
            GTEST_SKIP() << tool_ << " is not installed"; \
        }                                                 \
    }

// One file of the sample tree: relative name, content (empty for a folder: name ends
// with "/"), mode; a symlink has target set.
struct SampleFile {
    std::string name;
    std::string content;
    unsigned mode = 0644;
    std::string target;
};

// The tree every interoperability case packs: files at two depths, an empty folder,
// odd modes and (optionally) a relative symlink, all with one fixed modification time.
std::vector<SampleFile> sampleTree(bool withLink);
inline constexpr long long kSampleTime = 981173106;  // 2001-02-03 04:05:06 UTC, even
void writeTree(const fs::path& root, const std::vector<SampleFile>& files);

// The first error libarchive reports when it reads the first entry's data with the
// password ("" when the data reads cleanly): tells which wrong passwords get past the
// one-byte check of traditional zip encryption.
std::string firstDataError(const fs::path& archive, const std::string& password);

// The entry names of an archive in archive order, as bsdtar lists them.
std::vector<std::string> listEntries(const fs::path& archive);

// prefix + "/" + each name.
std::vector<std::u16string> under(const fs::path& prefix, const std::vector<std::string>& names);

}  // namespace tqtest
