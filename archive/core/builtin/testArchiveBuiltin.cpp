#include <archive/core/archivecore.hpp>
#include <archive/core/builtin/ReadingArguments.hpp>

#include <string>
#include <vector>

using tessel::host::hxArray;

// Host arguments: archive path, format ("gz" for a gzip file) [, password]. Each damage
// found is issued as a warning; returns the names of the damaged entries (the archive's
// own path for a damaged compressed stream), empty when the archive is sound.
void testArchiveBuiltin(int nlhs, hxOutput* plhs, int nrhs, const hxArray** prhs) {
    namespace core = tessel::io::archive::core;
    const auto arguments = core::ReadingArguments::read(nlhs, plhs, nrhs, prhs);

    const core::TestReport report =
        core::testArchive(arguments.archivePath, arguments.format, arguments.options);
    std::vector<std::u16string> damaged;
    for (const tessel::host::MessageIdError& damage : report.damage) {
        damage.warn();
        damaged.push_back(std::get<std::u16string>(damage.arguments().front()));
    }

    if (plhs != nullptr) {
        plhs[0].reset(tessel::host::createHostCell(damaged));
    }
}
