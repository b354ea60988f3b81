#include "Commands.hpp"
#include "PasswordSource.hpp"

namespace tqarchive {

int runUnzip(const CommandLine& commandLine) {
    return extractArchiveToFolder(commandLine, "zip", PasswordSource::resolve(commandLine));
}

}  // namespace tqarchive
