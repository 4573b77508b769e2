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

std::string read(const discio::NativeFile& stream, std::uint64_t offset, std::size_t size)
{
    std::vector<std::uint8_t> bytes(size, '?');
    bytes.resize(readUpTo(stream, offset, bytes));
    return {bytes.begin(), bytes.end()};
}

TEST_F(FileStream, OnlyRegularFilesAreOpened)
{
    write(m_folder / "file", "12345");
    const std::string folder = text(m_folder);
    const struct {
        std::string path;
        PathKind kind;
        int errorNumber;  // of opening it
    } rows[] = {{folder + "/file", PathKind::RegularFile, 0},
                {folder, PathKind::Directory, EISDIR},
                {folder + "//", PathKind::Directory, EISDIR},
                {text(m_folder.root_path()), PathKind::Directory, EISDIR},
                {folder + "/none", PathKind::Missing, ENOENT},
                {folder + "/none/deeper", PathKind::Missing, ENOENT},
                {folder + "/none/", PathKind::Missing, ENOENT},
                {folder + "/file/", PathKind::Missing, ENOTDIR},
                {"", PathKind::Missing, ENOENT}};
    for (const auto& row : rows) {
        const auto status = queryPath(row.path);
        EXPECT_EQ(status.kind, row.kind) << row.path;
        EXPECT_EQ(status.errorNumber, row.kind == PathKind::Missing ? row.errorNumber : 0) << row.path;
        const auto opened = openRegularFile(row.path);
        EXPECT_EQ(opened.stream != nullptr, row.kind == PathKind::RegularFile) << row.path;
        EXPECT_EQ(opened.errorNumber, row.errorNumber) << row.path;
        EXPECT_FALSE(opened.isSpecial) << row.path;
    }
    for (const char* device : {"/dev/null", "NUL"}) {  // each system has one of these
        EXPECT_FALSE(openRegularFile(device).stream) << device;
    }
}

TEST_F(FileStream, BytesAreReadAtAnyOffset)
{
    constexpr std::uint64_t kFar = (std::uint64_t{5} << 30U) + 7;
    const std::string bytes("a\r\nb\n\x1A\0\xFF end", 12);
    write(m_folder / "file", bytes);
    std::filesystem::resize_file(m_folder / "file", kFar);
    ASSERT_TRUE((std::ofstream(m_folder / "file", std::ios::binary | std::ios::app) << "far").flush());
    EXPECT_EQ(queryPath(text(m_folder / "file")).sizeBytes, kFar + 3);
    const auto file = openRegularFile(text(m_folder / "file"));
    ASSERT_TRUE(file.stream);
    EXPECT_EQ(file.sizeBytes, kFar + 3);
    EXPECT_EQ(discio::streamSize(*file.stream), kFar + 3);
    const struct {
        std::uint64_t offset;
        std::size_t size;
        std::string bytes;
    } rows[] = {{0, 12, bytes},      {3, 2, "b\n"},
                {0, 0, ""},          {kFar, 10, "far"},
                {kFar + 3, 10, ""},  {kFar & UINT32_MAX, 3, std::string(3, '\0')},
                {INT64_MAX, 10, ""}, {std::uint64_t{INT64_MAX} + 1, 10, ""},
                {UINT64_MAX, 10, ""}};
    for (const auto& row : rows) {
        EXPECT_EQ(read(*file.stream, row.offset, row.size), row.bytes) << row.offset;
    }
}

}  // namespace
