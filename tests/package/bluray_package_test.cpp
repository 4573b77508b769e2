#include "package/bluray_package.h"

#include <QCryptographicHash>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string_view>
#include <vector>

using bdmeta::BlurayDisc;
using bdmeta::BlurayDiscSummary;
using bdmeta::BlurayTitle;

namespace {

struct Input {
    BlurayDisc disc;
    std::vector<BlurayTitle> titles;
    BlurayDiscSummary summary;
};

std::vector<std::uint8_t> fileBytes(std::string_view magic, std::size_t size, std::uint8_t filler)
{
    std::vector<std::uint8_t> bytes(size, filler);
    std::ranges::copy(magic, bytes.begin());
    return bytes;
}

// One clip and two playlists, one of a file whose length needs two bytes.
Input sampleInput()
{
    Input input;
    input.disc.indexVersion = {'0', '2', '0', '0'};
    input.disc.titleCount = 7;
    input.disc.organizationId = "0000ABCD";
    input.disc.discId = "000102030405060708090A0B0C0D0E0F";
    input.disc.clips.resize(1);
    input.disc.clips[0].name = bdmeta::ClipName("00001");
    input.disc.clips[0].rawData = fileBytes("HDMV", 200, 0x11);
    input.disc.clips[0].streamFileSize = 0x1'0000'0000;
    input.disc.playlists.resize(2);
    input.disc.playlists[0].name = bdmeta::FixedText<5>("00000");
    input.disc.playlists[0].rawData = fileBytes("MPLS", 4, 0);
    input.disc.playlists[1].name = bdmeta::FixedText<5>("00800");
    input.disc.playlists[1].rawData = fileBytes("MPLS", 10, 0x22);
    input.titles.resize(2);
    input.titles[0].durationMs = 1'000;
    input.titles[1].index = 1;
    input.titles[1].durationMs = 5'400'000;
    input.titles[1].playbackSize = 0x1'2345'6789;
    input.titles[1].playmarkCount = 12;
    input.summary.totalDurationMs = 5'401'000;
    input.summary.totalPlaybackSize = 0x1'2345'6789;
    input.summary.totalPlaymarks = 12;
    return input;
}

QByteArray build(const Input& input, QByteArray* sha256 = nullptr, QString* error = nullptr)
{
    return package::buildBlurayPackage(&input.disc, input.titles, &input.summary, sha256, error);
}

QByteArray hex(const char* digits)
{
    return QByteArray::fromHex(digits);
}

QByteArray digest(const QByteArray& bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256);
}

// The sample's package, written out.
QByteArray samplePackage()
{
    const QByteArray clip = "HDMV" + QByteArray(196, '\x11');
    const QByteArray second = "MPLS" + QByteArray(6, '\x22');
    QByteArray out =
        "PSTPBD" + hex("0001 0001 0020 00000000") + hex("0000000000000238") + hex("00000004 00000000");

    out += "DISC" + hex("0001 0000 0000000000000040") + hex("00000003") + "0200";
    out += hex("00000007 00000002 00000001 00000002");
    out += hex("00000000005269a8 0000000123456789 0000000c");
    out += hex("0000abcd") + hex("000102030405060708090a0b0c0d0e0f");

    out += "CLPI" + hex("0001 0000 00000000000000fe") + hex("01");
    out += hex("0a") + "00001.clpi" + digest(clip) + hex("c801") + clip + hex("0000000100000000");

    out += "MPLS" + hex("0001 0000 0000000000000067") + hex("02");
    out += hex("0a") + "00000.mpls" + digest("MPLS") + hex("04") + "MPLS";
    out += hex("0a") + "00800.mpls" + digest(second) + hex("0a") + second;

    out += "TITL" + hex("0001 0000 0000000000000033") + hex("02");
    out += "00000" + hex("00000000000003e8 0000000000000000 00000000");
    out += "00800" + hex("00000000005265c0 0000000123456789 0000000c");
    return out;
}

TEST(BlurayPackage, IsByteForByteTheFormat)
{
    QByteArray sha256;
    QString error = QStringLiteral("stale");
    const QByteArray built = build(sampleInput(), &sha256, &error);
    EXPECT_EQ(built.toHex(' '), samplePackage().toHex(' '));
    EXPECT_EQ(built.size(), 0x238);
    EXPECT_EQ(sha256, digest(samplePackage()));
    EXPECT_TRUE(error.isEmpty());
    EXPECT_EQ(build(sampleInput()), built) << "digest and error text are optional";
}

TEST(BlurayPackage, EachIdentifierIsPresentOnItsOwn)
{
    const auto discChunk = [](const char* organizationId, const char* discId) {
        Input input = sampleInput();
        input.disc.organizationId = organizationId;
        input.disc.discId = discId;
        QByteArray body;
        EXPECT_TRUE(package::writeDiscChunk(&input.disc, &input.summary, 2, body));
        return body;
    };
    constexpr char kDiscId[] = "000102030405060708090A0B0C0D0E0F";
    EXPECT_EQ(discChunk("", "").size(), 44);
    EXPECT_TRUE(discChunk("", "").startsWith(hex("00000000")));
    EXPECT_EQ(discChunk("0000ABCD", kDiscId).size(), 64);
    EXPECT_TRUE(discChunk("", kDiscId).startsWith(hex("00000002")));
    EXPECT_EQ(discChunk("", kDiscId).size(), 60);
    EXPECT_TRUE(discChunk("0000ABCD", "00").startsWith(hex("00000001")));
    for (const char* wrong : {"0000ABC", "0000ABCDE", "0000ABCG", "0G00ABCD"}) {
        EXPECT_EQ(discChunk(wrong, "").size(), 44) << wrong;
    }
}

TEST(BlurayPackage, ADiscWithoutClipsWritesAnEmptyList)
{
    Input input = sampleInput();
    input.disc.clips.clear();
    QByteArray body;
    EXPECT_TRUE(package::writeClipChunk(input.disc, body, nullptr));
    EXPECT_EQ(body, hex("00"));
    EXPECT_FALSE(build(input).isEmpty());
}

TEST(BlurayPackage, OneChangedByteOfAnyFileChangesTheDigest)
{
    QByteArray original;
    ASSERT_FALSE(build(sampleInput(), &original).isEmpty());
    for (const auto& change : std::vector<std::function<void(Input&)>>{
             [](Input& input) { input.disc.clips[0].rawData.back() ^= 1; },
             [](Input& input) { input.disc.playlists[1].rawData.back() ^= 1; },
             [](Input& input) { input.disc.clips[0].streamFileSize += 1; },
         }) {
        Input input = sampleInput();
        change(input);
        QByteArray changed;
        ASSERT_FALSE(build(input, &changed).isEmpty());
        EXPECT_NE(changed, original);
    }
}

TEST(BlurayPackage, WhatBreaksTheFormatFailsWithItsSentence)
{
    struct Case {
        std::function<void(Input&)> spoil;
        const char* message;
    };
    for (const Case& spoiled : std::vector<Case>{
             {[](Input& input) { input.titles.clear(); }, "Blu-ray package input is incomplete."},
             {[](Input& input) { input.titles.pop_back(); }, "Blu-ray package input is incomplete."},
             {[](Input& input) { input.disc.clips[0].rawData.clear(); },
              "A Blu-ray clip information file could not be retained for packaging."},
             {[](Input& input) { input.disc.playlists[1].rawData.clear(); },
              "A Blu-ray playlist could not be retained for packaging."},
             {[](Input& input) { input.disc.playlists[1].name = bdmeta::FixedText<5>("0080"); },
              "Blu-ray package requires five-character BDMV identifiers."},
         }) {
        Input input = sampleInput();
        spoiled.spoil(input);
        QByteArray sha256;
        QString error;
        EXPECT_TRUE(build(input, &sha256, &error).isEmpty());
        EXPECT_TRUE(sha256.isEmpty());
        EXPECT_EQ(error, QString::fromUtf8(spoiled.message));
    }

    // No record that buildBlurayPackage() lets through has more titles than playlists.
    const Input input = sampleInput();
    const std::vector<BlurayTitle> tooMany(3);
    QByteArray body;
    QString error;
    EXPECT_FALSE(package::writeTitleChunk(input.disc, tooMany, body, &error));
    EXPECT_EQ(error, QStringLiteral("Blu-ray title data does not match its playlist manifest."));

    // Missing arguments have no sentence of their own.
    error = QStringLiteral("stale");
    EXPECT_TRUE(
        package::buildBlurayPackage(nullptr, input.titles, &input.summary, nullptr, &error).isEmpty());
    EXPECT_TRUE(package::buildBlurayPackage(&input.disc, input.titles, nullptr, nullptr, &error).isEmpty());
    EXPECT_TRUE(error.isEmpty());
}

}  // namespace
