#include "Outcomes.hpp"

#include <set>

#include <boost/algorithm/string/join.hpp>
#include <boost/algorithm/string/replace.hpp>

#include <host/TextConversion.hpp>
#include <host/WarningCapture.hpp>

namespace tqtest {

namespace {

// How a listing shows a file of more than 32 bytes.
enum class LongFiles { bySizeAndHash, elided };

std::string listed(const fs::path& folder, const fs::path& skip, LongFiles longFiles) {
    std::set<std::string> items;
    std::error_code absent;
    for (auto it = fs::recursive_directory_iterator(
             folder, fs::directory_options::skip_permission_denied, absent);
         it != fs::recursive_directory_iterator(); ++it) {
        const fs::path& path = it->path();
        if (!skip.empty() && path == skip) {
            it.disable_recursion_pending();
            continue;
        }
        std::string item = tessel::host::toDisplayText(path.lexically_relative(folder).string());
        if (it->is_symlink()) {
            item += "->" + tessel::host::toDisplayText(fs::read_symlink(path).string());
        } else if (it->is_directory()) {
            item += "/";
        } else if (it->is_regular_file()) {
            const std::string bytes = readFile(path);
            // Longer content by its size and an FNV-1a hash, the same on every platform.
            std::uint32_t hash = 2166136261u;
            for (const char byte : bytes) {
                hash = (hash ^ static_cast<unsigned char>(byte)) * 16777619u;
            }
            item +=
                "=" + (bytes.size() <= 32               ? bytes
                       : longFiles == LongFiles::elided ? "..."
                                                        : "[" + std::to_string(bytes.size()) + ":" +
                                                              std::to_string(hash % 100000) + "]");
        } else {
            item += "(special)";
        }
        items.insert(item);
    }
    return boost::algorithm::join(items, " ");
}

}  // namespace

std::string listing(const fs::path& folder, const fs::path& skip) {
    return listed(folder, skip, LongFiles::bySizeAndHash);
}

std::string shortListing(const fs::path& folder) {
    return listed(folder, {}, LongFiles::elided);
}

std::string shown(std::string text, const fs::path& base) {
    if (!base.empty()) {
        boost::algorithm::replace_all(text, base.string(), "~");
    }
    boost::algorithm::replace_all(text, "TESSEL:io:archive:", "");
    return text;
}

std::string outcome(const std::function<Paths()>& call, const fs::path& base) {
    tessel::host::WarningCapture warnings;
    Paths paths;
    const auto raised = raisedBy([&] { paths = call(); });
    std::vector<std::string> parts;
    for (const auto& path : paths) {
        parts.push_back(tessel::host::toDisplayText(path));
    }
    const auto add = [&](const char* mark, const std::string& id, std::vector<std::string> args) {
        for (auto& arg : args) {
            // Readable, but what is already a display text (a backslash escape) stays as it is.
            arg = tessel::host::toDisplayText(arg);
            boost::algorithm::replace_all(arg, "\\\\", "\\");
        }
        parts.push_back(mark + id +
                        (args.empty() ? "" : "(" + boost::algorithm::join(args, ";") + ")"));
    };
    for (const auto& warning : warnings.warnings()) {
        add("?", warning.identifier, warning.arguments);
    }
    if (raised) {
        add("!", raised->identifier, raised->arguments);
    }
    return shown(boost::algorithm::join(parts, " "), base);
}

std::string described(const std::vector<tessel::host::MessageIdError>& errors) {
    std::vector<std::string> parts;
    for (const auto& error : errors) {
        std::vector<std::string> args;
        std::ranges::transform(error.arguments(), std::back_inserter(args),
                               tessel::host::argumentText);
        parts.push_back(error.identifier() + "(" + boost::algorithm::join(args, ";") + ")");
    }
    return boost::algorithm::join(parts, " ");
}

std::string tested(const fs::path& archive, const std::u16string& format, const fs::path& base,
                   const std::string& password) {
    core::ExtractOptions options;
    options.password = u16(password);
    core::TestReport report;
    const auto raised =
        raisedBy([&] { report = core::testArchive(u16(archive), format, options); });
    const std::string damage = described(report.damage);
    return shown(raised ? "!" + raised->identifier
                        : "read " + std::to_string(report.entriesRead) +
                              (damage.empty() ? "" : " " + damage),
                 base);
}

}  // namespace tqtest
