#include "readingOptions.hpp"

#include <unistd.h>

#include <filesystem>
#include <system_error>

#include <host/TextConversion.hpp>

#include "BackgroundStreamCheck.hpp"
#include "CliMessages.hpp"
#include "PasswordSource.hpp"

namespace tqarchive {

namespace fs = std::filesystem;
namespace core = tessel::io::archive::core;

core::ExtractOptions readingOptions(const CommandLine& commandLine, ProgressReporter& reporter) {
    const std::string& archive = commandLine.operands.front();
    std::error_code error;
    if (archive != "-" && !fs::is_regular_file(archive, error)) {
        raiseError("archiveNotFound", {tessel::host::fromFileSystemText(archive)});
    }
    core::ExtractOptions options;
    if (const auto password = PasswordSource::resolve(commandLine, false)) {
        options.password = tessel::host::fromUtf8(*password);
    }
    if (archive == "-") {
        options.inputDescriptor = STDIN_FILENO;
    }
    options.progress = reporter.callback();
    options.gzipCheck = BackgroundStreamCheck::factory();
    return options;
}

}  // namespace tqarchive
