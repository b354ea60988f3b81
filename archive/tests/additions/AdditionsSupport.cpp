#include "AdditionsSupport.hpp"

#include <set>
#include <stdexcept>

#include <boost/algorithm/string/join.hpp>
#include <boost/algorithm/string/replace.hpp>

#include <host/TextConversion.hpp>
#include <host/WarningCapture.hpp>

namespace tqtest::additions {

namespace {

const char* kPythonHelpers = R"(import io, os, sys, tarfile, zipfile, zlib, struct
def text(n): return n if isinstance(n, str) else n.decode('utf-8', 'surrogateescape')
def member(name, kind, mode, owner=1234):
    i = tarfile.TarInfo(text(name)); i.type = kind; i.mode = mode; i.uid = i.gid = owner
    i.mtime = 981173106; return i
def reg(name, data=b'', mode=0o644, owner=1234):
    i = member(name, tarfile.REGTYPE, mode, owner); i.size = len(data); return (i, data)
def folder(name): return (member(name, tarfile.DIRTYPE, 0o755), None)
def sym(name, target):
    i = member(name, tarfile.SYMTYPE, 0o777); i.linkname = text(target); return (i, None)
def hard(name, target):
    i = member(name, tarfile.LNKTYPE, 0o644); i.linkname = text(target); return (i, None)
def node(name, kind, major=0, minor=0, mode=0o666):
    i = member(name, kind, mode); i.devmajor = major; i.devminor = minor; return (i, None)
def tar(path, *members):
    with tarfile.open(path, 'w', format=tarfile.GNU_FORMAT, encoding='utf-8',
                      errors='surrogateescape') as t:
        for i, data in members: t.addfile(i, io.BytesIO(data) if data is not None else None)
)";

}  // namespace

std::string sh(const fs::path& dir, const std::string& commandLine) {
    const auto [status, output] =
        runCommand("cd " + shellQuote(dir.string()) + " && " + commandLine);
    if (status != 0) {
        throw std::runtime_error("command failed: " + commandLine + "\n" + output);
    }
    return output;
}

std::string python(const fs::path& dir, const std::string& code) {
    writeFile(dir / "make.py", kPythonHelpers + code + "\n");
    const std::string output = sh(dir, "python3 make.py");
    fs::remove(dir / "make.py");
    return output;
}

std::string listing(const fs::path& folder, const fs::path& skip) {
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
            item += "=" + (bytes.size() <= 32 ? bytes
                                              : "[" + std::to_string(bytes.size()) + ":" +
                                                    std::to_string(hash % 100000) + "]");
        } else {
            item += "(special)";
        }
        items.insert(item);
    }
    return boost::algorithm::join(items, " ");
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

std::string rejectedPassword(const fs::path& dir, const std::string& archive) {
    return sh(dir, "for i in $(seq 999); do bsdtar -xOf " + archive +
                       " --passphrase w$i 2>&1 >/dev/null | grep -q 'Incorrect passphrase' && "
                       "echo -n w$i && break; done");
}

std::shared_ptr<void> enter(const fs::path& folder) {
    const fs::path saved = fs::current_path();
    fs::current_path(folder);
    return std::shared_ptr<void>(nullptr, [saved](void*) { fs::current_path(saved); });
}

}  // namespace tqtest::additions
