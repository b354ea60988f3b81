// Gzip trailers are checked: one flipped bit in stored (random) data is found by gunzip,
// by every extraction of a compressed tar and by testing, also after the tar's end marker;
// multi-member streams and trailing zeros still pass. And gunzip never writes onto its input.
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <optional>
#include <stdexcept>
#include <thread>

#include <boost/algorithm/string/join.hpp>
#include <boost/algorithm/string/replace.hpp>

#include "../support/Outcomes.hpp"
#include "../support/Tools.hpp"

namespace tqtest {
namespace {

void flipBit(const fs::path& file, std::ptrdiff_t at) {
    std::string bytes = readFile(file);
    bytes[at < 0 ? bytes.size() + at : at] ^= 0x10;
    writeFile(file, bytes);
}

// As tqarchive untars a gzip file: a second thread gunzips the archive into a pipe, and a
// safe extraction reads the plain tar from the pipe and asks for the gunzip's verdict once
// it has read to the end.
std::string extractedThroughPipe(const fs::path& archive, const fs::path& out) {
    int ends[2];
    if (::pipe(ends) != 0) {
        throw std::runtime_error("pipe");
    }
    std::optional<std::string> failure;
    std::thread gunzip([&] {
        sigset_t pipeSignal;
        sigemptyset(&pipeSignal);
        sigaddset(&pipeSignal, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &pipeSignal, nullptr);
        core::ExtractOptions options;
        options.outputDescriptor = ends[1];
        try {
            core::uncompressgzWithOptions({u16(archive)}, u"", true, options);
        } catch (const std::exception& error) {
            failure = error.what();
        }
        ::close(ends[1]);
    });
    core::ExtractOptions options = core::ExtractOptions::safe();
    options.inputDescriptor = ends[0];
    options.upstreamVerdict = [&] {
        gunzip.join();
        return failure;
    };
    const std::string said = outcome(
        [&] {
            return core::extractArchiveWithOptions(u16(archive), u16(out), u"tgz", options).written;
        },
        out.parent_path());
    ::close(ends[0]);
    if (gunzip.joinable()) {
        gunzip.join();
    }
    return said;
}

struct Stream {
    std::string file;
    // .gz: uncompressgz | testArchive | what is left. .tgz: extractArchive | safe extraction |
    // safe extraction through a pipe | testArchive | what is left. "~" is the output folder, "@"
    // the archive, "same" the original data.
    std::string expected;
};

TEST(GzipIntegrity, DamageIsFoundAndSoundStreamsPass) {
    REQUIRE_TOOLS("gzip", "pigz", "tar");
    TempDir dir;
    writeFile(dir / "data.bin", randomBytes(200000, 11));
    const std::string same = listing(dir.path()).substr(9);  // data.bin=[size:hash]
    writeFile(dir / "tail.bin", randomBytes(100000, 12));
    sh(dir.path(),
       "tar cf t.tar data.bin && gzip -c data.bin > good.gz && gzip -c t.tar > good.tgz && "
       "cp good.gz bad.gz && cp good.tgz bad.tgz && pigz -c data.bin > pigz.gz && pigz -c t.tar > "
       "pigz.tgz && (head -c 100000 data.bin | gzip; tail -c +100001 data.bin | gzip) > multi.gz "
       "&& (head -c 102400 t.tar | gzip; tail -c +102401 t.tar | gzip) > multi.tgz && "
       "(cat good.gz; head -c 1024 /dev/zero) > zeros.gz && (cat good.tgz; head -c 1024 "
       "/dev/zero) > zeros.tgz && cat t.tar tail.bin | gzip > afterend.tgz");
    flipBit(dir / "bad.gz", 2000);
    flipBit(dir / "bad.tgz", 2000);
    flipBit(dir / "afterend.tgz", -3000);  // inside the random bytes after the end marker
    const std::string soundTgz =
        "~/plain/data.bin | ~/safe/data.bin | ~/piped/data.bin | read 1 | piped/ "
        "piped/data.bin=same plain/ plain/data.bin=same safe/ safe/data.bin=same";
    const std::string damagedTgz =
        "!untar:invalidTarFile(@) | !untar:invalidTarFile(@) | !untar:invalidTarFile(@) | read 1 "
        "testArchive:damagedStream(@;incorrect data check) | plain/";
    const std::vector<Stream> streams = {
        {"good.gz", "~/good | read 1 | good=same"},
        {"pigz.gz", "~/pigz | read 1 | pigz=same"},
        {"multi.gz", "~/multi | read 1 | multi=same"},
        {"zeros.gz", "~/zeros | read 1 | zeros=same"},
        {"bad.gz",
         "!gunzip:javaCopyStreamError(bad) | read 0 testArchive:damagedStream(@;incorrect "
         "data check) | bad=[200000:78663]"},
        {"good.tgz", soundTgz},
        {"pigz.tgz", soundTgz},
        {"multi.tgz", soundTgz},
        {"zeros.tgz", soundTgz},
        {"bad.tgz", damagedTgz},
        {"afterend.tgz", damagedTgz},
    };
    for (const Stream& s : streams) {
        const fs::path archive = dir / s.file, out = dir / "o" / s.file;
        const std::u16string from = u16(archive);
        std::vector<std::string> parts;
        if (s.file.ends_with(".gz")) {
            parts.push_back(
                outcome([&] { return core::uncompressgz({from}, u16(out), false); }, out));
            parts.push_back(tested(archive, u"gz", out));
        } else {
            parts.push_back(outcome(
                [&] { return core::extractArchive(from, u16(out / "plain"), u"tgz", u""); }, out));
            parts.push_back(outcome(
                [&] {
                    return core::extractArchiveWithOptions(from, u16(out / "safe"), u"tgz",
                                                           core::ExtractOptions::safe())
                        .written;
                },
                out));
            parts.push_back(extractedThroughPipe(archive, out / "piped"));
            parts.push_back(tested(archive, u"tgz", out));
        }
        parts.push_back(listing(out));
        std::string text = boost::algorithm::join(parts, " | ");
        boost::algorithm::replace_all(text, same, "same");
        boost::algorithm::replace_all(text, archive.string(), "@");
        EXPECT_EQ(text, s.expected) << s.file;
    }
}

// A name without an extension would be decompressed onto itself: refused before anything
// is written, however the output is named.
TEST(GzipIntegrity, GunzipRefusesToWriteOntoItsInput) {
    REQUIRE_TOOLS("gzip");
    TempDir dir;
    sh(dir.path(), "printf data | gzip > noext && cp noext keep.gz");
    const std::string before = readFile(dir / "noext");
    const auto here = enter(dir.path());
    struct Gunzip {
        Paths files;
        std::u16string folder;
        bool exact;
        std::string expected;
    };
    const std::vector<Gunzip> cases = {
        {{u16(dir / "noext")}, u"", false, "!gunzip:outputIsInput(~/noext)"},
        {{u16(dir / "noext")}, u16(dir.path()), false, "!gunzip:outputIsInput(~/noext)"},
        {{u"noext"}, u"", false, "!gunzip:outputIsInput(noext)"},
        {{u"./noext"}, u".", false, "!gunzip:outputIsInput(./noext)"},
        {{u16(dir / "keep.gz")}, u16(dir / "keep.gz"), true, "!gunzip:outputIsInput(~/keep.gz)"},
        // Nothing of a list is written when one of its inputs would be.
        {{u"keep.gz", u"noext"}, u"", false, "!gunzip:outputIsInput(noext)"},
        {{u16(dir / "noext")}, u16(dir / "elsewhere"), false, "~/elsewhere/noext"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(
            outcome([&] { return core::uncompressgz(c.files, c.folder, c.exact); }, dir.path()),
            c.expected);
    }
    EXPECT_EQ(readFile(dir / "noext"), before);
    EXPECT_EQ(readFile(dir / "keep.gz"), before);
    EXPECT_FALSE(fs::exists(dir / "keep"));
}

}  // namespace
}  // namespace tqtest
