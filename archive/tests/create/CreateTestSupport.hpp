// One call of the creation entry points and everything it shows, reduced to one text.
#pragma once

#include <algorithm>
#include <clocale>
#include <set>
#include <string>
#include <vector>

#include <archive/core/archivecore.hpp>
#include <host/WarningCapture.hpp>

#include "../support/TestSupport.hpp"

namespace tqtest {

// The tests play the host: like an embedding application they take the locale from the
// environment (C.UTF-8), so that libarchive converts names as UTF-8.
inline const bool kLocaleFromEnvironment = std::setlocale(LC_ALL, "") != nullptr;

using Names = std::vector<std::u16string>;
// The identifier of every failure without one of its own.
inline const std::string kInternal = "TESSEL:io:archive:extractArchive:internalError()";

// createArchive, or compressgz into the folder named as the archive when the format is
// empty; without a password and a method, the overload that takes neither.
struct Call {
    std::string archive;
    std::vector<std::string> files, names;
    std::string format, expected, password = "", method = "";
};

inline std::string joined(std::string text, const std::vector<std::string>& items) {
    for (std::size_t i = 0; i < items.size(); ++i) {
        text += (i > 0 ? "," : "") + items[i];
    }
    return text;
}

inline std::set<std::string> filesIn(const fs::path& dir) {
    std::set<std::string> files;
    for (const auto& item :
         fs::recursive_directory_iterator(dir, fs::directory_options::skip_permission_denied)) {
        if (item.is_regular_file()) {
            files.insert(item.path().lexically_relative(dir).string());
        }
    }
    return files;
}

// "ok(names returned)" or the host error's "identifier(arguments)", " +identifier(arguments)"
// for each warning, then each file the call left in the folder with what bsdtar lists of it
// in brackets. Names are taken relative to base; the folder's path reads "@".
inline std::string run(const Call& call, const fs::path& dir, const fs::path& base) {
    namespace core = tessel::io::archive::core;
    const auto at = [&](const std::string& name) { return name.empty() ? u"" : u16(base / name); };
    Names files;
    for (const auto& file : call.files) {
        files.push_back(at(file));
    }
    const std::set<std::string> before = filesIn(dir);
    tessel::host::WarningCapture warnings;
    std::vector<std::string> returned;
    const auto raised = raisedBy([&] {
        const Names names = u16list(call.names);
        const Names result =
            call.format.empty() ? core::compressgz(files, at(call.archive))
            : call.password.empty() && call.method.empty()
                ? core::createArchive(at(call.archive), files, names, u16(call.format))
                : core::createArchive(at(call.archive), files, names, u16(call.format),
                                      u16(call.password), u16(call.method));
        for (const auto& name : result) {
            returned.push_back(utf8(name));
        }
    });
    std::string text = raised ? joined(raised->identifier + "(", raised->arguments) + ")"
                              : joined("ok(", returned) + ")";
    for (const auto& warning : warnings.warnings()) {
        text += joined(" +" + warning.identifier + "(", warning.arguments) + ")";
    }
    for (const auto& file : filesIn(dir)) {
        const auto listed = runCommand("bsdtar -tf " + shellQuote((dir / file).string()));
        std::string entries = listed.output;
        std::replace(entries.begin(), entries.end(), '\n', ',');
        entries.erase(entries.find_last_not_of(',') + 1);
        text += before.count(file)
                    ? ""
                    : " " + file +
                          (listed.status == 0 && kLocaleFromEnvironment ? "[" + entries + "]" : "");
    }
    for (std::size_t pos; (pos = text.find(dir.string())) != std::string::npos;) {
        text.replace(pos, dir.string().size(), "@");
    }
    return text;
}

}  // namespace tqtest
