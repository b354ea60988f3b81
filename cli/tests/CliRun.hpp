// Helpers of the end-to-end tests, which run the built tqarchive program as a user types it.
#pragma once

#include <map>
#include <string>

#include <gtest/gtest.h>

#include "archive/tests/support/TestSupport.hpp"
#include "archive/tests/support/Tools.hpp"

namespace clitest {

using namespace tqtest;

// The exit status, standard output (output) and standard error (err) of a run.
struct CliResult : CommandResult {
    std::string err;
};

// Runs "tqarchive ARGS" (ARGS as a shell would read them) in the folder, with standard
// input from /dev/null unless ARGS redirect it; prefix goes before the program (for
// example "setpriv ...").
inline CliResult tqarchive(const fs::path& folder, const std::string& args,
                           const std::string& prefix = "") {
    TempDir capture;
    const std::string errFile = (capture / "stderr").string();
    const auto result = runCommand("(cd " + shellQuote(folder.string()) + " && " + prefix + " " +
                                   shellQuote(TQARCHIVE_PROGRAM) + " " + args + " 2>" +
                                   shellQuote(errFile) + ") </dev/null");
    return {result, fs::exists(errFile) ? readFile(errFile) : ""};
}

// Whether standard error reports the identifier ("Error: TEXT [ID]" or "Warning: TEXT
// [ID]") with a text found in the catalogue.
inline bool reports(const CliResult& result, const std::string& identifier) {
    return result.err.find(" [" + identifier + "]\n") != std::string::npos &&
           result.err.find("Unknown message identifier") == std::string::npos;
}

// The program, quoted for a shell line.
inline std::string program() {
    return shellQuote(TQARCHIVE_PROGRAM);
}

// What a tree holds, by relative name: "/" for a folder, "@target" for a symbolic link (not
// followed), a hash of the bytes for a file (it keeps a failure's printout readable).
inline std::map<std::string, std::string> snapshot(const fs::path& root) {
    std::map<std::string, std::string> content;
    for (const auto& item : fs::recursive_directory_iterator(root)) {
        std::string value = "/";
        if (item.is_symlink()) {
            const std::string target = fs::read_symlink(item.path()).string();
            value = "@" + target;
        } else if (!item.is_directory()) {
            value = std::to_string(std::hash<std::string>{}(readFile(item.path())));
        }
        content[item.path().lexically_relative(root).generic_string()] = std::move(value);
    }
    return content;
}

// The sample tree: nested and empty folders, accents, CJK and an emoji in names.
inline void makeSampleTree(const fs::path& root) {
    writeFile(root / "readme.txt", "top level\n");
    writeFile(root / "docs/résumé.txt", "accents\n");
    writeFile(root / "docs/日本語/メモ.txt", "CJK\n");
    writeFile(root / "docs/日本語/深い/more.bin", randomBytes(40000));
    writeFile(root / "😀 smile.txt", "emoji\n");
    fs::create_directories(root / "empty");
}

}  // namespace clitest
