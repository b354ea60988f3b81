#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

#include <archive/core/archivecore.hpp>
#include <host/TextConversion.hpp>

#include "BackgroundStreamCheck.hpp"
#include "CliMessages.hpp"
#include "Commands.hpp"
#include "DecompressingPipe.hpp"
#include "InterruptFlag.hpp"
#include "PasswordSource.hpp"
#include "ProgressReporter.hpp"

namespace tqarchive {

namespace fs = std::filesystem;
namespace core = tessel::io::archive::core;
using tessel::host::fromFileSystemText;

namespace {

core::ExtractOptions extractOptions(const CommandLine& commandLine) {
    core::ExtractOptions options =
        commandLine.unsafePaths ? core::ExtractOptions::unsafe() : core::ExtractOptions::safe();
    if (commandLine.preservePermissions) {
        options.restrictPermissions = false;
    }
    options.keepExisting = commandLine.keepExisting;
    options.stripComponents = commandLine.stripComponents.value_or(0);
    if (commandLine.keepOutwardLinks) {
        options.outwardLinks = core::OutwardLinks::Keep;
    }
    options.gzipCheck = BackgroundStreamCheck::factory();
    for (auto entry = commandLine.operands.begin() + 1; entry != commandLine.operands.end();
         ++entry) {
        options.select.push_back(fromFileSystemText(*entry));
    }
    return options;
}

// The output folder, created with its missing parents; returns the outermost folder it
// created (empty when it existed), so that a failed run can take back what it made.
fs::path makeOutputFolder(const fs::path& folder) {
    std::error_code error;
    if (fs::is_directory(folder, error)) {
        return {};
    }
    fs::path outermost = folder;
    while (outermost.has_parent_path() && !fs::exists(outermost.parent_path(), error)) {
        outermost = outermost.parent_path();
    }
    fs::create_directories(folder, error);
    if (error) {
        raiseError("outputFolder", {fromFileSystemText(folder.string()), error.message()});
    }
    return outermost;
}

// Removes the folders this run created, from the output folder up to the outermost, as
// long as each is empty.
void removeIfEmpty(fs::path folder, const fs::path& outermost) {
    std::error_code error;
    while (!outermost.empty() && fs::remove(folder, error) && folder != outermost) {
        folder = folder.parent_path();
    }
}

// Works from inside the output folder while extracting, as tar -C does: libarchive's
// secure-extraction flags walk every level of each path they write, and the levels above
// the folder would otherwise be walked again for every entry. The archive is opened
// before, so a relative name still means what it meant; where either step fails the
// extraction runs from here with the folder's own name.
class InsideOutputFolder {
  public:
    InsideOutputFolder(const fs::path& folder, const std::string& archive, bool fromStdin) {
        if (folder == "." ||
            (!fromStdin && (archive_ = ::open(archive.c_str(), O_RDONLY | O_CLOEXEC)) < 0)) {
            return;
        }
        here_ = ::open(".", O_PATH | O_DIRECTORY | O_CLOEXEC);
        if (here_ >= 0 && ::chdir(folder.c_str()) != 0) {
            ::close(here_);
            here_ = -1;
        }
    }
    ~InsideOutputFolder() {
        if (here_ >= 0) {
            [[maybe_unused]] const int status = ::fchdir(here_);
            ::close(here_);
        }
        if (archive_ >= 0) {
            ::close(archive_);
        }
    }
    InsideOutputFolder(const InsideOutputFolder&) = delete;
    InsideOutputFolder& operator=(const InsideOutputFolder&) = delete;

    bool entered() const noexcept { return here_ >= 0; }
    // The descriptor to read the archive from once inside (-1: read it by name).
    int archive() const noexcept { return entered() ? archive_ : -1; }

  private:
    int archive_ = -1;
    int here_ = -1;
};

// The names written inside the output folder, as the user named that folder.
std::vector<std::u16string> underFolder(const fs::path& folder, std::vector<std::u16string> names) {
    std::u16string prefix = fromFileSystemText(folder.native());
    if (!prefix.ends_with(u'/')) {
        prefix.push_back(u'/');
    }
    for (std::u16string& name : names) {
        name.insert(0, prefix);
    }
    return names;
}

}  // namespace

int extractArchiveToFolder(const CommandLine& commandLine) {
    const std::string& archive = commandLine.operands.front();
    const bool fromStdin = archive == "-";
    std::error_code error;
    if (!fromStdin && !fs::is_regular_file(archive, error)) {
        raiseError("archiveNotFound", {fromFileSystemText(archive)});
    }
    core::ExtractOptions options = extractOptions(commandLine);
    // Nothing for a command that takes no password (untar).
    if (const auto password = PasswordSource::resolve(commandLine, false)) {
        options.password = tessel::host::fromUtf8(*password);
    }
    if (fromStdin) {
        options.inputDescriptor = STDIN_FILENO;
    }
    ProgressReporter reporter(commandLine.quiet, commandLine.verbose);
    options.progress = reporter.callback();

    const fs::path outputFolder = commandLine.outputFolder.value_or(".");
    // A gzip-compressed tar file is inflated once, on a second core, beside the extraction
    // (looked at here, while a relative name still means what it says).
    const bool gzippedTar = commandLine.command->format == Format::Tar && !fromStdin &&
                            DecompressingPipe::isGzip(archive);
    InterruptFlag::check();
    const fs::path created = makeOutputFolder(outputFolder);
    core::ExtractResult result;
    bool inside = false;
    try {
        const InsideOutputFolder folder(outputFolder, archive, fromStdin);
        inside = folder.entered();
        if (folder.archive() >= 0) {
            options.inputDescriptor = folder.archive();
        }
        std::optional<DecompressingPipe> gunzip;
        if (gzippedTar) {
            gunzip.emplace(fromFileSystemText(archive), folder.archive());
            options.inputDescriptor = gunzip->output();
            options.upstreamVerdict = [&gunzip] { return gunzip->verdict(); };
            options.progress = [&gunzip, show = options.progress](const core::Progress& done) {
                return show(gunzip->progress(done));
            };
        }
        result = core::extractArchiveWithOptions(
            fromFileSystemText(archive), inside ? u"." : fromFileSystemText(outputFolder.string()),
            readFormatFor(*commandLine.command, archive), options);
    } catch (...) {
        // The library took back what it wrote; the folder made for it goes too.
        reporter.clear();
        removeIfEmpty(outputFolder, created);
        throw;
    }
    reporter.clear();
    if (!commandLine.quiet) {
        printNames(inside ? underFolder(outputFolder, std::move(result.written)) : result.written,
                   false);
    }
    // After the rest is extracted, as unzip and bsdtar report them.
    for (const tessel::host::MessageIdError& missing : result.notFound) {
        printError(missing);
    }
    // Each was warned about as it was reached; the count is the last word, so that a
    // restore that left something out never looks like a complete one.
    if (!result.skipped.empty()) {
        printError(tessel::host::MessageIdError(kComponent, "entriesNotExtracted",
                                                {std::to_string(result.skipped.size())}));
    }
    return result.notFound.empty() && result.skipped.empty() ? 0 : 1;
}

}  // namespace tqarchive
