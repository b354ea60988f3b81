#include "CliRun.hpp"

#include <gtest/gtest.h>

namespace clitest {

using tqtest::readFile;
using tqtest::runCommand;
using tqtest::shellQuote;
using tqtest::TempDir;
using tqtest::writeFile;

CliResult tqarchive(const fs::path& folder, const std::string& args, const std::string& prefix) {
    TempDir capture;
    const fs::path errFile = capture / "stderr";
    const std::string line = "cd " + shellQuote(folder.string()) + " && " + prefix + " " +
                             shellQuote(TQARCHIVE_PROGRAM) + " " + args + " 2>" +
                             shellQuote(errFile.string());
    const tqtest::CommandResult result = runCommand("(" + line + ") </dev/null");
    return {result.status, result.output, fs::exists(errFile) ? readFile(errFile) : ""};
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
            // Large contents as size and hash, so that a failure prints readably.
            const std::string bytes = readFile(item.path());
            content[name] = bytes.size() <= 64
                                ? bytes
                                : std::to_string(bytes.size()) + " bytes, hash " +
                                      std::to_string(std::hash<std::string>{}(bytes));
        }
    }
    return content;
}

void makeSampleTree(const fs::path& root) {
    writeFile(root / "readme.txt", "top level\n");
    writeFile(root / "docs/résumé.txt", "accents\n");
    writeFile(root / "docs/日本語/メモ.txt", "CJK\n");
    writeFile(root / "docs/日本語/深い/more.bin", tqtest::randomBytes(40000));
    writeFile(root / "😀 smile.txt", "emoji\n");
    fs::create_directories(root / "empty");
}

}  // namespace clitest
