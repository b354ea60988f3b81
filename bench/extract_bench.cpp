// Benchmark driver for extraction: the library's entry points on one archive or gzip
// file, for bench/extract.sh to time against bsdtar, unzip and gzip.
//
//   extract_bench extract <format> <archive> <outputFolder>   extractArchive, every entry
//   extract_bench gunzip <file.gz> <outputFile>               uncompressgz to an exact path
#include <clocale>
#include <cstdio>
#include <exception>
#include <string>

#include <archive/core/archivecore.hpp>
#include <host/HostError.hpp>
#include <host/TextConversion.hpp>

namespace core = tessel::io::archive::core;

namespace {

std::u16string u16(const char* text) {
    return tessel::host::fromUtf8(text);
}

int usage() {
    std::fputs(
        "usage: extract_bench extract <format> <archive> <outputFolder>\n"
        "       extract_bench gunzip <file.gz> <outputFile>\n",
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
        if (mode == "extract" && argc == 5) {
            const auto written =
                core::extractArchive(u16(argv[3]), u16(argv[4]), u16(argv[2]), u"");
            std::printf("%zu entries\n", written.size());
            return 0;
        }
        if (mode == "gunzip" && argc == 4) {
            core::uncompressgz({u16(argv[2])}, u16(argv[3]), true);
            return 0;
        }
    } catch (const tessel::host::HostError& error) {
        std::fprintf(stderr, "%s: %s\n", error.GetID().c_str(), error.what());
        return 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
    return usage();
}
