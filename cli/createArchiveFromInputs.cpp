#include <unistd.h>

#include <set>
#include <system_error>

#include <archive/core/archivecore.hpp>
#include <host/TextConversion.hpp>

#include "CliMessages.hpp"
#include "Commands.hpp"
#include "CompressingPipe.hpp"
#include "InputWalker.hpp"
#include "InterruptFlag.hpp"
#include "PasswordSource.hpp"
#include "ProgressReporter.hpp"
#include "ReplacementFile.hpp"
#include "StandardOutput.hpp"

namespace tqarchive {

namespace fs = std::filesystem;
namespace core = tessel::io::archive::core;
using tessel::host::fromFileSystemText;
using tessel::host::fromUtf8;

namespace {

// root/input without its "." components, for tidy paths in messages ("tree", not
// "tree/."). Only "." goes: ".." after a symbolic link means something else on disk.
fs::path joinWithoutDots(const fs::path& root, const fs::path& input) {
    fs::path joined;
    for (const fs::path& part : root / input) {
        if (part != "." && !part.empty()) {
            joined /= part;
        }
    }
    return joined.empty() ? fs::path(".") : joined;
}

// What tar writes: the type --format names, else the one ARCHIVE's name says. Refused
// before anything is written when neither says a tar type.
core::ArchiveType tarType(const CommandLine& commandLine) {
    const std::string& archive = commandLine.operands.front();
    if (!commandLine.format && archive == "-") {
        return {u"tar", u""};
    }
    const std::u16string name = commandLine.format ? u"archive." + fromUtf8(*commandLine.format)
                                                   : fromFileSystemText(archive);
    const auto type = core::archiveTypeFromName(name);
    if (!type || (type->format != u"tar" && type->format != u"tgz")) {
        if (commandLine.format) {
            raiseUsageError("unknownFormat", {*commandLine.format});
        }
        raiseError("unknownTarType", {fromFileSystemText(archive)});
    }
    return *type;
}

// The library gives a tar's folders without their "/"; the listing always shows it.
std::vector<std::u16string> withFolderSlashes(std::vector<std::u16string> written,
                                              const std::set<std::u16string>& folders) {
    for (std::u16string& name : written) {
        if (!name.ends_with(u'/') && folders.contains(name + u"/")) {
            name += u'/';
        }
    }
    return written;
}

// A compressed tar: the library writes the plain tar into a pipe while a second thread
// compresses it into the output, so that reading the files and compressing them overlap.
// The archive and its failures are those the library gives when it compresses itself.
std::vector<std::u16string> createCompressedTar(const std::u16string& archive,
                                                const std::vector<std::u16string>& files,
                                                const std::vector<std::u16string>& names,
                                                core::CreateOptions options) {
    core::CreateOptions compression;
    compression.filter = options.filter;
    compression.level = options.level;
    compression.outputDescriptor = options.outputDescriptor;
    CompressingPipe pipe(archive, compression);
    options.filter.clear();
    options.level = -1;
    options.outputDescriptor = pipe.input();
    // A compression that failed (a full disk) stops the writer at its next block.
    options.progress = [&pipe, progress = options.progress](const core::Progress& done) {
        return !pipe.failed() && (!progress || progress(done));
    };
    std::vector<std::u16string> written;
    try {
        written = core::createArchiveWithOptions(archive, files, names, u"tar", options);
    } catch (...) {
        pipe.finish();
        throw;
    }
    pipe.finish();
    return written;
}

// Writes the archive with the library, through a compressing pipe when it is compressed.
std::vector<std::u16string> writeArchive(const std::u16string& archive,
                                         const std::vector<std::u16string>& files,
                                         const std::vector<std::u16string>& names,
                                         const std::u16string& format,
                                         const core::CreateOptions& options) {
    if (format == u"tgz" || (format == u"tar" && !options.filter.empty())) {
        return createCompressedTar(archive, files, names, options);
    }
    return core::createArchiveWithOptions(archive, files, names, format, options);
}

}  // namespace

int createArchiveFromInputs(const CommandLine& commandLine) {
    const Command& command = *commandLine.command;
    const bool zip = command.format == Format::Zip;
    const std::string& archive = commandLine.operands.front();
    const bool toStdout = archive == "-";

    core::CreateOptions options;
    std::u16string format = u"zip";
    if (!zip) {
        const core::ArchiveType type = tarType(commandLine);
        format = type.format;
        options.filter = type.filter;
    }
    if (toStdout) {
        StandardOutput::requireOpen();
        if (::isatty(STDOUT_FILENO) == 1) {
            raiseError("terminalOutput", {command.name});
        }
    }
    std::error_code error;
    if (!toStdout && fs::is_directory(archive, error)) {
        // Most likely the operands were swapped; say so before anything is read or written.
        raiseError("archiveIsFolder", {fromFileSystemText(archive), command.name});
    }

    const fs::path root = commandLine.rootFolder.value_or(std::string());
    const fs::path base = InputWalker::normal(root.empty() ? fs::path(".") : root);
    if (!fs::is_directory(base, error)) {
        raiseError("rootFolder", {root.string()});
    }
    InputWalker walker;
    if (!toStdout) {
        walker.exclude(archive);
    }
    walker.excludePatterns(commandLine.excludes);
    for (auto operand = commandLine.operands.begin() + 1; operand != commandLine.operands.end();
         ++operand) {
        if (operand->empty()) {
            raiseError("inputNotFound", {*operand, std::string("empty name")});
        }
        // Relative inputs are taken relative to the root folder, as with tar -C.
        const fs::path input(*operand);
        walker.add(input.is_relative() ? joinWithoutDots(root, input) : input, base);
    }

    std::vector<std::u16string> files;
    std::vector<std::u16string> names;
    std::set<std::u16string> folders;
    for (const WalkedInput& input : walker.inputs()) {
        files.push_back(fromFileSystemText(input.diskPath.string()));
        names.push_back(fromFileSystemText(input.name));
        options.expectedBytes += input.size;
        if (input.folder) {
            folders.insert(names.back());
        }
    }

    if (const auto password = PasswordSource::resolve(commandLine, true)) {
        options.password = fromUtf8(*password);
        // AES-256 unless asked otherwise: the strongest method zip readers commonly know.
        options.encryption = fromUtf8(commandLine.encryption.value_or("aes256"));
    }
    // A plain tar has nothing to set a level on.
    options.level = zip || !options.filter.empty() || format == u"tgz" ? commandLine.level : -1;
    options.reportFinalClose = true;
    options.skipRefusedEntries = true;
    ProgressReporter reporter(commandLine.quiet, commandLine.verbose);
    options.progress = reporter.callback();
    InterruptFlag::check();

    if (toStdout) {
        // Standard output carries the archive, so the names are not listed there.
        options.outputDescriptor = STDOUT_FILENO;
        writeArchive(u"-", files, names, format, options);
        return 0;
    }
    ReplacementFile output(
        archive, zip ? "TESSEL:io:archive:zip:openError" : "TESSEL:io:archive:tar:openError");
    options.outputDescriptor = output.descriptor();
    const auto written = writeArchive(fromFileSystemText(archive), files, names, format, options);
    output.commit();
    reporter.clear();
    printNames(withFolderSlashes(written, folders), commandLine.quiet);
    return 0;
}

}  // namespace tqarchive
