// Benchmark driver: the library's entry points on a folder, a file or an archive, for
// bench/create.sh and bench/extract.sh to time against bsdtar, zip, unzip and gzip.
//
//   archive_bench archive <format> <archive> <folder>   createArchive of everything under
//                                                       <folder>, named relative to it
//   archive_bench gzip <file> <outputFolder>            compressgz of one file
//   archive_bench extract <format> <archive> <folder>   extractArchive, every entry
//   archive_bench gunzip <file.gz> <outputFile>         uncompressgz to an exact path
#include <clocale>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <vector>

#include <archive/core/archivecore.hpp>
#include <host/HostError.hpp>
#include <host/TextConversion.hpp>

namespace fs = std::filesystem;
namespace core = tessel::io::archive::core;

namespace {

std::u16string u16(const std::string& text) {
    return tessel::host::fromUtf8(text);
}

// The walk a caller does before createArchive: parents first, folders named with a slash.
void collectInputs(const fs::path& root, std::vector<std::u16string>& files,
                   std::vector<std::u16string>& names) {
    for (const auto& item : fs::recursive_directory_iterator(root)) {
        std::string name = item.path().lexically_relative(root).generic_string();
        if (item.is_directory()) {
            name += '/';
        }
        files.push_back(u16(item.path().string()));
        names.push_back(u16(name));
    }
}

// Runs one mode; returns the number of names the entry point returned, or -1 for a
// command line it does not know.
long long run(const std::string& mode, int argc, char** argv) {
    if (mode == "archive" && argc == 5) {
        std::vector<std::u16string> files;
        std::vector<std::u16string> names;
        collectInputs(argv[4], files, names);
        return static_cast<long long>(
            core::createArchive(u16(argv[3]), files, names, u16(argv[2])).size());
    }
    if (mode == "gzip" && argc == 4) {
        return static_cast<long long>(core::compressgz({u16(argv[2])}, u16(argv[3])).size());
    }
    if (mode == "extract" && argc == 5) {
        return static_cast<long long>(
            core::extractArchive(u16(argv[3]), u16(argv[4]), u16(argv[2]), u"").size());
    }
    // The calls with options as the command-line tool uses them: confined with every safe mode, or
    // with --unsafe-paths (confinement and safe modes off, cleanup and safe writes on).
    // extract-direct: confined, but existing files replaced in place (no safe writes).
    if ((mode == "extract-safe" || mode == "extract-unsafe" || mode == "extract-direct") &&
        argc == 5) {
        core::ExtractOptions options = core::ExtractOptions::safe();
        if (mode == "extract-unsafe") {
            options.confine = options.skipSpecialFiles = options.restrictPermissions = false;
            options.outwardLinks = core::OutwardLinks::Keep;
        }
        options.safeWrites = mode != "extract-direct";
        return static_cast<long long>(
            core::extractArchiveWithOptions(u16(argv[3]), u16(argv[4]), u16(argv[2]), options)
                .written.size());
    }
    if (mode == "gunzip" && argc == 4) {
        return static_cast<long long>(
            core::uncompressgz({u16(argv[2])}, u16(argv[3]), true).size());
    }
    return -1;
}

}  // namespace

int main(int argc, char** argv) {
    // The host's part: names are converted through the environment's locale.
    std::setlocale(LC_ALL, "");
    try {
        const long long names = argc < 2 ? -1 : run(argv[1], argc, argv);
        if (names >= 0) {
            std::printf("%lld names\n", names);
            return 0;
        }
    } catch (const tessel::host::HostError& error) {
        std::fprintf(stderr, "archive_bench: %s [%s]\n", error.what(), error.GetID().c_str());
        return 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "archive_bench: %s\n", error.what());
        return 1;
    }
    std::fputs(
        "usage: archive_bench archive <format> <archive> <folder>\n"
        "       archive_bench gzip <file> <outputFolder>\n"
        "       archive_bench extract <format> <archive> <outputFolder>\n"
        "       archive_bench extract-safe|extract-unsafe|extract-direct <format> <archive> "
        "<outputFolder>\n"
        "       archive_bench gunzip <file.gz> <outputFile>\n",
        stderr);
    return 2;
}
