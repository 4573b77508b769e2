#include "discio/disc_directory.h"
#include "tests/discio/bluray_source_fixture.h"
#include "tests/support/unprivileged_user.h"

#include <sys/stat.h>

using discio::BluraySourceMode;
using discio_test::BluraySource;
using discio_test::Names;
using discio_test::pattern;
using discio_test::sampleTree;
using testsupport::Bytes;
using testsupport::DiscForm;
using testsupport::DiscTree;
using testsupport::writeFile;
namespace fs = std::filesystem;

namespace {

TEST_F(BluraySource, DirectoryIsTakenAsBdmvOrAsItsParent)
{
    sampleTree().writeDirectory(m_disc);
    EXPECT_EQ(open(m_disc), 0);
    EXPECT_EQ(m_source.rootPath, m_disc);
    EXPECT_EQ(open(m_disc + "/BDMV"), 0);
    EXPECT_EQ(m_source.rootPath, m_disc);
    fs::create_directories(m_folder / "lower/bdmv/PLAYLIST");
    EXPECT_EQ(open(m_folder / "lower"), 0);
    EXPECT_EQ(list("BDMV/PLAYLIST"), Names{});
    EXPECT_EQ(open(m_folder / "lower/bdmv"), 0);

    EXPECT_EQ(failure(m_disc + "/BDMV/"), "'" + m_disc + "/BDMV/' has no BDMV directory");
    const std::string backslash = m_folder / "x\\BDMV";
    fs::create_directory(backslash);
    EXPECT_EQ(failure(backslash), "'" + backslash + "' has no BDMV directory") << "no separator here";
    const fs::path before = fs::current_path();
    fs::current_path(m_disc);
    EXPECT_EQ(failure("BDMV"), "'BDMV' has no BDMV directory");
    EXPECT_EQ(open("./BDMV"), 0);
    EXPECT_EQ(list("BDMV/PLAYLIST").size(), 2U);
    fs::current_path(before);
}

TEST_F(BluraySource, PathThatCannotBeADisc)
{
    const std::string missing = m_folder / "missing";
    EXPECT_EQ(failure(missing), "cannot stat '" + missing + "': No such file or directory");
    const std::string tooLong = "/" + std::string(5000, 'x') + "/BDMV";
    EXPECT_EQ(open(tooLong), -1);
    for (const std::string& path : {m_folder / "fifo", std::string("/dev/null")}) {
        if (path != "/dev/null") { ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0); }
        EXPECT_EQ(failure(path).rfind("cannot open '" + path + "': ", 0), 0U) << message();
    }
    std::array<char, 12> small = {};
    EXPECT_EQ(openBluraySource("/nowhere", m_source, small.data(), small.size()), -1);
    EXPECT_STREQ(small.data(), "cannot stat");
    EXPECT_EQ(openBluraySource("/nowhere", m_source, nullptr, 0), -1);
}

TEST_F(BluraySource, PermissionDenied)
{
    sampleTree().writeDirectory(m_disc);
    const std::string image = sampleTree().write(DiscForm::Udf, m_folder);
    fs::permissions(m_folder.path(), fs::perms(0755));
    for (const std::string& path : {image, m_disc + "/BDMV/PLAYLIST", m_disc + "/BDMV/index.bdmv"}) {
        fs::permissions(path, fs::perms::none);
    }
    {
        const testsupport::UnprivilegedUser meanwhile;
        EXPECT_EQ(failure(image), "cannot open '" + image + "': Permission denied");
        ASSERT_EQ(open(m_disc), 0);
        EXPECT_EQ(list("BDMV/PLAYLIST"), m_failed);
        EXPECT_EQ(read("BDMV/index.bdmv"), m_unreadable);
        EXPECT_EQ(sizeOf("BDMV/index.bdmv"), 100U) << "a size needs no permission";
    }
    fs::permissions(m_disc + "/BDMV/PLAYLIST", fs::perms::owner_all);  // to be removed
    fs::permissions(m_disc, fs::perms(0311));
    {
        const testsupport::UnprivilegedUser meanwhile;
        EXPECT_EQ(failure(m_disc + "/BDMV"), "'" + m_disc + "/BDMV' has no BDMV directory");
    }
    fs::permissions(m_disc, fs::perms::owner_all);
}

TEST_F(BluraySource, ImageMustHoldAFileSystem)
{
    const std::string image = m_disc + ".iso";
    const std::string message = "'" + image + "' is not a supported ISO-9660 or UDF image";
    writeFile(image, {});
    EXPECT_EQ(failure(image), message);
    sampleTree().image(DiscForm::Iso).writeTo(image, 17 * 2048 - 1);
    EXPECT_EQ(failure(image), message);
    sampleTree().image(DiscForm::Iso).putLe(testsupport::kIsoDescriptor + 5, '2', 1).writeTo(image);
    EXPECT_EQ(failure(image), message);
    sampleTree().image(DiscForm::Udf).putLe(testsupport::kUdfAnchor, 0, 2).writeTo(image);
    EXPECT_EQ(failure(image), message);
    testsupport::BuiltImage hybrid = sampleTree().image(DiscForm::Hybrid);
    hybrid.putLe(hybrid.fileSet(), 0, 2).writeTo(image);
    ASSERT_EQ(open(image), 0);
    EXPECT_EQ(m_source.mode, BluraySourceMode::Iso) << "no UDF, but still ISO-9660";
    sampleTree().image(DiscForm::Hybrid).putLe(testsupport::kIsoDescriptor, 2, 1).writeTo(image);
    ASSERT_EQ(open(image), 0);
    EXPECT_EQ(m_source.mode, BluraySourceMode::Udf);
    EXPECT_EQ(m_source.volumeId, "");
}

TEST_F(BluraySource, VolumeIdHasNoPadding)
{
    using namespace std::string_literals;
    const std::array<std::array<std::string, 2>, 5> cases = {{{"A DISC  ", "A DISC"},
                                                              {"DISC\0\0 \0"s, "DISC"},
                                                              {std::string(32, ' '), ""},
                                                              {std::string(32, 'X'), std::string(32, 'X')},
                                                              {"A\0B"s, "A"}}};
    for (const auto& [stored, text] : cases) {
        sampleTree().image(DiscForm::Hybrid, {.volumeId = stored}).writeTo(m_disc + ".iso");
        ASSERT_EQ(open(m_disc + ".iso"), 0);
        EXPECT_EQ(m_source.volumeId, text);
    }
}

TEST_F(BluraySource, ExactCaseComesBeforeOtherCases)
{
    DiscTree tree = sampleTree();
    tree.add("BDMV/b.x", {1}).add("BDMV/B.x", {2}).add("BDMV/B.X", {3}).writeDirectory(m_disc);
    ASSERT_EQ(open(m_disc), 0);
    EXPECT_EQ(read("BDMV/b.x"), Bytes{1});
    EXPECT_EQ(read("BDMV/B.x"), Bytes{2});
    EXPECT_EQ(read("BDMV/B.X"), Bytes{3});
    EXPECT_EQ(read("BDMV/b.X"), Bytes{3}) << "the first in byte-wise order";
    EXPECT_EQ(list("BDMV", ".x"), (Names{"B", "B", "b"}));
}

TEST_F(BluraySource, WhatIsNoRegularFileNeitherHangsNorReads)
{
    sampleTree().writeDirectory(m_disc);
    const std::string folder = m_disc + "/BDMV/";
    ASSERT_EQ(::mkfifo((folder + "fifo.x").c_str(), 0600), 0);
    ASSERT_EQ(::mknod((folder + "socket.x").c_str(), S_IFSOCK | 0600, 0), 0);
    fs::create_symlink("/dev/zero", folder + "device.x");
    fs::create_symlink("nowhere", folder + "dangling.x");
    fs::create_symlink("loop.x", folder + "loop.x");
    fs::create_symlink("index.bdmv", folder + "link.x");
    ASSERT_EQ(open(m_disc), 0);
    const Names names = {"dangling", "device", "fifo", "link", "loop", "socket"};
    EXPECT_EQ(list("BDMV", ".x"), names);
    for (const std::string& name : names) {
        const bool isFile = name == "link";
        EXPECT_EQ(read("BDMV/" + name + ".x"), isFile ? pattern(100, 1) : m_unreadable) << name;
        EXPECT_EQ(sizeOf("BDMV/" + name + ".x"), isFile ? 100U : 0U) << name;
        EXPECT_EQ(list("BDMV/" + name + ".x"), m_failed) << name;
    }
}

}  // namespace
