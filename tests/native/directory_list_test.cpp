#include "discio/bluray_source.h"
#include "discio/directory_list.h"
#include "discio/dvd_source.h"
#include "discio/file_stream.h"
#include "tests/native/folder_fixture.h"

#include <array>

using discio::listDirectory;
namespace fs = std::filesystem;

namespace {

using Names = std::vector<std::string>;
using DirectoryList = native_test::FolderTest;

TEST_F(DirectoryList, EverythingInBytewiseOrder)
{
    EXPECT_EQ(listDirectory(text(m_folder)), Names());
    for (const char* name : {"b", "B.x", "_", ".hidden", "a b"}) {
        write(m_folder / name, "");
    }
    fs::create_directories(m_folder / "sub.dir" / "inside");
    const Names names = {".hidden", "B.x", "_", "a b", "b", "sub.dir"};
    EXPECT_EQ(listDirectory(text(m_folder)), names);
    EXPECT_EQ(listDirectory(text(m_folder) + '/'), names);
}

TEST_F(DirectoryList, NoDirectoryNoList)
{
    write(m_folder / "file", "");
    fs::create_directory(m_folder / "sub");
    for (const char* name : {"file", "none", "none/deeper", "su*", "su?", "*"}) {
        EXPECT_EQ(listDirectory(text(m_folder) + '/' + name), std::nullopt) << name;
    }
}

TEST_F(DirectoryList, AListedNameCanBeOpened)
{
    write(m_folder / u8"stra\u00DFe", "content");
    const auto names = listDirectory(text(m_folder));
    ASSERT_TRUE(names && names->size() == 1);
    const auto opened = discio::openRegularFile(text(m_folder) + '/' + names->front());
    EXPECT_TRUE(opened.stream);
    EXPECT_EQ(opened.sizeBytes, 7U);
}

TEST_F(DirectoryList, LongListsAreWhole)
{
    Names expected;
    for (int i = 1000; i < 3000; ++i) {
        expected.push_back(std::to_string(i) + std::string(40, 'x'));
        write(m_folder / expected.back(), "");
    }
    EXPECT_EQ(listDirectory(text(m_folder)), expected);
}

TEST_F(DirectoryList, DiscsAreReadThroughIt)
{
    fs::create_directories(m_folder / "bd" / "bdmv" / "Playlist");
    write(m_folder / "bd/bdmv/Playlist/00001.MPLS", "playlist");
    fs::create_directories(m_folder / "dvd" / "VIDEO_TS");
    write(m_folder / "dvd/VIDEO_TS/VIDEO_TS.IFO", "manager");
    std::array<char, 256> problem = {};

    discio::BlurayDiscSource bluray;
    ASSERT_EQ(openBluraySource(text(m_folder / "bd").c_str(), bluray, problem.data(), problem.size()), 0)
        << problem.data();
    std::vector<std::uint8_t> bytes;
    EXPECT_EQ(readWholeFile(bluray, "BDMV/PLAYLIST/00001.mpls", bytes), 0);
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "playlist");

    discio::DvdDiscSource dvd;
    discio::DiscFileRef file;
    ASSERT_EQ(openDvdSource(text(m_folder / "dvd").c_str(), dvd, problem.data(), problem.size()), 0)
        << problem.data();
    EXPECT_EQ(openDvdFile(dvd, "VIDEO_TS.IFO", file, problem.data(), problem.size()), 0) << problem.data();
    EXPECT_EQ(file.sizeBytes, 7U);
    EXPECT_EQ(openDvdFileOptional(dvd, "VTS_01_0.IFO", file, problem.data(), problem.size()), 0);
    const std::string separated = text(m_folder / "dvd/VIDEO_TS") + '/';
    EXPECT_EQ(openDvdSource(separated.c_str(), dvd, problem.data(), problem.size()), -1);
    EXPECT_EQ(problem.data(), "'" + separated + "' has no VIDEO_TS directory");
}

}  // namespace
