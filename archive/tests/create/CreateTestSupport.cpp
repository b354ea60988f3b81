#include "CreateTestSupport.hpp"

#include <clocale>

#include "../support/TestSupport.hpp"

namespace tqtest {

// The tests play the host: like an embedding application they take the locale from the
// environment (C.UTF-8), so that libarchive converts names as UTF-8.
static const bool kLocaleFromEnvironment = std::setlocale(LC_ALL, "") != nullptr;

TreeSnapshot snapshotTree(const fs::path& root, bool withModes) {
    TreeSnapshot snapshot;
    for (const auto& item : fs::recursive_directory_iterator(root)) {
        const bool folder = item.is_directory();
        snapshot[item.path().lexically_relative(root).generic_string()] = {
            folder ? "folder" : readFile(item.path()),
            withModes && !folder ? fileMode(item.path()) : 0};
    }
    return snapshot;
}

SampleInputs makeSampleTree(const fs::path& root) {
    const std::vector<std::tuple<std::string, std::string, unsigned>> items = {
        {"docs/", "", 0755},
        {"docs/héllo wörld.txt", "accents\n", 0644},
        {"docs/日本語.txt", "CJK\n", 0644},
        {"docs/emoji😀.bin", randomBytes(70000, 7), 0644},
        {"docs/sub/", "", 0755},
        {"docs/sub/exact.bin", randomBytes(16384, 3), 0644},
        {"empty.txt", "", 0644},
        {"run.sh", "#!/bin/sh\necho hi\n", 0750},
        {"private.txt", "secret\n", 0600}};
    SampleInputs inputs;
    for (const auto& [name, bytes, mode] : items) {
        const fs::path path = root / name;
        if (name.back() == '/') {
            fs::create_directories(path);
        } else {
            writeFile(path, bytes);
        }
        fs::permissions(path, fs::perms(mode));
        inputs.files.push_back(u16(path));
        inputs.names.push_back(u16(name));
    }
    return inputs;
}

std::string outcome(const std::function<void()>& call) {
    const auto raised = raisedBy(call);
    if (!raised) {
        return "no error";
    }
    std::string text = raised->identifier + "(";
    for (std::size_t i = 0; i < raised->arguments.size(); ++i) {
        text += (i > 0 ? "," : "") + raised->arguments[i];
    }
    return text + ")";
}

std::string listing(const fs::path& archive) {
    const auto result = runCommand("bsdtar -tf " + shellQuote(archive.string()));
    return (kLocaleFromEnvironment && result.status == 0) ? result.output
                                                          : "unreadable: " + result.output;
}

}  // namespace tqtest
