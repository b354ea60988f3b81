// A program outside the project that embeds the installed library.
#include <archive/core/archivecore.hpp>
#include <host/host.hpp>

#include <cstdio>
#include <string>

int main(int argc, char** argv) {
    if (argc < 2) {
        return 2;
    }
    const std::string text = tessel::host::lookupMessageUtf8(
        "TESSEL:io:archive:zip:openError", {std::u16string(u"/nowhere/a.zip")});
    if (text.find("/nowhere/a.zip") == std::string::npos) {
        std::fprintf(stderr, "unexpected catalogue text: %s\n", text.c_str());
        return 1;
    }
    std::printf("%s\n", text.c_str());
    return 0;
}
