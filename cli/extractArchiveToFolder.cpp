#include <filesystem>
#include <system_error>

#include <host/TextConversion.hpp>

#include "CliMessages.hpp"
#include "Commands.hpp"
#include "GatewayCall.hpp"
#include "SafePathCheck.hpp"

namespace tqarchive {

namespace fs = std::filesystem;
using tessel::host::fromFileSystemText;

int extractArchiveToFolder(const CommandLine& commandLine, const std::string& format,
                           const std::optional<std::string>& password) {
    const std::string& archive = commandLine.operands.front();
    std::error_code error;
    if (!fs::is_regular_file(archive, error)) {
        raiseError("archiveNotFound", {archive});
    }
    const std::string outputFolder = commandLine.outputFolder.value_or(".");
    if (!commandLine.unsafePaths) {
        const bool outputIsCurrentFolder =
            fs::weakly_canonical(outputFolder, error) == fs::current_path(error);
        SafePathCheck::verify(archive, format, password.value_or(std::string()),
                              outputIsCurrentFolder);
    }

    // Only now, with the archive found safe, may anything be written.
    bool createdOutputFolder = false;
    if (commandLine.outputFolder && !fs::is_directory(outputFolder, error)) {
        createdOutputFolder = fs::create_directories(outputFolder, error);
        if (error) {
            raiseError("outputFolder", {outputFolder, error.message()});
        }
    }

    std::vector<std::u16string> entries;
    for (auto entry = commandLine.operands.begin() + 1; entry != commandLine.operands.end();
         ++entry) {
        entries.push_back(fromFileSystemText(*entry));
    }

    GatewayCall call;
    call.text(fromFileSystemText(archive))
        .text(fromFileSystemText(outputFolder))
        .text(tessel::host::fromUtf8(format));
    if (password) {
        // With a password the gateway test-reads the first entry before writing anything.
        call.list(entries).text(tessel::host::fromUtf8(*password));
    } else if (!entries.empty()) {
        call.list(entries);
    }
    try {
        printNames(call.call(extractArchiveBuiltin), commandLine.quiet);
    } catch (...) {
        // A refused extraction leaves no trace: the folder made for it goes if still empty.
        if (createdOutputFolder) {
            fs::remove(outputFolder, error);
        }
        throw;
    }
    return 0;
}

}  // namespace tqarchive
