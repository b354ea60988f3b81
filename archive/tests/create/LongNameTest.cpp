// A zip entry name longer than the format's 65535-byte field: createArchive warns once for
// the refused header and then fails as libarchive refuses the data; the calls with options
// say what is wrong with the name.
#include <gtest/gtest.h>

#include "../support/Outcomes.hpp"
#include "../support/Tools.hpp"

namespace tqtest {
namespace {

// How often the text holds the part.
std::size_t occurrences(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

struct LongName {
    std::string label;
    std::string content;
    std::function<Paths(const std::u16string& archive, const Paths& files, const Paths& names)>
        create;
    std::string ending;    // how the outcome ends
    std::size_t warnings;  // openEntryError warnings issued
};

TEST(LongName, RefusedZipHeaderWarnsOnceAndTheOptionCallsNameTheCause) {
    TempDir dir;
    const std::string name(65537, 'n');
    const auto plain = [](const std::u16string& archive, const Paths& files, const Paths& names) {
        return core::createArchive(archive, files, names, u"zip");
    };
    const auto withOptions = [](const std::u16string& archive, const Paths& files,
                                const Paths& names) {
        return core::createArchiveWithOptions(archive, files, names, u"zip", {});
    };
    const LongName cases[] = {
        {.label = "plain, data",
         .content = "x",
         .create = plain,
         .ending = " !extractArchive:internalError",
         .warnings = 1},
        {.label = "plain, empty", .content = "", .create = plain, .ending = name, .warnings = 1},
        {.label = "options, data",
         .content = "x",
         .create = withOptions,
         .ending = "!createArchive:entryNameTooLong(~/long.zip;65537;65535)",
         .warnings = 0},
        {.label = "options, empty",
         .content = "",
         .create = withOptions,
         .ending = "!createArchive:entryNameTooLong(~/long.zip;65537;65535)",
         .warnings = 0},
    };
    for (const auto& [label, content, create, ending, warnings] : cases) {
        SCOPED_TRACE(label);
        writeFile(dir / "in.txt", content);
        fs::remove(dir / "long.zip");
        const std::string result = outcome(
            [&] { return create(u16(dir / "long.zip"), {u16(dir / "in.txt")}, {u16(name)}); },
            dir.path());
        std::string shortened = result;
        for (std::size_t at = shortened.find(name); at != std::string::npos;
             at = shortened.find(name, at)) {
            shortened.replace(at, name.size(), "N");
        }
        EXPECT_TRUE(shortened.ends_with(ending)) << shortened;
        EXPECT_EQ(occurrences(result, "?createArchive:openEntryError("), warnings);
    }
}

}  // namespace
}  // namespace tqtest
