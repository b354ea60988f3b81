#include "CliRun.hpp"

#include <gtest/gtest.h>

namespace clitest {

CliResult tqarchive(const fs::path& folder, const std::string& args, const std::string& prefix) {
    TempDir capture;
    const std::string errFile = (capture / "stderr").string();
    const auto result = runCommand("(cd " + shellQuote(folder.string()) + " && " + prefix + " " +
                                   shellQuote(TQARCHIVE_PROGRAM) + " " + args + " 2>" +
                                   shellQuote(errFile) + ") </dev/null");
    return {result.status, result.output, fs::exists(errFile) ? readFile(errFile) : ""};
}

bool reports(const CliResult& result, const std::string& identifier) {
    return result.err.find(" [" + identifier + "]\n") != std::string::npos &&
           result.err.find("Unknown message identifier") == std::string::npos;
}

void shell(const fs::path& folder, const std::string& command) {
    const auto result = runCommand("cd " + shellQuote(folder.string()) + " && " + command);
    ASSERT_EQ(result.status, 0) << command << "\n" << result.output;
}

std::map<std::string, std::string> snapshot(const fs::path& root) {
    std::map<std::string, std::string> content;
    for (const auto& item : fs::recursive_directory_iterator(root)) {
        const std::string name = item.path().lexically_relative(root).generic_string();
        if (item.is_symlink()) {
            content[name + "@"] = fs::read_symlink(item.path()).string();
        } else if (item.is_directory()) {
            content[name + "/"] = "";
        } else {
            // A hash keeps a failure's printout readable.
            content[name] = std::to_string(std::hash<std::string>{}(readFile(item.path())));
        }
    }
    return content;
}

void makeSampleTree(const fs::path& root) {
    writeFile(root / "readme.txt", "top level\n");
    writeFile(root / "docs/résumé.txt", "accents\n");
    writeFile(root / "docs/日本語/メモ.txt", "CJK\n");
    writeFile(root / "docs/日本語/深い/more.bin", randomBytes(40000));
    writeFile(root / "😀 smile.txt", "emoji\n");
    fs::create_directories(root / "empty");
}

}  // namespace clitest
