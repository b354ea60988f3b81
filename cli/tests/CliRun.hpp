#pragma once

#include <map>
#include <string>

#include "../../archive/tests/support/TestSupport.hpp"

namespace clitest {

namespace fs = std::filesystem;
using namespace tqtest;

struct CliResult {
    int status = -1;
    std::string out;  // standard output
    std::string err;  // standard error
};

// Runs "tqarchive ARGS" (ARGS as a shell would read them) in the folder, with standard
// input from /dev/null unless ARGS redirect it; prefix goes before the program (for
// example "setpriv ...").
CliResult tqarchive(const fs::path& folder, const std::string& args,
                    const std::string& prefix = "");

// Whether standard error reports the identifier ("Error: TEXT [ID]" or "Warning: TEXT
// [ID]") with a text found in the catalogue.
bool reports(const CliResult& result, const std::string& identifier);

// Runs a shell command in the folder; fails the test when it fails.
void shell(const fs::path& folder, const std::string& command);

// What a tree holds: "name/" for folders, "name" -> bytes for files, "name@" -> target
// for symbolic links (not followed).
std::map<std::string, std::string> snapshot(const fs::path& root);

// The sample tree: nested and empty folders, accents, CJK and an emoji in names.
void makeSampleTree(const fs::path& root);

}  // namespace clitest
