// Feeds arbitrary bytes, as an archive file, to extraction (each format), the password
// probe and gzip decompression. Host errors are the expected outcome for bad input;
// anything else (a crash, a leak, undefined behaviour, another exception) is a finding.
//
// Extraction honours ".." and symbolic links in entry names, so run this only inside the
// sandbox scripts/fuzz.sh sets up (everything read-only but the working folder).
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>

#include <archive/core/archivecore.hpp>
#include <host/HostError.hpp>
#include <host/TextConversion.hpp>
#include <host/WarningCapture.hpp>

namespace {

namespace fs = std::filesystem;
namespace core = tessel::io::archive::core;

const char16_t* const kFormats[] = {u"zip", u"tar", u"tgz", u"all"};

template <class Call>
void expectHostErrorAtMost(Call&& call) {
    try {
        call();
    } catch (const tessel::host::HostError&) {
        // The identified error bad input is meant to get.
    }
}

std::u16string u16(const fs::path& path) {
    return tessel::host::fromUtf8(path.string());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fs::path scratch = fs::current_path() / "fuzz-scratch";
    const fs::path input = scratch / "input";
    const fs::path out = scratch / "out";
    std::error_code ignored;
    fs::remove_all(scratch, ignored);
    fs::create_directories(scratch);
    {
        std::ofstream file(input, std::ios::binary);
        file.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    }
    const std::u16string format = kFormats[size > 0 ? data[0] % 4 : 3];

    // Warnings for skipped entries are expected too; keep them off standard error.
    tessel::host::WarningCapture warnings;
    expectHostErrorAtMost([&] { core::extractArchive(u16(input), u16(out), format, u""); });
    expectHostErrorAtMost([&] {
        core::extractArchive(u16(input), u16(out / "named"), format, {u"a.txt", u"dir/"}, u"pw");
    });
    expectHostErrorAtMost(
        [&] { core::sampleReadWithPassword(u16(input), u16(out), format, u"secret"); });
    expectHostErrorAtMost([&] { core::uncompressgz({u16(input)}, u16(out / "gunzipped"), true); });

    fs::remove_all(scratch, ignored);
    return 0;
}
