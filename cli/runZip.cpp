#include "Commands.hpp"
#include "PasswordSource.hpp"

namespace tqarchive {

int runZip(const CommandLine& commandLine) {
    const std::optional<std::string> password = PasswordSource::resolve(commandLine);
    // AES-256 unless asked otherwise: the strongest method zip readers commonly know.
    return createArchiveFromInputs(commandLine, u"zip", password,
                                   commandLine.encryption.value_or("aes256"));
}

}  // namespace tqarchive
