#include <archive/core/archivecore.hpp>

#include <string>
#include <vector>

using tessel::host::hxArray;

// Host arguments: archive path, format ("gz" for a gzip file) [, password]. Each damage
// found is issued as a warning; returns the names of the damaged entries (the archive's
// own path for a damaged compressed stream), empty when the archive is sound.
void testArchiveBuiltin(int nlhs, hxOutput* plhs, int nrhs, const hxArray** prhs) {
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

    const core::TestReport report = core::testArchive(archivePath, format, options);
    std::vector<std::u16string> damaged;
    for (const MessageIdError& damage : report.damage) {
        damage.warn();
        damaged.push_back(std::get<std::u16string>(damage.arguments().front()));
    }

    if (plhs != nullptr) {
        plhs[0].reset(createHostCell(damaged));
    }
}
