#include "report/json_report.h"
#include "tests/report/reported_disc.h"
#include "tests/report/schema_check.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <gtest/gtest.h>

namespace {

using testsupport::DiscForm;
using testsupport::DiscTree;
using testsupport::ReportedDisc;
using testsupport::schemaFindings;
using namespace Qt::Literals::StringLiterals;

const QString kPath = u"/discs/film"_s;

QJsonObject schema()
{
    QFile file(QStringLiteral(DOCUMENTS_DIR "/report.schema.json"));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    QJsonObject schema = QJsonDocument::fromJson(file.readAll()).object();
    EXPECT_FALSE(schema.isEmpty());
    return schema;
}

// The report, which is as the schema says.
QJsonObject reportOf(const ReportedDisc& read)
{
    const QByteArray json = report::jsonReport(kPath, read.disc, read.result);
    EXPECT_TRUE(json.endsWith("}\n"));
    QJsonObject report = QJsonDocument::fromJson(json).object();
    EXPECT_EQ(schemaFindings(report, schema()).join(u'\n').toStdString(), "");
    return report;
}

QJsonObject reportOf(const DiscTree& tree, DiscForm form = DiscForm::Directory)
{
    return reportOf(testsupport::readReported(tree, form));
}

// A report without what only an image can say.
QJsonObject withoutVolume(QJsonObject report)
{
    QJsonObject disc = report[u"disc"_s].toObject();
    for (const QString& name :
         {u"volumeId"_s, u"volumeIdBytes"_s, u"hasVolumeInfo"_s, u"volumeLabel"_s, u"volumeRaw"_s}) {
        disc.remove(name);
    }
    report[u"disc"_s] = disc;
    return report;
}

TEST(JsonReport, EveryFormOfADiscIsTheSameDisc)
{
    const QJsonObject bluray = withoutVolume(reportOf(testsupport::sampleBluray()));
    for (const DiscForm form : testsupport::kAllBlurayForms) {
        EXPECT_EQ(withoutVolume(reportOf(testsupport::sampleBluray(), form)), bluray);
    }
    const QJsonObject dvd = withoutVolume(reportOf(testsupport::sampleDvd()));
    for (const DiscForm form : testsupport::kAllDiscForms) {
        EXPECT_EQ(withoutVolume(reportOf(testsupport::sampleDvd(), form)), dvd);
    }
    EXPECT_EQ(bluray[u"kind"_s], u"bluray"_s);
    EXPECT_EQ(dvd[u"kind"_s], u"dvd"_s);
}

TEST(JsonReport, NamesWhatTheImageIsCalledInTextAndBytes)
{
    const testsupport::TemporaryFolder folder;
    const std::string path = folder / "disc.iso";
    testsupport::sampleBluray().image(testsupport::DiscForm::Iso, {.volumeId = "FIL\xC9 1"}).writeTo(path);
    const QJsonObject bluray = reportOf(testsupport::readReported(path))[u"disc"_s].toObject();
    EXPECT_EQ(bluray[u"volumeId"_s], u"FIL\uFFFD 1"_s);
    EXPECT_TRUE(bluray[u"volumeIdBytes"_s].toString().startsWith(u"46494cc92031"_s));

    testsupport::sampleDvd().image(testsupport::DiscForm::Iso, {.volumeId = "FIL\xC9 2"}).writeTo(path);
    const QJsonObject dvd = reportOf(testsupport::readReported(path))[u"disc"_s].toObject();
    EXPECT_EQ(dvd[u"hasVolumeInfo"_s], true);
    EXPECT_EQ(dvd[u"volumeLabel"_s], u"FIL\uFFFD 2"_s);
    EXPECT_EQ(dvd[u"volumeRaw"_s].toString().first(12), u"46494cc92032"_s);
}

TEST(JsonReport, TheDocumentedExampleIsWhatTheProgramPrints)
{
    const ReportedDisc read = testsupport::readReported(testsupport::exampleBluray());
    EXPECT_EQ(report::jsonReport(kPath, read.disc, read.result).toStdString(),
              testsupport::documentedExample("json").toStdString());
}

TEST(JsonReport, OddDiscsKeepToTheSchema)
{
    testsupport::MplsSpec crowded;
    crowded.playItems.clear();
    for (std::uint16_t item = 0; item < 20; ++item) {
        testsupport::PlayItemSpec playItem;
        for (std::uint16_t stream = 0; stream < 250; ++stream) {
            const auto pid = static_cast<std::uint16_t>(item * 250 + stream);
            playItem.stn.primaryAudio.push_back({.pid = pid, .attributes = testsupport::audioAttributes("")});
        }
        crowded.playItems.push_back(playItem);
    }
    testsupport::MplsSpec bare;
    bare.playItems.clear();
    const QJsonObject report = reportOf(testsupport::sampleBluray()
                                            .remove("CERTIFICATE/id.bdmv")
                                            .remove("BDMV/index.bdmv")
                                            .add("BDMV/index.bdmv/in it", {})
                                            .add("BDMV/PLAYLIST/00001.mpls", crowded.build())
                                            .add("BDMV/PLAYLIST/00002.mpls", bare.build()));
    EXPECT_EQ(report[u"warnings"_s], QJsonArray{u"cannot read 'BDMV/index.bdmv': Is a directory"_s});
    EXPECT_EQ(report[u"disc"_s].toObject()[u"discId"_s], QString());
    EXPECT_EQ(report[u"disc"_s].toObject()[u"discIdBytes"_s], QString(32, u'0'));
    const QJsonArray titles = report[u"titles"_s].toArray();
    ASSERT_EQ(titles.size(), 5);
    const QJsonArray tracks = titles.at(1).toObject()[u"audioTracks"_s].toArray();
    ASSERT_EQ(tracks.size(), 5000);
    EXPECT_EQ(tracks.last().toObject()[u"pid"_s], 4999);
    EXPECT_EQ(tracks.last().toObject()[u"language"_s], QString());
    EXPECT_TRUE(titles.at(2).toObject()[u"segmentMap"_s].toArray().isEmpty());
    EXPECT_EQ(titles.at(2).toObject()[u"angleCount"_s], 0);
}

TEST(JsonReport, NoTextSteersATerminal)
{
    const ReportedDisc read = testsupport::readReported(testsupport::sampleDvd());
    const QString path = u"/\u009B\u007F\u061C\u202E\u2066\u200B\U000E0001\u00E9"_s;
    const QByteArray json = report::jsonReport(path, read.disc, read.result);
    EXPECT_TRUE(json.contains("\"/\\u009b\\u007f\\u061c\\u202e\\u2066\\u200b\\udb40\\udc01\xC3\xA9\""))
        << json.toStdString();
    EXPECT_EQ(QJsonDocument::fromJson(json)[u"path"_s], path);
}

TEST(JsonReport, NoDigitOfANumberIsLost)
{
    ReportedDisc read = testsupport::readReported(testsupport::sampleDvd());
    const auto sizeInReport = [&read](quint64 sizeBytes) {
        read.result.dvdTitles[0].playbackSizeBytes = sizeBytes;
        const QJsonArray titles = reportOf(read).value(u"titles"_s).toArray();
        return titles.first().toObject().value(u"playbackSizeBytes"_s);
    };
    EXPECT_EQ(sizeInReport(9'007'199'254'740'991).toInteger(), 9'007'199'254'740'991);
    EXPECT_EQ(sizeInReport(9'007'199'254'740'992), u"9007199254740992"_s);
    EXPECT_EQ(sizeInReport(~quint64{0}), u"18446744073709551615"_s);
}

TEST(JsonReport, WhatIsNotInTheSchemaIsFound)
{
    const QJsonObject report = reportOf(testsupport::sampleBluray());
    const auto isRefused = [](const QJsonObject& changed) {
        return !schemaFindings(changed, schema()).isEmpty();
    };
    const auto with = [](QJsonObject object, const QString& name, const QJsonValue& value) {
        object[name] = value;
        return object;
    };
    for (const QString& name : report.keys()) {
        QJsonObject without = report;
        without.remove(name);
        EXPECT_TRUE(isRefused(without)) << name.toStdString();
    }
    EXPECT_TRUE(isRefused(with(report, u"more"_s, 1)));
    EXPECT_TRUE(isRefused(with(report, u"kind"_s, u"dvd"_s)));
    EXPECT_TRUE(isRefused(with(report, u"schema"_s, u"platterscope-report/2"_s)));
    EXPECT_TRUE(isRefused(with(report, u"packageSha256"_s, u"ABCD"_s)));
    const QJsonObject title = report[u"titles"_s].toArray().first().toObject();
    for (const QJsonValue& pid : {QJsonValue(1.5), QJsonValue(-1), QJsonValue(u"1"_s)}) {
        EXPECT_TRUE(isRefused(with(report, u"titles"_s, QJsonArray{with(title, u"playlistId"_s, pid)})));
    }
    EXPECT_TRUE(isRefused(with(report, u"titles"_s, QJsonArray{with(title, u"durationMs"_s, u"12"_s)})));
}

}  // namespace
