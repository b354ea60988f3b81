#include <archive/core/archivecore.hpp>
#include <archive/core/builtin/ReadingArguments.hpp>

#include <string>
#include <vector>

using tessel::host::hxArray;

// Host arguments: archive path, format [, password]. Returns the entry names in archive
// order, folders ending in "/".
void listArchiveBuiltin(int nlhs, hxOutput* plhs, int nrhs, const hxArray** prhs) {
    namespace core = tessel::io::archive::core;
    const auto arguments = core::ReadingArguments::read(nlhs, plhs, nrhs, prhs);

    std::vector<std::u16string> names;
    core::listArchive(arguments.archivePath, arguments.format, arguments.options,
                      [&names](const core::EntryInfo& entry) { names.push_back(entry.name); });

    if (plhs != nullptr) {
        plhs[0].reset(tessel::host::createHostCell(names));
    }
}
