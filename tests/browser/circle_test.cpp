// The whole circle, of real parts only: the window adds a disc to the local service, a browser describes it on the
// service's page, and the window shows what was written there.
#include "tests/browser/web_driver.h"
#include "tests/support/local_service.h"
#include "tests/support/sample_bluray.h"
#include "tests/support/sample_dvd.h"
#include "tests/ui/window_fixture.h"

#include <QFileInfo>
#include <QRegularExpression>

#include <stdexcept>

using namespace Qt::StringLiterals;
using testsupport::WebDriver;

class CircleTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void whatIsTypedIsShown_data();
    void whatIsTypedIsShown();
    void markupStaysText();
    void theFormKeepsWhatWasTyped();
};

namespace {

// Its title tells whether the browser lets pages run scripts.
const QString kScriptPage = u"data:text/html,<title>still</title><script>document.title='ran'</script>"_s;

// A window and a browser beside a service that knows one disc, which the window has just added.
struct Circle {
    Circle(const testsupport::DiscTree& disc, WebDriver::Script script)
        : browser(QString::fromStdString(fixture.folder.path()), script)
    {
        if (!service.isReady()) { throw std::runtime_error(service.log()); }
        disc.writeDirectory(fixture.root + "/disc");
        fixture.run(u"stored key ; start ; during Add disc to Tessera?: button Yes ; open disc"_s);
        fixture.trigger(u"configurations"_s);
        list = fixture.part<QTreeWidget>(u"configurationList"_s);
    }

    // Follows the window's link.
    void openForm()
    {
        const QRegularExpression link(u"^<a href=\"([^\"]+)\">New Configuration</a>$"_s);
        browser.open(link.match(fixture.part<QLabel>(u"newConfigurationLink"_s)->text()).captured(1));
    }

    void fill(std::initializer_list<std::pair<const char*, QString>> fields)
    {
        for (const auto& [field, text] : fields) {
            browser.type(field, text);
        }
    }

    // "name|language|added by" of each row, after a refresh.
    [[nodiscard]] QStringList rows() const
    {
        QTest::mouseClick(fixture.part<QPushButton>(u"refreshConfigurationsButton"_s), Qt::LeftButton);
        QStringList rows;
        for (QTreeWidgetItemIterator row(list); *row != nullptr; ++row) {
            rows.append(u"%1|%2|%3"_s.arg((*row)->text(0), (*row)->text(1), (*row)->text(2)));
        }
        return rows;
    }

    // Opens the first row and gives the details of its title `index`.
    [[nodiscard]] QString details(int index) const
    {
        const QPoint row = list->visualItemRect(list->topLevelItem(0)).center();
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, row);
        QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, row);
        const auto* tree = fixture.part<QTreeWidget>(u"configurationTree"_s);
        const QPoint title = tree->visualItemRect(tree->topLevelItem(index)).center();
        QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, title);
        QString text = fixture.part<QTextEdit>(u"configurationDetails"_s)->toPlainText();
        QTest::mouseClick(fixture.part<QPushButton>(u"configurationListButton"_s), Qt::LeftButton);
        return text;
    }

    WindowFixture fixture;
    testsupport::LocalService service{TESSERA_LOCAL_EXECUTABLE, fixture.folder / "service.db", {"key=ada"}};
    testsupport::ScopedEnvironment address{"PLATTERSCOPE_SERVICE_URL", service.baseUrl()};
    WebDriver browser;
    QTreeWidget* list = nullptr;
};

}  // namespace

void CircleTest::initTestCase()
{
    if (!QFileInfo::exists(QString::fromLatin1(testsupport::kChromedriver))) {
        QSKIP("needs chromium and chromium-driver: tools/setup.sh browser");
    }
}

void CircleTest::whatIsTypedIsShown_data()
{
    QTest::addColumn<bool>("isBluray");
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("discLines");
    QTest::newRow("DVD") << false << u"1"_s << u"Title Number: 1\nResolution: 720x576\n"_s;
    QTest::newRow("Blu-ray") << true << u"800"_s << u"Playlist ID: 800\nResolution: 1920x1080\n"_s;
}

void CircleTest::whatIsTypedIsShown()
{
    QFETCH(bool, isBluray);
    QFETCH(QString, id);
    QFETCH(QString, discLines);
    Circle circle(isBluray ? testsupport::sampleBluray() : testsupport::sampleDvd(), WebDriver::Script::Off);
    circle.openForm();
    circle.fill({{"#disc_name", u"A Film"_s},
                 {"#language_code", u"en"_s},
                 {"#title_1_id", id},
                 {"#title_1_name", u"The Film"_s},
                 {"#title_1_file", u"A Film (2024).mkv"_s},
                 {"#title_1_note", u"Theatrical cut"_s},
                 {"#title_1_first_chapter", u"1"_s},
                 {"#title_1_last_chapter", u"3"_s},
                 {"#title_2_id", u"99"_s},
                 {"#title_2_last_chapter", u"2"_s}});
    circle.browser.click("#title_1_type option[value='1']");
    circle.browser.click("#title_2_type option[value='6']");
    QCOMPARE(circle.rows(), QStringList());
    circle.browser.click("#save");
    QVERIFY(!circle.browser.property("p#saved", "innerText").isEmpty());

    QCOMPARE(circle.rows(), QStringList(u"A Film|en|local"_s));
    const QString film = circle.details(0);
    const QString expected =
        u"Type: Movie\nFile: A Film (2024).mkv\nNote: Theatrical cut\nChapters: 1-3\n"_s + discLines;
    QCOMPARE(film.left(expected.size()), expected);
    QCOMPARE(circle.details(1), u"Type: Movie Extra\n(no path information)\nChapters: up to 2\n"
                                "Matching disc title information is unavailable.\n"_s);
    QCOMPARE(circle.fixture.driver.neverShown(), QString());
}

// What looks like markup, right-to-left letters and letters beyond 16 bits come back as they were typed.
void CircleTest::markupStaysText()
{
    const QString name = u"<b id=planted>\"A\"</b> & 'B'<script id=planted>document.title='ran'</script>"_s;
    const QString note = u"\"></textarea><img id=planted src=x onerror=\"document.title='ran'\"> שלום 🎬"_s;
    Circle circle(testsupport::sampleDvd(), WebDriver::Script::On);
    circle.browser.open(kScriptPage);
    QCOMPARE(circle.browser.property("title", "text"), u"ran"_s);
    circle.openForm();
    const QString title = circle.browser.property("title", "text");
    circle.fill({{"#disc_name", name}, {"#language_code", u"he"_s}, {"#title_1_id", u"1"_s}});
    circle.fill({{"#title_1_name", name}, {"#title_1_note", note}});
    for (const char* button : {"#more", "#save"}) {
        QCOMPARE(circle.browser.property("#title_1_name", "value"), name);
        QCOMPARE(circle.browser.property("#title_1_note", "value"), note);
        circle.browser.click(button);
        QCOMPARE(circle.browser.count("#planted"), 0);
        QCOMPARE(circle.browser.property("title", "text"), title);
    }
    QCOMPARE(circle.rows(), QStringList(name + u"|he|local"_s));
    QVERIFY(circle.details(0).contains(u"\nNote: "_s + note + u'\n'));
}

void CircleTest::theFormKeepsWhatWasTyped()
{
    Circle circle(testsupport::sampleDvd(), WebDriver::Script::Off);
    circle.browser.open(kScriptPage);
    QCOMPARE(circle.browser.property("title", "text"), u"still"_s);
    circle.openForm();
    QCOMPARE(circle.browser.count("#title_5_id"), 0);
    circle.fill({{"#disc_name", u"A Film"_s},
                 {"#language_code", u"en"_s},
                 {"#title_1_id", u"1"_s},
                 {"#title_1_first_chapter", u"three"_s},
                 {"#title_4_id", u"2"_s}});
    circle.browser.click("#title_4_type option[value='2']");
    circle.browser.click("#more");
    circle.fill({{"#title_8_id", u"99"_s}});
    circle.browser.click("#save");

    const QString told = circle.browser.property("#title_1_first_chapter_problem", "innerText");
    QVERIFY(!told.isEmpty());
    QVERIFY(circle.browser.property("div#problems[role=alert]", "innerText").contains(told));
    QCOMPARE(circle.browser.count("[aria-describedby=title_1_first_chapter_problem][aria-invalid=true]"), 1);
    QCOMPARE(circle.browser.property("#disc_name", "value"), u"A Film"_s);
    QCOMPARE(circle.browser.property("#title_1_first_chapter", "value"), u"three"_s);
    QCOMPARE(circle.browser.property("#title_4_type", "value"), u"2"_s);
    QCOMPARE(circle.rows(), QStringList());
    const QString folder =
        qEnvironmentVariable("PLATTERSCOPE_SCREENSHOTS", QCoreApplication::applicationDirPath());
    circle.browser.saveScreenshot(folder + u"/form_light.png"_s, false);
    circle.browser.saveScreenshot(folder + u"/form_dark.png"_s, true);

    circle.fill({{"#title_1_first_chapter", u"3"_s}});
    circle.browser.click("#save");
    QVERIFY(!circle.browser.property("p#saved", "innerText").isEmpty());
    QCOMPARE(circle.rows(), QStringList(u"A Film|en|local"_s));
    QVERIFY(circle.details(0).startsWith(u"Type: Unknown\n(no path information)\nChapters: from 3\n"_s));
    QVERIFY(circle.details(1).startsWith(u"Type: Episode\n(no path information)\nTitle Number: 2\n"_s));
    QCOMPARE(circle.details(2), u"Type: Unknown\n(no path information)\n"
                                "Matching disc title information is unavailable.\n"_s);
}

QTEST_MAIN(CircleTest)
#include "circle_test.moc"
