// tqarchive: the command-line host of libtqarchivecore.

#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include <host/HostError.hpp>

#include "CliMessages.hpp"
#include "CommandLine.hpp"
#include "CommandTable.hpp"
#include "DocumentGenerators.hpp"
#include "HelpText.hpp"
#include "InterruptFlag.hpp"
#include "ProcessLocale.hpp"
#include "StandardOutput.hpp"
#include "versionText.hpp"

namespace {

int run(const tqarchive::CommandLine& commandLine) {
    using namespace tqarchive;
    if (commandLine.generateMan) {
        std::cout << manPage();
        StandardOutput::finish();
        return 0;
    }
    if (commandLine.generateCompletion) {
        if (*commandLine.generateCompletion != "bash") {
            raiseUsageError("unknownShell", {*commandLine.generateCompletion});
        }
        std::cout << bashCompletion();
        StandardOutput::finish();
        return 0;
    }
    if (commandLine.version) {
        std::cout << versionText();
        StandardOutput::finish();
        return 0;
    }
    if (commandLine.help) {
        std::cout << helpText(commandLine.command);
        StandardOutput::finish();
        return 0;
    }
    if (commandLine.logFile) {
        // Read when the library's logger is first created, which is the first call below;
        // absolute, as extraction works from inside its output folder.
        std::error_code error;
        const std::filesystem::path logFile =
            std::filesystem::absolute(*commandLine.logFile, error);
        setenv("TQARCHIVE_LOG", (error ? *commandLine.logFile : logFile.string()).c_str(), 1);
    }
    const int status = commandLine.command->run(commandLine);
    StandardOutput::finish();
    return status;
}

// The first command named among the arguments, for the hint after a usage error.
std::string commandNamedIn(const std::vector<std::string>& arguments) {
    for (const std::string& argument : arguments) {
        if (tqarchive::CommandTable::find(argument) != nullptr) {
            return argument;
        }
    }
    return std::string();
}

}  // namespace

int main(int argc, char** argv) {
    tqarchive::StandardOutput::reserveClosedDescriptors();
    tqarchive::useUtf8Locale();
    tqarchive::InterruptFlag::install();
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    try {
        return run(tqarchive::CommandLine::parse(arguments));
    } catch (const tessel::host::HostError& error) {
        std::cerr << "Error: " << error.what() << " [" << error.GetID() << "]\n";
        if (tqarchive::InterruptFlag::signal() != 0) {
            return tqarchive::InterruptFlag::exitStatus();
        }
        if (tqarchive::isUsageError(error)) {
            const std::string command = commandNamedIn(arguments);
            std::cerr << "Run 'tqarchive " << (command.empty() ? "" : command + " ")
                      << "--help' for usage.\n";
            return 2;
        }
        return 1;
    } catch (const std::exception& error) {
        // Not expected: the library and this program report failures as host errors.
        std::cerr << "Error: " << error.what() << " [tqarchive:unexpected]\n";
        return tqarchive::InterruptFlag::signal() != 0 ? tqarchive::InterruptFlag::exitStatus() : 1;
    }
}
