// Both gzip calls raise through one failure table: the same identifier for a missing input,
// and compressgzToFile leaves no output behind.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include <archive/core/CreateOptions.hpp>
#include <archive/core/archivecore.hpp>

#include "../support/TestSupport.hpp"

namespace core = tessel::io::archive::core;

namespace {

void expectRaised(const std::optional<tqtest::RaisedError>& raised, const std::string& identifier,
                  const std::vector<std::string>& arguments, const std::string& row) {
    ASSERT_TRUE(raised) << row;
    EXPECT_EQ(raised->identifier, identifier) << row;
    EXPECT_EQ(raised->arguments, arguments) << row;
}

}  // namespace

TEST(GzipFailures, BothEntryPointsUseTheTable) {
    const tqtest::TempDir dir;
    const std::u16string missing = tqtest::u16(dir / "missing.txt");
    const auto fromCompressgz =
        tqtest::raisedBy([&] { core::compressgz({missing}, tqtest::u16(dir.path())); });
    expectRaised(fromCompressgz, "TESSEL:io:archive:gzip:javaOpenError", {tqtest::utf8(missing)},
                 "compressgz");
    const std::u16string output = tqtest::u16(dir / "out.gz");
    const auto fromToFile =
        tqtest::raisedBy([&] { core::compressgzToFile(missing, output, core::CreateOptions()); });
    expectRaised(fromToFile, "TESSEL:io:archive:gzip:javaOpenError", {tqtest::utf8(missing)},
                 "compressgzToFile");
    EXPECT_FALSE(std::filesystem::exists(dir / "out.gz"));

    tqtest::writeFile(dir / "in.txt", "some text");
    core::CreateOptions badLevel;
    badLevel.level = 42;
    const auto refused = tqtest::raisedBy(
        [&] { core::compressgzToFile(tqtest::u16(dir / "in.txt"), output, badLevel); });
    expectRaised(refused, "TESSEL:io:archive:createArchive:invalidCompression", {"gzip", "42"},
                 "compressgzToFile level");
    EXPECT_FALSE(std::filesystem::exists(dir / "out.gz"));
}
