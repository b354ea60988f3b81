#include <iostream>

#include <archive/core/archivecore.hpp>
#include <host/TextConversion.hpp>

#include "Commands.hpp"
#include "EntryLine.hpp"
#include "readingOptions.hpp"

namespace tqarchive {

namespace core = tessel::io::archive::core;

int listArchiveEntries(const CommandLine& commandLine) {
    // The listing is the output: no progress line or name list beside it.
    ProgressReporter reporter(true, false);
    core::ExtractOptions options = readingOptions(commandLine, reporter);
    // Zip records no compressed size that libarchive reports; the long forms measure it.
    options.measureCompressedSizes = commandLine.verbose || commandLine.json;
    const EntryLine::Style style = commandLine.json      ? EntryLine::Style::Json
                                   : commandLine.verbose ? EntryLine::Style::Long
                                                         : EntryLine::Style::Name;
    const std::string& archive = commandLine.operands.front();
    core::listArchive(tessel::host::fromFileSystemText(archive),
                      readFormatFor(*commandLine.command, archive), options,
                      [style](const core::EntryInfo& entry) {
                          std::cout << EntryLine::format(entry, style) << '\n';
                      });
    std::cout.flush();
    return 0;
}

}  // namespace tqarchive
