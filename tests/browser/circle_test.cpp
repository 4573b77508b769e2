// The whole circle, of real parts only: the window adds a disc to the local service, a browser describes it on the
// service's page, and the window shows what was written there.
#include "tests/support/golden.h"
#include "tests/support/local_service.h"
#include "tests/support/sample_bluray.h"
#include "tests/support/sample_dvd.h"
#include "tests/ui/window_fixture.h"

#include <gtest/gtest.h>

namespace {

// The golden file holds "name|language|added by" of the row, then the details of each of its titles.
void expectCircle(const testsupport::DiscTree& disc, const std::string& name)
{
    WindowFixture fixture;
    const testsupport::LocalService service{
        TESSERA_LOCAL_EXECUTABLE, fixture.folder / "service.db", {"key=ada"}};
    const testsupport::ScopedEnvironment address{"PLATTERSCOPE_SERVICE_URL", service.baseUrl()};
    ASSERT_TRUE(service.isReady()) << service.log();
    disc.writeDirectory(fixture.root + "/disc");
    fixture.run(
        u"stored key ; start ; during Add disc to Tessera?: button Yes ; open disc ; trigger configurations"_s);
    const QString page = fixture.part<QLabel>(u"newConfigurationLink"_s)->text().section(u'"', 1, 1);
    QProcess browser;
    browser.setProcessChannelMode(QProcess::MergedChannels);
    browser.start(QStringLiteral(DESCRIBE_DISC), {page, QString::fromStdString(fixture.root)});
    if (!browser.waitForFinished(120'000)) { browser.terminate(); }
    browser.waitForFinished();
    if (browser.exitCode() == 77) { GTEST_SKIP() << "needs a browser: tools/setup.sh browser"; }
    ASSERT_TRUE(browser.exitStatus() == QProcess::NormalExit && browser.exitCode() == 0)
        << browser.readAll().toStdString();

    fixture.run(u"click refreshConfigurations"_s);
    fixture.run(u"openRow configurationList 0"_s);
    QString text = cellsOf(fixture.part<QTreeWidget>(u"configurationList"_s)->currentIndex()) + u'\n';
    const auto* tree = fixture.part<QTreeWidget>(u"configurationTree"_s);
    for (int i = 0; i < tree->topLevelItemCount(); ++i) {
        fixture.run(u"openRow configurationTree %1"_s.arg(i));
        text += u'\n' + fixture.part<QTextEdit>(u"configurationDetails"_s)->toPlainText();
    }
    EXPECT_EQ(testsupport::goldenDifference(text.toStdString(), "browser/golden/" + name + ".txt"), "");
    EXPECT_EQ(fixture.driver.neverShown(), QString());
}

TEST(Circle, OfADiscShowsWhatWasTyped)
{
    expectCircle(testsupport::sampleDvd(), "dvd");
    expectCircle(testsupport::sampleBluray(), "bluray");
}

}  // namespace
