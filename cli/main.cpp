// tqarchive: the command-line host of libtqarchivecore.

#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include <host/HostError.hpp>

#include "CliMessages.hpp"
#include "CommandLine.hpp"
#include "Commands.hpp"
#include "HelpText.hpp"
#include "ProcessLocale.hpp"
#include "versionText.hpp"

namespace {

int run(const tqarchive::CommandLine& commandLine) {
    using namespace tqarchive;
    if (commandLine.version) {
        std::cout << versionText();
        return 0;
    }
    if (commandLine.help) {
        std::cout << helpText(commandLine.command);
        return 0;
    }
    if (commandLine.logFile) {
        // Read when the library's logger is first created, which is the first call below.
        setenv("TQARCHIVE_LOG", commandLine.logFile->c_str(), 1);
    }
    const std::string& command = commandLine.command;
    if (command == "zip") {
        return runZip(commandLine);
    }
    if (command == "tar") {
        return runTar(commandLine);
    }
    if (command == "unzip") {
        return runUnzip(commandLine);
    }
    if (command == "untar") {
        return runUntar(commandLine);
    }
    return runGzipBatch(commandLine, command == "gunzip");
}

}  // namespace

int main(int argc, char** argv) {
    tqarchive::useUtf8Locale();
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    try {
        return run(tqarchive::CommandLine::parse(arguments));
    } catch (const tessel::host::HostError& error) {
        std::cerr << "Error: " << error.what() << " [" << error.GetID() << "]\n";
        if (tqarchive::isUsageError(error)) {
            std::cerr << "Run 'tqarchive " << tqarchive::commandNamedIn(arguments)
                      << "--help' for usage.\n";
            return 2;
        }
        return 1;
    } catch (const std::exception& error) {
        // Not expected: the library and this program report failures as host errors.
        std::cerr << "Error: " << error.what() << " [tqarchive:unexpected]\n";
        return 1;
    }
}
