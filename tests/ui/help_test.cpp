// The help boxes, the documents they open, and where those are found.
#include "tests/ui/window_fixture.h"
#include "ui/document.h"

#include <QDesktopServices>
#include <QDir>
#include <QFile>

using document::Place;

// Stands in for the desktop, which opens documents by their address.
class Desktop : public QObject {
    Q_OBJECT

public:
    Desktop() { QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "open"); }
    ~Desktop() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }

    QStringList opened;

public Q_SLOTS:
    void open(const QUrl& url) { opened.append(url.toLocalFile()); }
};

class HelpTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void aDocumentIsFoundInEveryLayout();
    void theDocumentsStandInTheBuildTree();
    void theAboutBoxOpensTheNotices();
    void theLibraryBoxOpensTheDocumentation();
};

namespace {

const QString kAboutTitle = QStringLiteral("About Platterscope");
const QString kAboutText = QStringLiteral(
    "<h2>Platterscope</h2><p>Version 1.2.1</p>"
    "<p>Platterscope helps you explore the technical makeup of DVD and Blu-ray discs. Open a disc ISO or "
    "directory to review its titles, configurations, and Blu-ray access activity.</p>"
    "<p>Technical disc-signature lookups are powered by Vantor's Tessera.</p>"
    "<p>Platterscope uses Qt under the GNU Lesser General Public License version 3.</p>"
    "<p>Third-party notices, license texts, and Qt source information are included with this "
    "application.</p>");

const QString kLibraryTitle = QStringLiteral("Configuration Library");
const QString kLibraryText = QStringLiteral(
    "<h2>Configuration Library</h2>"
    "<p>The Configuration Library documentation describes the technical disc configuration data available "
    "through Platterscope and Vantor's Tessera.</p>"
    "<p>Vantor and Platterscope are intended solely for lawful personal, archival, and technical use of "
    "media "
    "you are authorized to access. Vantor does not endorse, encourage, facilitate, or condone piracy, "
    "copyright infringement, or the unauthorized copying, distribution, or access of protected content. You "
    "are responsible for ensuring that your use complies with applicable laws and the rights of copyright "
    "holders.</p>");

const QString kNotices = QStringLiteral("THIRD_PARTY_NOTICES.txt");

bool write(const QString& path)
{
    QFile file(path);
    return QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly);
}

}  // namespace

void HelpTest::aDocumentIsFoundInEveryLayout()
{
    const testsupport::TemporaryFolder folder;
    const QString root = QString::fromStdString(folder.path());
    const QString name = QStringLiteral("a document.md");
    const QString bin = root + QStringLiteral("/bin");
    const QString beside = bin + QLatin1Char('/') + name;
    const QString above = root + QStringLiteral("/share/doc/platterscope/") + name;
    const QString below = bin + QStringLiteral("/share/doc/platterscope/") + name;
    QCOMPARE(document::path(name, Place::BesideExecutable, bin), beside);
    QCOMPARE(document::path(name, Place::SharedDocuments, bin), above);
    QVERIFY(!document::open(above));
    for (const QString& next : {below, above}) {
        QVERIFY(write(next));
        QCOMPARE(document::path(name, Place::BesideExecutable, bin), next);
        QCOMPARE(document::path(name, Place::SharedDocuments, bin), next);
    }
    QVERIFY(write(beside));
    QCOMPARE(document::path(name, Place::BesideExecutable, bin), beside);
    QCOMPARE(document::path(name, Place::SharedDocuments, bin), above);
    QVERIFY(QFile::remove(beside) && QDir().mkpath(beside));  // a directory is no document
    QCOMPARE(document::path(name, Place::BesideExecutable, bin), above);
}

void HelpTest::theDocumentsStandInTheBuildTree()
{
    const QString bin = QCoreApplication::applicationDirPath() + QStringLiteral("/../bin");
    QFile notices(document::path(kNotices, Place::BesideExecutable, bin));
    QVERIFY2(notices.open(QIODevice::ReadOnly), qPrintable(notices.fileName()));
    QVERIFY(notices.readAll().contains("GNU LESSER GENERAL PUBLIC LICENSE"));
    QFile library(document::path(QStringLiteral("CONFIGURATION_LIBRARY.md"), Place::SharedDocuments, bin));
    QVERIFY2(library.open(QIODevice::ReadOnly), qPrintable(library.fileName()));
    QVERIFY(library.readAll().contains("Season Trailer"));
}

void HelpTest::theAboutBoxOpensTheNotices()
{
    WindowFixture fixture(QStringLiteral("key"));
    QVERIFY(fixture.startWithKey());
    Desktop desktop;
    const QString path = QCoreApplication::applicationDirPath() + QLatin1Char('/') + kNotices;
    const QString open = QStringLiteral("Open Third-Party Notices");
    fixture.driver.expectHelpBox(kAboutTitle, kAboutText, {});
    fixture.trigger("aboutAction");
    QCOMPARE(desktop.opened, QStringList());

    fixture.driver.expectHelpBox(kAboutTitle, kAboutText, open);
    fixture.driver.expectBox(QStringLiteral("Third-Party Notices"),
                             QStringLiteral("The third-party notices file could not be opened:\n") + path);
    fixture.trigger("aboutAction");
    QCOMPARE(fixture.driver.problems(), QStringList());

    QVERIFY(write(path));
    fixture.driver.expectHelpBox(kAboutTitle, kAboutText, open);
    fixture.trigger("aboutAction");
    QVERIFY(QFile::remove(path));
    QCOMPARE(desktop.opened, QStringList{path});
    QCOMPARE(fixture.driver.problems(), QStringList());
}

void HelpTest::theLibraryBoxOpensTheDocumentation()
{
    WindowFixture fixture(QStringLiteral("key"));
    QVERIFY(fixture.startWithKey());
    const QString path = document::path(QStringLiteral("CONFIGURATION_LIBRARY.md"), Place::SharedDocuments);
    const QString open = QStringLiteral("Open Documentation");
    {
        const Desktop desktop;
        fixture.driver.expectHelpBox(kLibraryTitle, kLibraryText, open);
        fixture.trigger("configurationLibraryAction");
        QCOMPARE(desktop.opened, QStringList{path});
        QCOMPARE(fixture.driver.problems(), QStringList());
    }
    // This display has no desktop that could open anything.
    fixture.driver.expectHelpBox(kLibraryTitle, kLibraryText, open);
    fixture.driver.expectBox(
        QStringLiteral("Configuration Library Documentation"),
        QStringLiteral("The configuration library documentation could not be opened:\n") + path);
    fixture.trigger("configurationLibraryAction");
    QCOMPARE(fixture.driver.problems(), QStringList());
}

QTEST_MAIN(HelpTest)
#include "help_test.moc"
