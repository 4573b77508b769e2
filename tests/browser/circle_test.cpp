// The whole circle, of real parts only: the window adds a disc to the local service, a browser describes it on the
// service's page, and the window shows what was written there.
#include "tests/support/golden.h"
#include "tests/support/local_service.h"
#include "tests/support/sample_bluray.h"
#include "tests/support/sample_dvd.h"
#include "tests/ui/window_fixture.h"

class CircleTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void whatIsTypedIsShown_data()
    {
        QTest::addColumn<QString>("scenario");
        for (const QString& row : {u"film_dvd"_s, u"film_bluray"_s, u"markup"_s, u"correction"_s}) {
            QTest::newRow(qPrintable(row)) << row.section(u'_', 0, 0);
        }
    }
    void whatIsTypedIsShown();
};

// The golden file holds "name|language|added by" of each row, then the details of each title of the first one.
void CircleTest::whatIsTypedIsShown()
{
    QFETCH(QString, scenario);
    const std::string row = QTest::currentDataTag();
    WindowFixture fixture;
    const testsupport::LocalService service{
        TESSERA_LOCAL_EXECUTABLE, fixture.folder / "service.db", {"key=ada"}};
    const testsupport::ScopedEnvironment address{"PLATTERSCOPE_SERVICE_URL", service.baseUrl()};
    QVERIFY2(service.isReady(), service.log().c_str());
    const testsupport::DiscTree disc =
        row == "film_bluray" ? testsupport::sampleBluray() : testsupport::sampleDvd();
    disc.writeDirectory(fixture.root + "/disc");
    fixture.run(
        u"stored key ; start ; during Add disc to Tessera?: button Yes ; open disc ; trigger configurations"_s);
    auto* list = fixture.part<QTreeWidget>(u"configurationList"_s);
    QCOMPARE(list->topLevelItemCount(), 0);

    const QString page = fixture.part<QLabel>(u"newConfigurationLink"_s)->text().section(u'"', 1, 1);
    QProcess browser;
    browser.setProcessChannelMode(QProcess::MergedChannels);
    browser.start(QStringLiteral(DESCRIBE_DISC), {scenario, page, QString::fromStdString(fixture.root)});
    if (!browser.waitForFinished(120'000)) { browser.terminate(); }
    browser.waitForFinished();
    if (browser.exitCode() == 77) { QSKIP("needs a browser: tools/setup.sh browser"); }
    QVERIFY2(browser.exitStatus() == QProcess::NormalExit && browser.exitCode() == 0,
             browser.readAll().constData());

    fixture.run(u"click refreshConfigurations"_s);
    QString text;
    for (int i = 0; i < list->topLevelItemCount(); ++i) {
        text += cellsOf(list->model()->index(i, 0)) + u'\n';
    }
    fixture.run(u"openRow configurationList 0"_s);
    const auto* tree = fixture.part<QTreeWidget>(u"configurationTree"_s);
    for (int i = 0; i < tree->topLevelItemCount(); ++i) {
        fixture.run(u"openRow configurationTree %1"_s.arg(i));
        text += u'\n' + fixture.part<QTextEdit>(u"configurationDetails"_s)->toPlainText();
    }
    const std::string difference =
        testsupport::goldenDifference(text.toStdString(), "browser/golden/" + row + ".txt");
    QVERIFY2(difference.empty(), difference.c_str());
    QCOMPARE(fixture.driver.neverShown(), QString());
}

QTEST_MAIN(CircleTest)
#include "circle_test.moc"
