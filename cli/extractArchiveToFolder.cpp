#include <unistd.h>

#include <filesystem>
#include <system_error>

#include <archive/core/archivecore.hpp>
#include <host/TextConversion.hpp>

#include "BackgroundStreamCheck.hpp"
#include "CliMessages.hpp"
#include "Commands.hpp"
#include "InterruptFlag.hpp"
#include "PasswordSource.hpp"
#include "ProgressReporter.hpp"

namespace tqarchive {

namespace fs = std::filesystem;
namespace core = tessel::io::archive::core;
using tessel::host::fromFileSystemText;

namespace {

core::ExtractOptions extractOptions(const CommandLine& commandLine) {
    core::ExtractOptions options = core::ExtractOptions::safe();
    if (commandLine.unsafePaths) {
        // Today's unconfined extraction; safe writes and the cleanup stay.
        options.confine = false;
        options.skipSpecialFiles = false;
        options.restrictPermissions = false;
        options.refuseOutwardLinks = false;
    }
    if (commandLine.preservePermissions) {
        options.restrictPermissions = false;
    }
    options.keepExisting = commandLine.keepExisting;
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

}  // namespace

int extractArchiveToFolder(const CommandLine& commandLine) {
    const std::string& archive = commandLine.operands.front();
    const bool fromStdin = archive == "-";
    std::error_code error;
    if (!fromStdin && !fs::is_regular_file(archive, error)) {
        raiseError("archiveNotFound", {fromFileSystemText(archive)});
    }
    core::ExtractOptions options = extractOptions(commandLine);
    if (commandLine.command == "unzip") {
        if (const auto password = PasswordSource::resolve(commandLine, false)) {
            options.password = tessel::host::fromUtf8(*password);
        }
    }
    if (fromStdin) {
        options.inputDescriptor = STDIN_FILENO;
    }
    ProgressReporter reporter(commandLine.quiet, commandLine.verbose);
    options.progress = reporter.callback();

    const fs::path outputFolder = commandLine.outputFolder.value_or(".");
    InterruptFlag::check();
    const fs::path created = makeOutputFolder(outputFolder);
    core::ExtractResult result;
    try {
        result = core::extractArchiveWithOptions(
            fromFileSystemText(archive), fromFileSystemText(outputFolder.string()),
            readFormatFor(commandLine.command, archive), options);
    } catch (...) {
        // The library took back what it wrote; the folder made for it goes too.
        reporter.clear();
        removeIfEmpty(outputFolder, created);
        throw;
    }
    reporter.clear();
    printNames(result.written, commandLine.quiet);
    // After the rest is extracted, as unzip and bsdtar report them.
    for (const tessel::host::MessageIdError& missing : result.notFound) {
        printError(missing);
    }
    return result.notFound.empty() ? 0 : 1;
}

}  // namespace tqarchive
