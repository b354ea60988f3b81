// Benchmark driver for archive creation: the library's entry points on a folder or a file,
// for bench/create.sh to time against bsdtar and gzip.
//
//   create_bench archive <format> <archive> <folder>   every file and folder under <folder>,
//                                                      named relative to it
//   create_bench gzip <file> <outputFolder>            compressgz of one file
#include <clocale>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <vector>

#include <archive/core/archivecore.hpp>
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

int usage() {
    std::fputs(
        "usage: create_bench archive <format> <archive> <folder>\n"
        "       create_bench gzip <file> <outputFolder>\n",
        stderr);
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    // The host's part: names are converted through the environment's locale.
    std::setlocale(LC_ALL, "");
    if (argc < 2) {
        return usage();
    }
    const std::string mode = argv[1];
    try {
        if (mode == "archive" && argc == 5) {
            std::vector<std::u16string> files;
            std::vector<std::u16string> names;
            collectInputs(argv[4], files, names);
            const auto written = core::createArchive(u16(argv[3]), files, names, u16(argv[2]));
            std::printf("%zu entries\n", written.size());
            return 0;
        }
        if (mode == "gzip" && argc == 4) {
            const auto written = core::compressgz({u16(argv[2])}, u16(argv[3]));
            std::printf("%zu files\n", written.size());
            return 0;
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "create_bench: %s\n", error.what());
        return 1;
    }
    return usage();
}
