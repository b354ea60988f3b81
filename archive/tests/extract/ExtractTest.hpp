#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "../support/TestSupport.hpp"

namespace tqtest {

// Skips the current test (from its body) when a tool is missing.
#define REQUIRE_TOOLS(...)                                \
    for (const char* tool_ : {__VA_ARGS__}) {             \
        if (!::tqtest::toolAvailable(tool_)) {            \
            GTEST_SKIP() << tool_ << " is not installed"; \
        }                                                 \
    }

// A fresh folder per test, and one-line descriptions of what calls did there.
class ExtractTest : public ::testing::Test {
  protected:
    using Call = std::function<std::vector<std::u16string>()>;

    // Runs a shell command line in the folder; it must succeed.
    void sh(const std::string& commandLine) const;
    // Writes a zip or tar archive (by its extension) with Python's zipfile or tarfile from
    // name, content, name, content...; in a zip a name ending in "/" is a folder.
    void python(const std::string& archive, const std::vector<std::string>& namesAndContents) const;
    // What a call did, as one line: the paths it returned, "?identifier(arguments)" for each
    // warning, then "!identifier(arguments)" for the error it raised. Arguments are joined
    // by ";" and the parentheses are left out when there are none; the folder reads "~" and
    // the identifiers' common prefix "TESSEL:io:archive:" is left out. Given a folder, " | "
    // and its listing after the call follow.
    std::string outcome(const Call& call, const fs::path& listed = {}) const;
    // Extracts an archive in the folder into a subfolder of it.
    Call extracting(const std::string& archive, const std::string& out,
                    const std::u16string& format, const std::string& password = "") const;
    // The outcome of that, with the subfolder's listing.
    std::string extract(const std::string& archive, const std::string& out,
                        const std::u16string& format, const std::string& password = "") const;
    // Everything under a folder, sorted: "name/" for a folder, "name=bytes" for a file of up
    // to 32 bytes, "name=..." for a longer one; "" when the folder does not exist.
    static std::string listing(const fs::path& folder);
    // Makes a folder the current one until the returned guard goes.
    static std::shared_ptr<void> enter(const fs::path& folder);

    TempDir temp_;
    const fs::path dir = temp_.path();
};

}  // namespace tqtest
