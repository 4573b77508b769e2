// The documents of the help boxes.
#include "tests/ui/window_text.h"
#include "ui/document.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using document::Place;

namespace {

TEST(Documents, AreFoundInEveryLayout)
{
    const QTemporaryDir root;
    const QString beside = u"bin/a document.md"_s;
    const QString above = u"share/doc/platterscope/a document.md"_s;
    const QString below = u"bin/"_s + above;
    const auto found = [&root](Place first) {
        return QDir(root.path())
            .relativeFilePath(document::path(u"a document.md"_s, first, root.filePath(u"bin"_s)));
    };
    const struct {
        QString made, byNotices, byDocuments;
    } rows[] = {{u"bin/x"_s, beside, above},
                {below, below, below},
                {above, above, above},
                {beside + u"/a directory"_s, above, above},
                {beside, beside, above}};
    for (const auto& row : rows) {
        QDir(root.filePath(beside)).removeRecursively();
        QDir(root.path()).mkpath(QFileInfo(row.made).path());
        EXPECT_TRUE(QFile(root.filePath(row.made)).open(QIODevice::WriteOnly));
        EXPECT_EQ(found(Place::BesideExecutable), row.byNotices);
        EXPECT_EQ(found(Place::SharedDocuments), row.byDocuments);
    }
}

TEST(Documents, AreInTheBuildTree)
{
    const QString bin = QCoreApplication::applicationDirPath() + u"/../bin"_s;
    QFile notices(document::path(u"THIRD_PARTY_NOTICES.txt"_s, Place::BesideExecutable, bin));
    EXPECT_TRUE(notices.open(QIODevice::ReadOnly) && notices.readAll().contains("GNU LESSER GENERAL PUBLIC"));
    QFile library(document::path(u"CONFIGURATION_LIBRARY.md"_s, Place::SharedDocuments, bin));
    EXPECT_TRUE(library.open(QIODevice::ReadOnly) && library.readAll().contains("Season Trailer"));
}

}  // namespace
