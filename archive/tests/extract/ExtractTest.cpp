#include "ExtractTest.hpp"

#include <set>
#include <stdexcept>

#include <boost/algorithm/string/join.hpp>
#include <boost/algorithm/string/replace.hpp>

#include <archive/core/archivecore.hpp>
#include <host/WarningCapture.hpp>

namespace tqtest {

void ExtractTest::sh(const std::string& commandLine) const {
    const CommandResult result =
        runCommand("cd " + shellQuote(dir.string()) + " && " + commandLine);
    if (result.status != 0) {
        throw std::runtime_error("command failed: " + commandLine + "\n" + result.output);
    }
}

void ExtractTest::python(const std::string& archive,
                         const std::vector<std::string>& namesAndContents) const {
    std::string command =
        "python3 -c 'import sys,io,zipfile,tarfile\n"
        "a=sys.argv[1]; es=list(zip(sys.argv[2::2],[c.encode() for c in sys.argv[3::2]]))\n"
        "if a.endswith(\".zip\"):\n"
        " with zipfile.ZipFile(a,\"w\") as z: [z.writestr(n,c) for n,c in es]\n"
        "else:\n"
        " with tarfile.open(a,\"w\") as t:\n"
        "  for n,c in es: i=tarfile.TarInfo(n); i.size=len(c); t.addfile(i,io.BytesIO(c))' " +
        shellQuote(archive);
    for (const std::string& item : namesAndContents) {
        command += " " + shellQuote(item);
    }
    sh(command + " 2>/dev/null");  // zipfile warns of duplicate names
}

std::string ExtractTest::outcome(const Call& call, const fs::path& listed) const {
    tessel::host::WarningCapture warnings;
    std::vector<std::u16string> paths;
    const auto raised = raisedBy([&] { paths = call(); });
    std::string text;
    for (const auto& path : paths) {
        text += " " + utf8(path);
    }
    const auto add = [&](const char* mark, const std::string& identifier, const auto& arguments) {
        const std::string joined = boost::algorithm::join(arguments, ";");
        text += mark + identifier + (arguments.empty() ? "" : "(" + joined + ")");
    };
    for (const auto& warning : warnings.warnings()) {
        add(" ?", warning.identifier, warning.arguments);
    }
    if (raised) {
        add(" !", raised->identifier, raised->arguments);
    }
    boost::algorithm::replace_all(text, dir.string(), "~");
    boost::algorithm::replace_all(text, "TESSEL:io:archive:", "");
    return text.substr(text.empty() ? 0 : 1) + (listed.empty() ? "" : " | " + listing(listed));
}

ExtractTest::Call ExtractTest::extracting(const std::string& archive, const std::string& out,
                                          const std::u16string& format,
                                          const std::string& password) const {
    return [=, this] {
        return tessel::io::archive::core::extractArchive(u16(dir / archive), u16(dir / out), format,
                                                         u16(password));
    };
}

std::string ExtractTest::extract(const std::string& archive, const std::string& out,
                                 const std::u16string& format, const std::string& password) const {
    return outcome(extracting(archive, out, format, password), dir / out);
}

std::string ExtractTest::listing(const fs::path& folder) {
    std::set<std::string> items;
    std::error_code absent;
    for (const auto& item : fs::recursive_directory_iterator(
             folder, fs::directory_options::skip_permission_denied, absent)) {
        const std::string name = item.path().lexically_relative(folder).string();
        const std::string bytes = item.is_directory() ? "" : readFile(item.path());
        items.insert(item.is_directory() ? name + "/"
                                         : name + "=" + (bytes.size() <= 32 ? bytes : "..."));
    }
    return boost::algorithm::join(items, " ");
}

std::shared_ptr<void> ExtractTest::enter(const fs::path& folder) {
    const fs::path saved = fs::current_path();
    fs::current_path(folder);
    return std::shared_ptr<void>(nullptr, [saved](void*) { fs::current_path(saved); });
}

}  // namespace tqtest
