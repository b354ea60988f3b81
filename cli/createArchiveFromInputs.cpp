#include <system_error>

#include <host/TextConversion.hpp>

#include "CliMessages.hpp"
#include "Commands.hpp"
#include "GatewayCall.hpp"
#include "InputWalker.hpp"

namespace tqarchive {

namespace fs = std::filesystem;
using tessel::host::fromFileSystemText;

namespace {

// root/input without its "." components, for tidy paths in messages ("tree", not
// "tree/."). Only "." goes: ".." after a symbolic link means something else on disk.
fs::path joinWithoutDots(const fs::path& root, const fs::path& input) {
    fs::path joined;
    for (const fs::path& part : root / input) {
        if (part != "." && !part.empty()) {
            joined /= part;
        }
    }
    return joined.empty() ? fs::path(".") : joined;
}

}  // namespace

int createArchiveFromInputs(const CommandLine& commandLine, const std::u16string& format,
                            const std::optional<std::string>& password,
                            const std::string& encryption) {
    const std::string& archive = commandLine.operands.front();
    const fs::path root = commandLine.rootFolder.value_or(std::string());
    const fs::path base = InputWalker::normal(root.empty() ? fs::path(".") : root);
    std::error_code error;
    if (!fs::is_directory(base, error)) {
        raiseError("rootFolder", {root.string()});
    }

    InputWalker walker;
    walker.exclude(archive);
    for (auto operand = commandLine.operands.begin() + 1; operand != commandLine.operands.end();
         ++operand) {
        if (operand->empty()) {
            raiseError("inputNotFound", {*operand, std::string("empty name")});
        }
        // Relative inputs are taken relative to the root folder, as with tar -C.
        const fs::path input(*operand);
        walker.add(input.is_relative() ? joinWithoutDots(root, input) : input, base);
    }

    std::vector<std::u16string> files;
    std::vector<std::u16string> names;
    for (const WalkedInput& input : walker.inputs()) {
        files.push_back(fromFileSystemText(input.diskPath.string()));
        names.push_back(fromFileSystemText(input.name));
    }

    GatewayCall call;
    call.text(fromFileSystemText(archive)).list(files).list(names).text(format);
    if (password) {
        call.text(tessel::host::fromUtf8(*password)).text(tessel::host::fromUtf8(encryption));
    }
    printNames(call.call(createArchiveBuiltin), commandLine.quiet);
    return 0;
}

}  // namespace tqarchive
