// Blu-ray images of other programs, read by this one; and the images that the tests build, read by another program.
// A test whose program is not installed is skipped.
#include "discio/bluray_source.h"
#include "tests/support/sample_bluray.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace testsupport;

namespace {

bool run(const std::string& command)
{
    return std::system(("(" + command + ") >/dev/null 2>&1").c_str()) == 0;
}

// With UDF 1.02 over the same data, and without.
TEST(AuthoredBluray, ImagesGiveTheFiles)
{
    if (!run("command -v genisoimage && command -v xorriso")) {
        GTEST_SKIP() << "genisoimage or xorriso is not installed";
    }
    DiscTree tree;  // with enough names for directories of many blocks
    tree.add("BDMV/index.bdmv", Bytes(100, 1));
    std::vector<std::string> names;
    for (std::size_t i = 1000; i < 1400; ++i) {
        names.push_back("0" + std::to_string(i));
        tree.add("BDMV/PLAYLIST/" + names.back() + ".mpls",
                 Bytes(i % 3 * 2048 + i, static_cast<std::uint8_t>(i)));
    }
    const TemporaryFolder folder;
    tree.writeDirectory(folder / "disc");
    for (const auto& [program, mode] : {std::pair{"genisoimage -udf", discio::BluraySourceMode::Udf},
                                        {"xorriso -as mkisofs", discio::BluraySourceMode::Iso}}) {
        SCOPED_TRACE(program);
        ASSERT_TRUE(
            run("cd " + folder / "" + " && " + program + " -iso-level 3 -V AUTHORED -o disc.iso disc"));
        discio::BlurayDiscSource source;
        ASSERT_EQ(openBluraySource((folder / "disc.iso").c_str(), source, nullptr, 0), 0);
        EXPECT_EQ(source.mode, mode);
        EXPECT_EQ(source.volumeId, "AUTHORED");
        for (const TreeFile& file : tree.files()) {
            Bytes bytes;
            EXPECT_EQ(readWholeFile(source, file.path, bytes), 0) << file.path;
            EXPECT_EQ(bytes, file.bytes) << file.path;
        }
        std::vector<std::string> listed;
        EXPECT_EQ(listFilesWithSuffix(source, "BDMV/PLAYLIST", ".mpls", listed), 0);
        std::ranges::sort(listed);
        EXPECT_EQ(listed, names);
    }
}

// 7-Zip is strict about the descriptors, but reads only metadata files of one piece and no mirror.
TEST(Udf250Lister, ExtractsTheVeryFiles)
{
    const std::string program = run("command -v 7zz") ? "7zz" : "7z";
    if (!run("command -v " + program)) { GTEST_SKIP() << "7-Zip is not installed"; }
    for (const ImageSpec& spec :
         {ImageSpec{}, ImageSpec{.hasMetadataCopy = false}, ImageSpec{.isMetadataMapFirst = true},
          ImageSpec{.descriptorKind = 1, .partitionNumber = 7}, ImageSpec{.descriptorKind = 3}}) {
        DiscTree tree = sampleBluray();
        for (int i = 1000; spec.descriptorKind != 3 && i < 1200; ++i) {  // a directory of several blocks
            tree.add("BDMV/AUXDATA/" + std::to_string(i) + ".otf", {static_cast<std::uint8_t>(i)});
        }
        const TemporaryFolder folder;
        tree.writeDirectory(folder / "disc");
        tree.image(DiscForm::Udf250, spec).writeTo(folder / "disc.iso");
        const std::string extract = program + " x -y -o" + folder / "extracted" + ' ' + folder / "disc.iso";
        ASSERT_TRUE(run(extract + " | grep -F '*OSTA UDF Compliant::2.50'"));
        EXPECT_TRUE(run("diff -r " + folder / "disc" + ' ' + folder / "extracted"));
    }
}

}  // namespace
