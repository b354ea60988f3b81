#include <archive/core/archivecore.hpp>

#include <string>
#include <vector>

using tessel::host::hxArray;

// Host arguments: archive path, output folder, format [, entry names [, password]].
// With a password the first entry is probed before anything is written, so that a
// missing or wrong password is reported while the output folder is still untouched.
void extractArchiveBuiltin(int nlhs, hxOutput* plhs, int nrhs, const hxArray** prhs) {
    using namespace tessel::host;
    namespace core = tessel::io::archive::core;
    checkBuiltinArrays(nlhs, plhs, nrhs, prhs);
    if (nlhs > 1) {
        errorTooManyOutputs();
    }
    if (nrhs > 5) {
        errorTooManyInputs();
    }
    if (nrhs < 3) {
        errorTooFewInputs();
    }

    const std::u16string archivePath = readHostString(prhs[0]);
    const std::u16string outputFolder = readHostString(prhs[1]);
    const std::u16string format = readHostString(prhs[2]);

    std::vector<std::u16string> written;
    if (nrhs == 3) {
        written = core::extractArchive(archivePath, outputFolder, format, u"");
    } else if (nrhs == 4) {
        const std::vector<std::u16string> entryNames = readHostStringArray(prhs[3]);
        written = core::extractArchive(archivePath, outputFolder, format, entryNames, u"");
    } else {
        const std::vector<std::u16string> entryNames = readHostStringArray(prhs[3]);
        const std::u16string password = readHostString(prhs[4]);
        core::sampleReadWithPassword(archivePath, outputFolder, format, password);
        if (!entryNames.empty()) {
            written = core::extractArchive(archivePath, outputFolder, format, entryNames, password);
        } else if (!password.empty()) {
            written = core::extractArchive(archivePath, outputFolder, format, password);
        } else {
            written = core::extractArchive(archivePath, outputFolder, format, u"");
        }
    }

    if (plhs != nullptr) {
        plhs[0].reset(createHostCell(written));
    }
}
