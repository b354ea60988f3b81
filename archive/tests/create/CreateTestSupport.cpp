#include "CreateTestSupport.hpp"

#include <clocale>

#include <gtest/gtest.h>

#include "../support/TestSupport.hpp"

namespace tqtest {

namespace {

// The tests play the host: like an embedding application, they take the locale from
// the environment (C.UTF-8) once, so that libarchive converts names as UTF-8.
const bool kLocaleFromEnvironment = std::setlocale(LC_ALL, "") != nullptr;

}  // namespace

TreeSnapshot snapshotTree(const fs::path& root, bool withModes) {
    EXPECT_TRUE(kLocaleFromEnvironment);
    TreeSnapshot snapshot;
    for (const auto& item : fs::recursive_directory_iterator(root)) {
        TreeNode node;
        node.folder = item.is_directory();
        if (!node.folder) {
            node.bytes = readFile(item.path());
        }
        if (withModes && !node.folder) {
            node.mode = fileMode(item.path());
        }
        snapshot[fs::relative(item.path(), root).generic_string()] = node;
    }
    return snapshot;
}

SampleInputs makeSampleTree(const fs::path& root) {
    struct Item {
        const char* name;
        bool folder;
        std::string bytes;
        fs::perms mode;
    };
    const std::vector<Item> items = {
        {"docs/", true, "", fs::perms(0755)},
        {"docs/héllo wörld.txt", false, "accents\n", fs::perms(0644)},
        {"docs/日本語.txt", false, "CJK\n", fs::perms(0644)},
        {"docs/emoji😀.bin", false, randomBytes(70000, 7), fs::perms(0644)},
        {"docs/sub/", true, "", fs::perms(0755)},
        {"docs/sub/exact.bin", false, randomBytes(16384, 3), fs::perms(0644)},
        {"empty.txt", false, "", fs::perms(0644)},
        {"run.sh", false, "#!/bin/sh\necho hi\n", fs::perms(0750)},
        {"private.txt", false, "secret\n", fs::perms(0600)},
    };
    SampleInputs inputs;
    for (const auto& item : items) {
        const fs::path path = root / fs::path(std::string(item.name));
        if (item.folder) {
            fs::create_directories(path);
        } else {
            writeFile(path, item.bytes);
        }
        fs::permissions(path, item.mode);
        inputs.files.push_back(u16(path));
        inputs.names.push_back(u16(std::string(item.name)));
    }
    return inputs;
}

std::vector<std::u16string> withoutTrailingSlash(std::vector<std::u16string> names) {
    for (auto& name : names) {
        if (!name.empty() && name.back() == u'/') {
            name.pop_back();
        }
    }
    return names;
}

}  // namespace tqtest
