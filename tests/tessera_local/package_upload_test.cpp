#include "tests/support/fault_table.h"
#include "tests/tessera_local/test_package.h"

#include <gtest/gtest.h>

namespace tessera_local {

namespace {

int statusOf(const std::string& body, DiscKind kind, const std::string& sha256,
             std::uint64_t maximumBytes = kMaximumPackageBytes)
{
    const auto refusal = checkPackageUpload(spanOf(body), kind, sha256, maximumBytes);
    if (refusal) { EXPECT_FALSE(refusal->text.empty()); }
    return refusal ? refusal->status : 200;
}

int statusOfPackage(const std::string& bytes, DiscKind kind,
                    std::uint64_t maximumBytes = kMaximumPackageBytes)
{
    return statusOf(deflated(bytes), kind, sha256Of(bytes), maximumBytes);
}

// Chunks that deflate badly, and span several windows of the inflation.
std::string noise(std::size_t size)
{
    std::string bytes(size, '\0');
    std::uint32_t state = 1;
    for (char& byte : bytes) {
        state = state * 1664525 + 1013904223;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

}  // namespace

TEST(PackageUpload, AcceptsWholePackagesOfBothKinds)
{
    for (const DiscKind kind : {DiscKind::Dvd, DiscKind::Bluray}) {
        for (const std::size_t size : {0U, 1U, 65'504U, 65'505U, 300'000U}) {
            EXPECT_EQ(statusOfPackage(package(kind, noise(size)), kind), 200)
                << kindName(kind) << ' ' << size;
        }
        EXPECT_EQ(statusOfPackage(package(kind, std::string(5'000'000, '\0')), kind), 200) << kindName(kind);
    }
}

TEST(PackageUpload, RefusesEveryTruncation)
{
    const std::string bytes = package(DiscKind::Dvd, noise(300));
    const std::string stream = deflated(bytes);
    for (std::size_t size = 0; size < stream.size(); ++size) {
        EXPECT_EQ(statusOf(stream.substr(0, size), DiscKind::Dvd, sha256Of(bytes)), 400) << size;
    }
    testsupport::recordFault("Local service: an upload that is cut short, at every length", "refused",
                             stream.size());
}

TEST(PackageUpload, RefusesWhatIsNotOneZlibStream)
{
    const std::string bytes = package(DiscKind::Dvd, noise(300));
    const std::string sha256 = sha256Of(bytes);
    std::string stream = deflated(bytes);
    EXPECT_EQ(statusOf(stream + '\n', DiscKind::Dvd, sha256), 400) << "something behind it";
    EXPECT_EQ(statusOf(bytes, DiscKind::Dvd, sha256), 400) << "not deflated";
    EXPECT_EQ(statusOf(stream.substr(2), DiscKind::Dvd, sha256), 400) << "without the zlib header";
    EXPECT_EQ(statusOf(deflated(stream), DiscKind::Dvd, sha256), 422) << "a stream in a stream";
    EXPECT_EQ(statusOf(stream + stream, DiscKind::Dvd, sha256), 400) << "two streams";
    stream.back() = static_cast<char>(stream.back() ^ 1);
    EXPECT_EQ(statusOf(stream, DiscKind::Dvd, sha256), 400) << "wrong checksum";
    testsupport::recordFault("Local service: an upload that is not one whole zlib stream of a package",
                             "refused", 6);
}

TEST(PackageUpload, RefusesADigestThatIsNoneOrNotThePackages)
{
    const std::string bytes = package(DiscKind::Bluray, "chunks");
    const std::string sha256 = sha256Of(bytes);
    std::string upperCase = sha256;
    for (char& c : upperCase) {
        c = c >= 'a' ? static_cast<char>(c - 'a' + 'A') : c;
    }
    for (const std::string& text : {std::string(), sha256.substr(1), sha256 + '0', upperCase}) {
        EXPECT_EQ(statusOf(deflated(bytes), DiscKind::Bluray, text), 400) << text;
    }
    EXPECT_EQ(statusOf(deflated(bytes), DiscKind::Bluray, sha256Of("another")), 422);
    EXPECT_EQ(statusOf(deflated(bytes), DiscKind::Bluray, sha256Of(deflated(bytes))), 422) << "of the stream";
}

TEST(PackageUpload, RefusesHeadersThatLie)
{
    EXPECT_EQ(statusOfPackage(package(DiscKind::Dvd, "chunks"), DiscKind::Bluray), 422);
    EXPECT_EQ(statusOfPackage(package(DiscKind::Bluray, "chunks"), DiscKind::Dvd), 422);
    EXPECT_EQ(statusOfPackage(package(DiscKind::Dvd, "chunks", 37), DiscKind::Dvd), 422);
    EXPECT_EQ(statusOfPackage(package(DiscKind::Dvd, "chunks", 39), DiscKind::Dvd), 422);
    EXPECT_EQ(statusOfPackage(package(DiscKind::Dvd, "chunks", ~std::uint64_t{0}), DiscKind::Dvd), 422);
    EXPECT_EQ(statusOfPackage(package(DiscKind::Dvd, "").substr(0, 31), DiscKind::Dvd), 422);
    EXPECT_EQ(statusOfPackage("", DiscKind::Dvd), 422);
    testsupport::recordFault("Local service: a package whose header lies", "refused", 7);
}

TEST(PackageUpload, RefusesMoreThanTheLimitWhateverElseIsWrong)
{
    const std::string bytes = package(DiscKind::Dvd, std::string(200'000, '\0'));
    EXPECT_EQ(statusOfPackage(bytes, DiscKind::Dvd, bytes.size()), 200);
    EXPECT_EQ(statusOfPackage(bytes, DiscKind::Dvd, bytes.size() - 1), 413);
    EXPECT_EQ(statusOfPackage(bytes, DiscKind::Bluray, 100'000), 413);
    EXPECT_EQ(statusOf(deflated(bytes).substr(0, 200), DiscKind::Dvd, sha256Of(bytes), 50'000), 413);
}

}  // namespace tessera_local
