#include <archive/core/archivecore.hpp>

#include <string>
#include <vector>

#include <archive/core/error/messages/createArchive.hpp>

using tessel::host::hxArray;

// Host arguments: archive path, files, entry names, format [, password, encryption method].
// Five inputs pass the count check but are refused once the first four have been read: a
// password without its encryption method (or the reverse) is a caller mistake.
void createArchiveBuiltin(int nlhs, hxOutput* plhs, int nrhs, const hxArray** prhs) {
    using namespace tessel::host;
    checkBuiltinArrays(nlhs, plhs, nrhs, prhs);
    if (nlhs > 1) {
        errorTooManyOutputs();
    }
    if (nrhs > 6) {
        errorTooManyInputs();
    }
    if (nrhs < 4) {
        errorTooFewInputs();
    }

    const std::u16string archivePath = readHostString(prhs[0]);
    const std::vector<std::u16string> files = readHostStringArray(prhs[1]);
    const std::vector<std::u16string> entryNames = readHostStringArray(prhs[2]);
    const std::u16string format = readHostString(prhs[3]);

    std::vector<std::u16string> written;
    if (nrhs == 4) {
        written = tessel::io::archive::core::createArchive(archivePath, files, entryNames, format);
    } else if (nrhs == 5) {
        TESSEL::io::archive::createArchive::invalidNumberOfArgs().raise();
    } else {
        const std::u16string password = readHostString(prhs[4]);
        const std::u16string encryptionMethod = readHostString(prhs[5]);
        written = tessel::io::archive::core::createArchive(archivePath, files, entryNames, format,
                                                           password, encryptionMethod);
    }

    // The slot is filled even when no output was requested (the host's answer variable),
    // if the host gave one.
    if (plhs != nullptr) {
        plhs[0].reset(createHostCell(written));
    }
}
