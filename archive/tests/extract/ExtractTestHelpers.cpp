#include "ExtractTestHelpers.hpp"

#include <sys/stat.h>
#include <sys/time.h>

#include <memory>
#include <sstream>
#include <stdexcept>

#include <archive.h>
#include <archive_entry.h>

namespace tqtest {

void sh(const std::string& commandLine) {
    const CommandResult result = runCommand(commandLine);
    if (result.status != 0) {
        throw std::runtime_error("command failed: " + commandLine + "\n" + result.output);
    }
}

std::vector<SampleFile> sampleTree(bool withLink) {
    std::vector<SampleFile> files = {
        {"top/", "", 0750, ""},           {"top/a.txt", "alpha\nbeta\n", 0640, ""},
        {"top/sub/", "", 0755, ""},       {"top/sub/b.bin", randomBytes(70000, 7), 0755, ""},
        {"top/sub/empty/", "", 0700, ""}, {"top/zero.dat", "", 0600, ""},
    };
    if (withLink) {
        files.push_back({"top/link", "", 0777, "sub/b.bin"});
    }
    return files;
}

void writeTree(const fs::path& root, const std::vector<SampleFile>& files) {
    for (const SampleFile& file : files) {
        const fs::path path = root / file.name;
        if (!file.target.empty()) {
            fs::create_symlink(file.target, path);
        } else if (file.name.back() == '/') {
            fs::create_directories(path);
        } else {
            writeFile(path, file.content);
        }
    }
    // Modes and times last, deepest first, so that writing children does not touch them.
    for (auto it = files.rbegin(); it != files.rend(); ++it) {
        const fs::path path = root / it->name;
        const timeval times[2] = {{kSampleTime, 0}, {kSampleTime, 0}};
        if (it->target.empty()) {
            ::chmod(path.c_str(), it->mode);
        }
        ::lutimes(path.c_str(), times);
    }
}

std::string firstDataError(const fs::path& archive, const std::string& password) {
    std::unique_ptr<::archive, int (*)(::archive*)> reader(archive_read_new(), archive_read_free);
    archive_read_support_format_zip(reader.get());
    archive_read_add_passphrase(reader.get(), password.c_str());
    ::archive_entry* entry = nullptr;
    if (archive_read_open_filename(reader.get(), archive.c_str(), 10240) != ARCHIVE_OK ||
        archive_read_next_header(reader.get(), &entry) != ARCHIVE_OK) {
        throw std::runtime_error("cannot read " + archive.string());
    }
    const void* buffer = nullptr;
    size_t size = 0;
    la_int64_t offset = 0;
    int status = ARCHIVE_OK;
    while ((status = archive_read_data_block(reader.get(), &buffer, &size, &offset)) ==
           ARCHIVE_OK) {
    }
    return status == ARCHIVE_EOF ? std::string() : archive_error_string(reader.get());
}

std::vector<std::string> listEntries(const fs::path& archive) {
    const CommandResult result = runCommand("bsdtar -tf " + shellQuote(archive.string()));
    std::vector<std::string> names;
    std::istringstream lines(result.output);
    for (std::string line; std::getline(lines, line);) {
        names.push_back(line);
    }
    return names;
}

std::vector<std::u16string> under(const fs::path& prefix, const std::vector<std::string>& names) {
    std::vector<std::u16string> paths;
    for (const std::string& name : names) {
        paths.push_back(u16(prefix.string() + "/" + name));
    }
    return paths;
}

}  // namespace tqtest
