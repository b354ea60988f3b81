#include <iostream>

#include <archive/core/archivecore.hpp>
#include <host/TextConversion.hpp>

#include "CliMessages.hpp"
#include "Commands.hpp"
#include "readingOptions.hpp"

namespace tqarchive {

namespace core = tessel::io::archive::core;

int testArchiveEntries(const CommandLine& commandLine) {
    ProgressReporter reporter(commandLine.quiet, commandLine.verbose);
    const core::ExtractOptions options = readingOptions(commandLine, reporter);
    const std::string& archive = commandLine.operands.front();
    const core::TestReport report =
        core::testArchive(tessel::host::fromFileSystemText(archive),
                          readFormatFor(*commandLine.command, archive), options);
    reporter.clear();
    for (const tessel::host::MessageIdError& damage : report.damage) {
        printError(damage);
    }
    if (report.sound() && !commandLine.quiet) {
        std::cout << tessel::host::toDisplayText(archive) << ": " << report.entriesRead
                  << (report.entriesRead == 1 ? " entry" : " entries")
                  << " checked, no damage found" << std::endl;
    }
    return report.sound() ? 0 : 1;
}

}  // namespace tqarchive
