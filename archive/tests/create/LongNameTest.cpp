// A zip entry name longer than the format's 65535-byte field: createArchive warns once for
// the refused header and then fails as libarchive refuses the data; the calls with options
// say what is wrong with the name.
#include <gtest/gtest.h>

#include "../support/Outcomes.hpp"
#include "../support/Tools.hpp"

namespace tqtest {
namespace {

struct LongName {
    std::string label;
    std::string content;
    std::function<Paths(const std::u16string& archive, const Paths& files, const Paths& names)>
        create;
    std::string outcome;  // the name written N
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
         .outcome = "?createArchive:openEntryError(N) !extractArchive:internalError"},
        {.label = "plain, empty",
         .content = "",
         .create = plain,
         .outcome = "N ?createArchive:openEntryError(N)"},
        {.label = "options, data",
         .content = "x",
         .create = withOptions,
         .outcome = "!createArchive:entryNameTooLong(~/long.zip;65537;65535)"},
        {.label = "options, empty",
         .content = "",
         .create = withOptions,
         .outcome = "!createArchive:entryNameTooLong(~/long.zip;65537;65535)"},
    };
    for (const LongName& c : cases) {
        SCOPED_TRACE(c.label);
        writeFile(dir / "in.txt", c.content);
        fs::remove(dir / "long.zip");
        std::string result = outcome(
            [&] { return c.create(u16(dir / "long.zip"), {u16(dir / "in.txt")}, {u16(name)}); },
            dir.path());
        for (std::size_t at = result.find(name); at != std::string::npos;
             at = result.find(name, at)) {
            result.replace(at, name.size(), "N");
        }
        EXPECT_EQ(result, c.outcome);
    }
}

}  // namespace
}  // namespace tqtest
