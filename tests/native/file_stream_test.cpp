#include "discio/file_stream.h"
#include "tests/native/folder_fixture.h"

#include <cerrno>
#include <vector>

using discio::openRegularFile;
using discio::PathKind;
using discio::queryPath;
using discio::readUpTo;

namespace {

using FileStream = native_test::FolderTest;

std::string read(std::FILE* stream, std::uint64_t offset, std::size_t size)
{
    std::vector<std::uint8_t> bytes(size, '?');
    bytes.resize(readUpTo(stream, offset, bytes));
    return {bytes.begin(), bytes.end()};
}

TEST_F(FileStream, StatusOfEveryKind)
{
    write(m_folder / "file", "12345");
    for (const std::string& directory :
         {text(m_folder), text(m_folder) + '/', text(m_folder) + "//", text(m_folder.root_path())}) {
        EXPECT_EQ(queryPath(directory).kind, PathKind::Directory) << directory;
    }
    const auto file = queryPath(text(m_folder / "file"));
    EXPECT_EQ(file.kind, PathKind::RegularFile);
    EXPECT_EQ(file.sizeBytes, 5U);
    for (const char* missing : {"none", "none/deeper", "file/", "none/"}) {
        const auto status = queryPath(text(m_folder / missing));
        EXPECT_EQ(status.kind, PathKind::Missing) << missing;
        EXPECT_EQ(status.errorNumber, missing == std::string("file/") ? ENOTDIR : ENOENT) << missing;
    }
    EXPECT_EQ(queryPath("").kind, PathKind::Missing);
}

TEST_F(FileStream, OnlyRegularFilesAreOpened)
{
    const auto directory = openRegularFile(text(m_folder));
    EXPECT_FALSE(directory.stream);
    EXPECT_EQ(directory.errorNumber, EISDIR);
    EXPECT_FALSE(directory.isSpecial);
    const auto missing = openRegularFile(text(m_folder / "none"));
    EXPECT_FALSE(missing.stream);
    EXPECT_EQ(missing.errorNumber, ENOENT);
    for (const char* device : {"/dev/null", "NUL"}) {  // each system knows one of these
        EXPECT_FALSE(openRegularFile(device).stream) << device;
    }
}

TEST_F(FileStream, BytesComeAsTheyAre)
{
    const std::string bytes("a\r\nb\n\x1A\0\xFF end", 12);
    write(m_folder / "file", bytes);
    const auto file = openRegularFile(text(m_folder / "file"));
    ASSERT_TRUE(file.stream);
    EXPECT_EQ(file.sizeBytes, 12U);
    EXPECT_EQ(read(file.stream.get(), 0, 100), bytes);
    EXPECT_EQ(discio::streamSize(file.stream.get()), 12U);
    EXPECT_EQ(read(file.stream.get(), 3, 2), "b\n") << "wherever the stream stands";
    EXPECT_EQ(read(file.stream.get(), 12, 1), "");
    EXPECT_EQ(read(file.stream.get(), 0, 0), "");
}

TEST_F(FileStream, OffsetsHave64Bits)
{
    constexpr std::uint64_t kFar = (std::uint64_t{5} << 30U) + 7;
    write(m_folder / "far", "near");
    std::filesystem::resize_file(m_folder / "far", kFar);
    {
        std::ofstream file(m_folder / "far", std::ios::binary | std::ios::app);
        file << "far";
    }
    EXPECT_EQ(queryPath(text(m_folder / "far")).sizeBytes, kFar + 3);
    const auto file = openRegularFile(text(m_folder / "far"));
    ASSERT_TRUE(file.stream);
    EXPECT_EQ(file.sizeBytes, kFar + 3);
    EXPECT_EQ(discio::streamSize(file.stream.get()), kFar + 3);
    EXPECT_EQ(read(file.stream.get(), kFar, 10), "far");
    EXPECT_EQ(read(file.stream.get(), kFar & UINT32_MAX, 3), std::string(3, '\0'));
    EXPECT_EQ(read(file.stream.get(), kFar + 3, 10), "");
    for (const std::uint64_t offset : {std::uint64_t{INT64_MAX}, std::uint64_t{INT64_MAX} + 1, UINT64_MAX}) {
        EXPECT_EQ(read(file.stream.get(), offset, 10), "") << offset;
    }
}

}  // namespace
