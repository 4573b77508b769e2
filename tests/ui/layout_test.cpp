// Whether everything can be read: on small and on large screens, with large letters, in every palette. It is run on
// several screens (CMakeLists.txt).
#include "tests/support/sample_bluray.h"
#include "tests/ui/window_fixture.h"
#include "ui/readable_palette.h"

#include <QDir>
#include <QFile>
#include <QHeaderView>
#include <QMenuBar>
#include <QRegularExpression>
#include <QScreen>
#include <QTabBar>

#include <functional>

using testsupport::DiscForm;

class LayoutTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void cleanup();
    void theWindowFitsTheScreen();
    void noTextIsCut_data();
    void noTextIsCut();
    void linksCanBeReadOnEveryPalette();
    void noColourIsFixed();
};

namespace {

constexpr char kBlurayReply[] = R"({"Disc ID": 17, "Configurations": [
    {"UID": 2, "Language Code": "de", "Added By Username": "bert", "Data": "{\"disc_name\": \"The Movie\",
      \"titles\": [{\"id\": 800, \"name\": \"Film\"}]}"}]})";

QString text(const QSize& size)
{
    return QStringLiteral("%1x%2").arg(size.width()).arg(size.height());
}

// The labels, buttons, tabs and headers in sight that have less room than their text takes.
QStringList cutTexts(const QWidget* window)
{
    QStringList cut;
    const auto check = [&cut](const QString& what, const QSize& size, const QSize& needed) {
        if (size.width() < needed.width() || size.height() < needed.height()) {
            cut.append(what + QStringLiteral(": ") + text(size) + QStringLiteral(" for ") + text(needed));
        }
    };
    for (const auto* label : window->findChildren<QLabel*>()) {
        if (!label->isVisible() || label->sizePolicy().horizontalPolicy() == QSizePolicy::Ignored) {
            continue;
        }
        const int width = label->width();
        check(label->text(), label->size(),
              label->wordWrap() ? QSize(width, label->heightForWidth(width)) : label->sizeHint());
    }
    for (const auto* button : window->findChildren<QPushButton*>()) {
        if (button->isVisible()) { check(button->text(), button->size(), button->sizeHint()); }
    }
    for (const auto* bar : window->findChildren<QTabBar*>()) {
        for (int i = 0; bar->isVisible() && i < bar->count(); ++i) {
            check(bar->tabText(i), bar->tabRect(i).size(),
                  bar->fontMetrics().size(Qt::TextShowMnemonic, bar->tabText(i)));
            if (!bar->rect().contains(bar->tabRect(i))) {
                cut.append(bar->tabText(i) + QStringLiteral(": in part behind scroll buttons"));
            }
        }
    }
    for (const auto* header : window->findChildren<QHeaderView*>()) {
        for (int i = 0; header->isVisible() && i < header->count(); ++i) {
            check(header->model()->headerData(i, Qt::Horizontal).toString(),
                  QSize(header->sectionSize(i), header->height()),
                  QSize(header->sectionSizeHint(i), header->sizeHint().height()));
        }
    }
    return cut;
}

// Whether all of the window is on the screen, when it is as small as it can be.
bool canFit(const QWidget& window)
{
    const QSize available = window.screen()->availableSize();
    return window.minimumSizeHint().boundedTo(available) == window.minimumSizeHint();
}

// Calls `look` while the window is seen without a key and without a disc, and lets every dialog come and go.
void showDialogs(WindowFixture& fixture, const std::function<void(const char*)>& look)
{
    fixture.driver.expectBox(QStringLiteral("API Key Security"), QString());
    fixture.driver.expectKeyDialog(QString(), [&look] { look("without a key"); });
    if (!fixture.start([&fixture] { return fixture.driver.problems().isEmpty(); })) { qFatal("no start"); }
    fixture.driver.expectKeyDialog(QStringLiteral("key"));
    fixture.trigger("apiKeyAction");
    look("without a disc");
    fixture.driver.expectHelpBox(QStringLiteral("About Platterscope"), QString(), QString());
    fixture.driver.expectHelpBox(QStringLiteral("Configuration Library"), QString(), QString());
    fixture.trigger("aboutAction");
    fixture.trigger("configurationLibraryAction");
}

// Calls `look` with each page in sight, filled from a disc.
void showPages(WindowFixture& fixture, const std::function<void(const char*)>& look)
{
    const auto disc = testsupport::sampleBluray().write(DiscForm::Directory, fixture.folder);
    const auto open = [&fixture,
                       path = QString::fromStdString(disc)](const testsupport::ScriptedReply& reply) {
        fixture.server.playFor("/api/tessera/bluray/find/", reply);
        DiscScanner scanner;
        scanner.setApiKey(QStringLiteral("key"));
        fixture.window->populate(path, scanner.scan(path, false));
    };
    open({.body = kBlurayReply});
    look("titles");
    fixture.trigger("configurationsAction");
    look("configurations");
    auto* list = fixture.part<QTreeWidget>("configurationList");
    QTest::keyClick(list, Qt::Key_Home);
    QTest::keyClick(list, Qt::Key_Return);
    look("configuration");
    fixture.trigger("monitorAction");
    look("monitor");
    fixture.driver.expectBox(QStringLiteral("Tessera Error"), QString());
    open({.status = 503, .body = "The service is down. Please try again in an hour, or in two."});
    fixture.trigger("configurationsAction");
    QVERIFY(fixture.part<QLabel>("configurationDiscLabel")->text().contains(QStringLiteral("\nError: The")));
    look("configurations with an error");
}

}  // namespace

void LayoutTest::cleanup()
{
    QApplication::setFont(QFont());
}

void LayoutTest::theWindowFitsTheScreen()
{
    WindowFixture fixture(QStringLiteral("key"));
    QVERIFY(fixture.startWithKey());
    const QSize available = fixture.window->screen()->availableSize();
    const bool isLarge = available.width() >= 1000 && available.height() >= 700;
    qInfo("%s on %s", qPrintable(text(fixture.window->size())), qPrintable(text(available)));
    if (isLarge) { QCOMPARE(fixture.window->size(), QSize(900, 600)); }
    QCOMPARE(fixture.window->size().boundedTo(available), fixture.window->size());
}

void LayoutTest::noTextIsCut_data()
{
    QTest::addColumn<int>("pointSize");
    QTest::newRow("the usual letters") << 0;
    QTest::newRow("24 pt") << 24;
}

void LayoutTest::noTextIsCut()
{
    QFETCH(int, pointSize);
    if (pointSize > 0) {
        if (QApplication::primaryScreen()->availableSize().width() < 1000) {
            QSKIP("the screen is too small for letters that large");
        }
        QFont font;
        font.setPointSize(pointSize);
        QApplication::setFont(font);
    }
    WindowFixture fixture;
    QStringList cut;
    QObject::connect(&fixture.driver, &ModalDriver::boxShown,
                     [&cut] { cut.append(cutTexts(QApplication::activeModalWidget())); });
    const auto look = [&](const char* page) {
        QCoreApplication::processEvents();
        cut.append(cutTexts(fixture.window.get()));
        if (!canFit(*fixture.window)) {
            cut.append(QLatin1StringView(page) + QStringLiteral(": ") +
                       text(fixture.window->minimumSizeHint()));
        }
    };
    showDialogs(fixture, look);
    showPages(fixture, look);
    QCOMPARE(cut.join(QLatin1Char(0x0A)), QString());
}

void LayoutTest::linksCanBeReadOnEveryPalette()
{
    QPalette light;
    light.setColor(QPalette::Window, Qt::white);
    light.setColor(QPalette::Link, Qt::blue);
    QCOMPARE(withReadableLinks(light).color(QPalette::Link), QColor(Qt::blue));
    QPalette dark(QColor(0x2B, 0x2B, 0x2B), QColor(0x1E, 0x1E, 0x1E));
    dark.setColor(QPalette::Link, Qt::blue);
    QCOMPARE(withReadableLinks(dark).color(QPalette::Link), dark.color(QPalette::WindowText));
    dark.setColor(QPalette::Link, QColor(0x6C, 0xB4, 0xFF));
    QCOMPARE(withReadableLinks(dark).color(QPalette::Link), QColor(0x6C, 0xB4, 0xFF));

    // The window follows when the desktop changes over.
    const QPalette before = QApplication::palette();
    WindowFixture fixture(QStringLiteral("key"));
    QVERIFY(fixture.startWithKey());
    dark.setColor(QPalette::Link, Qt::blue);
    QApplication::setPalette(dark);
    QCoreApplication::processEvents();
    const auto* link = fixture.part<QLabel>("newConfigurationLink");
    QCOMPARE(link->palette().color(QPalette::Link), dark.color(QPalette::WindowText));
    QApplication::setPalette(before);
    QCoreApplication::processEvents();
    QCOMPARE(link->palette().color(QPalette::Link), withReadableLinks(before).color(QPalette::Link));
}

void LayoutTest::noColourIsFixed()
{
    static const QRegularExpression fixed(
        QStringLiteral("setStyleSheet|QColor\\((?!\\))|Qt::(black|white|red|green|blue|yellow|gray|"
                       "dark\\w+|light\\w+)\\b|color:|#[0-9a-fA-F]{6}"));
    const QDir folder(QStringLiteral(PLATTERSCOPE_UI_SOURCES));
    const QStringList names = folder.entryList({QStringLiteral("*.cpp"), QStringLiteral("*.h")});
    QVERIFY(names.size() > 20);
    for (const QString& name : names) {
        QFile file(folder.filePath(name));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const auto match = fixed.match(QString::fromUtf8(file.readAll()));
        QVERIFY2(!match.hasMatch(), qPrintable(name + QStringLiteral(": ") + match.captured()));
    }
}

QTEST_MAIN(LayoutTest)
#include "layout_test.moc"
