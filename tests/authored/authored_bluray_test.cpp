// Blu-ray images of other programs, read by this one; and the images that the tests build, read by another program.
// A test whose program is not installed is skipped.
#include "discio/bluray_source.h"
#include "tests/support/sample_bluray.h"

#include <gtest/gtest.h>

#include <cstdlib>

using testsupport::Bytes;
using testsupport::DiscTree;
using testsupport::ImageSpec;
namespace fs = std::filesystem;

namespace {

bool run(const std::string& command)
{
    return std::system(("(" + command + ") >/dev/null 2>&1").c_str()) == 0;
}

Bytes contentOf(const fs::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

class AuthoredBluray : public testing::TestWithParam<std::string> {};

TEST_P(AuthoredBluray, ImageGivesTheFiles)
{
    const std::string program = GetParam().substr(0, GetParam().find(' '));
    if (!run("command -v " + program)) { GTEST_SKIP() << program << " is not installed"; }
    DiscTree tree;  // with enough names for directories of many blocks
    tree.add("BDMV/index.bdmv", Bytes(100, 1)).add("CERTIFICATE/id.bdmv", Bytes(104, 2));
    std::vector<std::string> names;
    for (std::size_t i = 1000; i < 1400; ++i) {
        names.push_back("0" + std::to_string(i));
        const auto content = static_cast<std::uint8_t>(i);
        tree.add("BDMV/PLAYLIST/" + names.back() + ".mpls", Bytes(i, content));
        tree.add("BDMV/CLIPINF/" + names.back() + ".clpi", Bytes(i % 3 * 2048, content));
        tree.add("BDMV/STREAM/" + names.back() + ".m2ts", Bytes(i % 7, content));
    }
    const testsupport::TemporaryFolder folder;
    tree.writeDirectory(folder / "disc");
    ASSERT_TRUE(
        run("cd " + folder / "" + " && " + GetParam() + " -iso-level 3 -V AUTHORED -o disc.iso disc"));

    discio::BlurayDiscSource source;
    ASSERT_EQ(openBluraySource((folder / "disc.iso").c_str(), source, nullptr, 0), 0);
    EXPECT_EQ(source.mode,
              program == "genisoimage" ? discio::BluraySourceMode::Udf : discio::BluraySourceMode::Iso);
    EXPECT_EQ(source.volumeId, "AUTHORED");
    for (const testsupport::TreeFile& file : tree.files()) {
        Bytes bytes;
        EXPECT_EQ(readWholeFile(source, file.path, bytes), 0) << file.path;
        EXPECT_EQ(bytes, file.bytes) << file.path;
        EXPECT_EQ(blurayFileSize(source, file.path), file.bytes.size()) << file.path;
    }
    for (const auto& [directory, suffix] :
         {std::pair{"BDMV/PLAYLIST", ".mpls"}, {"BDMV/CLIPINF", ".clpi"}, {"BDMV/STREAM", ".m2ts"}}) {
        std::vector<std::string> listed;
        EXPECT_EQ(listFilesWithSuffix(source, directory, suffix, listed), 0) << directory;
        std::ranges::sort(listed);
        EXPECT_EQ(listed, names) << directory;
    }
}

// With UDF 1.02 over the same data, and without.
INSTANTIATE_TEST_SUITE_P(Tools, AuthoredBluray, testing::Values("genisoimage -udf", "xorriso -as mkisofs"));

// 7-Zip is strict about the descriptors, but reads only metadata files of one piece and no mirror.
TEST(Udf250Lister, ExtractsTheVeryFiles)
{
    const std::string program = run("command -v 7zz") ? "7zz" : "7z";
    if (!run("command -v " + program)) { GTEST_SKIP() << "7-Zip is not installed"; }
    for (const ImageSpec& spec :
         {ImageSpec{}, ImageSpec{.hasMetadataCopy = false}, ImageSpec{.isMetadataMapFirst = true},
          ImageSpec{.descriptorKind = 1, .partitionNumber = 7}, ImageSpec{.descriptorKind = 3}}) {
        DiscTree tree = testsupport::sampleBluray();
        for (int i = 1000; spec.descriptorKind != 3 && i < 1200; ++i) {  // a directory of several blocks
            tree.add("BDMV/AUXDATA/" + std::to_string(i) + ".otf", {static_cast<std::uint8_t>(i)});
        }
        const testsupport::TemporaryFolder folder;
        tree.image(testsupport::DiscForm::Udf250, spec).writeTo(folder / "disc.iso");
        const std::string extract = program + " x -y -o" + folder / "extracted" + ' ' + folder / "disc.iso";
        ASSERT_TRUE(run(extract + " | grep -F '*OSTA UDF Compliant::2.50'"));
        for (const testsupport::TreeFile& file : tree.files()) {
            EXPECT_EQ(contentOf(folder.path() / "extracted" / file.path), file.bytes) << file.path;
        }
        const auto files = fs::recursive_directory_iterator(folder / "extracted");
        EXPECT_EQ(std::count_if(begin(files), end(files),
                                [](const auto& entry) { return entry.is_regular_file(); }),
                  static_cast<std::ptrdiff_t>(tree.files().size()));
    }
}

}  // namespace
