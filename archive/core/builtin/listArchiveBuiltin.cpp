#include <archive/core/archivecore.hpp>

#include <string>
#include <vector>

using tessel::host::hxArray;

// Host arguments: archive path, format [, password]. Returns the entry names in archive
// order, folders ending in "/".
void listArchiveBuiltin(int nlhs, hxOutput* plhs, int nrhs, const hxArray** prhs) {
    using namespace tessel::host;
    namespace core = tessel::io::archive::core;
    checkBuiltinArrays(nlhs, plhs, nrhs, prhs);
    if (nlhs > 1) {
        errorTooManyOutputs();
    }
    if (nrhs > 3) {
        errorTooManyInputs();
    }
    if (nrhs < 2) {
        errorTooFewInputs();
    }

    const std::u16string archivePath = readHostString(prhs[0]);
    const std::u16string format = readHostString(prhs[1]);
    core::ExtractOptions options;
    if (nrhs == 3) {
        options.password = readHostString(prhs[2]);
    }

    std::vector<std::u16string> names;
    core::listArchive(archivePath, format, options,
                      [&names](const core::EntryInfo& entry) { names.push_back(entry.name); });

    if (plhs != nullptr) {
        plhs[0].reset(createHostCell(names));
    }
}
