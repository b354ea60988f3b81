// Extracts arbitrary bytes, as an archive, confined (ExtractOptions::safe()) into a fresh
// folder inside a scratch root. Whatever the bytes hold, nothing may appear in the scratch
// root, or in the folders around it, outside that folder: anything that does is a
// finding (the target aborts). Host errors are the expected outcome for bad input.
//
// Run it only inside the sandbox scripts/fuzz.sh sets up: were confinement broken, the
// archive would write wherever it names.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

#include <archive/core/archivecore.hpp>
#include <host/HostError.hpp>
#include <host/TextConversion.hpp>
#include <host/WarningCapture.hpp>

namespace {

namespace fs = std::filesystem;
namespace core = tessel::io::archive::core;

const char16_t* const kFormats[] = {u"zip", u"tar", u"tgz", u"all"};

std::u16string u16(const fs::path& path) {
    return tessel::host::fromFileSystemText(path.native());
}

// Everything below a folder, links not followed.
std::set<fs::path> contentsOf(const fs::path& folder) {
    std::set<fs::path> paths;
    std::error_code error;
    for (auto item = fs::recursive_directory_iterator(folder, error);
         !error && item != fs::recursive_directory_iterator(); item.increment(error)) {
        paths.insert(item->path());
    }
    return paths;
}

bool isUnder(const fs::path& path, const fs::path& folder) {
    const auto [end, unused] =
        std::mismatch(folder.begin(), folder.end(), path.begin(), path.end());
    return end == folder.end();
}

// A unit libFuzzer itself added to its corpus: named by the SHA-1 of its content.
bool isCorpusUnit(const fs::path& path) {
    const std::string name = path.filename().string();
    return path.parent_path().filename() == "corpus" && name.size() == 40 &&
           name.find_first_not_of("0123456789abcdef") == std::string::npos;
}

[[noreturn]] void escaped(const fs::path& path) {
    std::fprintf(stderr, "confinement broken: %s appeared outside the output folder\n",
                 path.c_str());
    std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // The folders around the scratch root, as they were before any input ran.
    static const fs::path work = fs::current_path();
    static const std::set<fs::path> around = contentsOf(work.parent_path());
    const fs::path scratch = work / "confinement-scratch";
    const fs::path input = work / "confinement-input";
    const fs::path out = scratch / "out";
    std::error_code ignored;
    fs::remove_all(scratch, ignored);
    fs::create_directories(out);
    {
        std::ofstream file(input, std::ios::binary);
        file.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    }
    const std::u16string format = kFormats[size > 0 ? data[0] % 4 : 3];

    tessel::host::WarningCapture warnings;
    for (const bool withPermissions : {false, true}) {
        core::ExtractOptions options = core::ExtractOptions::safe();
        options.restrictPermissions = !withPermissions;
        options.select = withPermissions ? std::vector<std::u16string>{u"a*", u"dir/"}
                                         : std::vector<std::u16string>{};
        try {
            core::extractArchiveWithOptions(u16(input), u16(out), format, options);
        } catch (const tessel::host::HostError&) {
            // The identified error bad or hostile input is meant to get.
        }
        for (const fs::path& path : contentsOf(work.parent_path())) {
            if (!around.contains(path) && path != input && path != scratch && !isUnder(path, out) &&
                !isCorpusUnit(path)) {
                escaped(path);
            }
        }
    }

    fs::remove_all(scratch, ignored);
    fs::remove(input, ignored);
    return 0;
}
