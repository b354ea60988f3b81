// A program outside the project that embeds the installed library: it zips a file,
// extracts it again and checks the bytes, and catches an identified error.
#include <archive/core/archivecore.hpp>
#include <host/host.hpp>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace archivecore = tessel::io::archive::core;
namespace fs = std::filesystem;

int main(int argc, char** argv) {
    if (argc < 2) {
        return 2;
    }
    const fs::path work = fs::path(argv[1]) / "consumer-run";
    fs::remove_all(work);
    fs::create_directories(work / "out");
    std::ofstream(work / "hello.txt") << "hello from outside\n";

    auto u16 = [](const fs::path& path) { return tessel::host::fromUtf8(path.string()); };
    const auto archivePath = u16(work / "hello.zip");
    const auto written =
        archivecore::createArchive(archivePath, {u16(work / "hello.txt")}, {u"hello.txt"}, u"zip");
    const auto extracted = archivecore::extractArchive(archivePath, u16(work / "out"), u"zip", u"");
    std::stringstream bytes;
    bytes << std::ifstream(work / "out" / "hello.txt").rdbuf();
    if (written.size() != 1 || extracted.size() != 1 || bytes.str() != "hello from outside\n") {
        std::fprintf(stderr, "round trip through the installed library failed\n");
        return 1;
    }

    try {
        archivecore::createArchive(u16(work / "missing-folder" / "x.zip"), {}, {}, u"zip");
        std::fprintf(stderr, "no error for an archive in a missing folder\n");
        return 1;
    } catch (const tessel::host::HostError& error) {
        std::printf("%s [%s]\n", error.what(), error.GetID().c_str());
        if (error.GetID() != "TESSEL:io:archive:zip:openError") {
            return 1;
        }
    }
    return 0;
}
