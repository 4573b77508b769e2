// Takes pictures of every page and dialog of the program, as it is, on sample discs:
//
//   make_screenshots FOLDER [dark]
//
// QT_SCALE_FACTOR and QT_QPA_PLATFORM do what they always do, and so do LC_ALL and LANGUAGE.
#include "app/translation.h"
#include "tests/support/player.h"
#include "tests/support/sample_bluray.h"
#include "tests/ui/window_fixture.h"

#include <QDir>
#include <QPalette>
#include <QStyleFactory>
#include <QTimer>

#include <cstdlib>

namespace {

constexpr char kConfigurations[] = R"([
    {"UID": 4, "Language Code": "en", "Added By Username": "ada", "Data":
     "{\"disc_name\": \"The Long Film (Director's Cut)\", \"paths\": [\"The Long Film (1987).mkv\", \"Extras/Menu.mkv\"],
       \"titles\": [{\"id\": 800, \"type\": 1, \"path\": 0, \"name\": \"The Long Film\", \"first_chapter\": 1,
       \"last_chapter\": 3, \"note\": \"The real order of the segments; 00801 is a decoy.\"},
      {\"id\": 0, \"type\": 9, \"path\": 1, \"name\": \"Animated menu\"}, {\"id\": 77, \"type\": 14}]}"},
    {"UID": 7, "Language Code": "de", "Added By UID": 31, "Data": "{\"disc_name\": \"Der lange Film\"}"},
    {"UID": 9, "Language Code": "pt-BR", "Added By Username": "grace", "Data": "{}"}])";

QPalette darkPalette()
{
    QPalette palette(QColor(0x2B, 0x2B, 0x2B), QColor(0x1E, 0x1E, 0x1E));
    palette.setColor(QPalette::Highlight, QColor(0x2A, 0x6F, 0xB5));
    palette.setColor(QPalette::Link, QColor(0x6C, 0xB4, 0xFF));
    palette.setColor(QPalette::PlaceholderText, QColor(0x90, 0x90, 0x90));
    return palette;
}

// Photographs every dialog that opens, then ends it the way it suggests.
class Photographer : public QObject {
public:
    explicit Photographer(const QString& folder)
        : m_folder(folder)
    {
        qApp->installEventFilter(this);
    }

    void take(QWidget* widget, const QString& name)
    {
        QCoreApplication::processEvents();
        const QString path = m_folder.filePath(name + QStringLiteral(".png"));
        if (!widget->grab().save(path)) { qFatal("cannot write %s", qPrintable(path)); }
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        auto* dialog = qobject_cast<QDialog*>(watched);
        if (event->type() == QEvent::Show && dialog != nullptr && dialog->isModal()) {
            QMetaObject::invokeMethod(
                dialog, [this, dialog] { photograph(dialog); }, Qt::QueuedConnection);
        }
        return QObject::eventFilter(watched, event);
    }

private:
    void photograph(QDialog* dialog)
    {
        take(dialog, QStringLiteral("dialog-%1-%2")
                         .arg(++m_count, 2, 10, QLatin1Char('0'))
                         .arg(dialog->windowTitle().remove(QLatin1Char('?'))));
        dialog->reject();  // a busy dialog takes no notice
    }

    QDir m_folder;
    int m_count = 0;
};

// Runs the start-up of a window that has no key yet.
void takeFirstStart(Photographer& photographer)
{
    WindowFixture fixture;
    fixture.window = std::make_unique<MainWindow>();
    fixture.window->show();
    QTest::qWait(300);
    photographer.take(fixture.window.get(), QStringLiteral("page-1-no-key"));
}

void takePages(Photographer& photographer)
{
    WindowFixture fixture(QStringLiteral("key"));
    fixture.server.playFor(kUserPath,
                           {.body = R"({"UID": 1, "Username": "ada", "LatestVersion": "1.10.0"})"});
    fixture.server.playFor(
        "/api/tessera/bluray/find/",
        {.body = std::string(R"({"Disc ID": 17, "Configurations": )") + kConfigurations + "}"});
    fixture.window = std::make_unique<MainWindow>();
    MainWindow* window = fixture.window.get();
    window->show();
    QTest::qWait(300);
    photographer.take(window, QStringLiteral("page-2-no-disc"));

    window->setDiscToOpenAtStart({});
    const std::string disc =
        testsupport::sampleBluray().write(testsupport::DiscForm::Directory, fixture.folder);
    DiscScanner scanner;
    scanner.setApiKey(QStringLiteral("key"));
    window->populate(QString::fromStdString(disc), scanner.scan(QString::fromStdString(disc), false));
    QTreeWidget* tree = fixture.tree();
    tree->topLevelItem(1)->setExpanded(true);
    tree->setCurrentItem(tree->topLevelItem(1));
    photographer.take(window, QStringLiteral("page-3-titles"));
    tree->setCurrentItem(tree->topLevelItem(1)->child(1));
    photographer.take(window, QStringLiteral("page-4-stream"));

    fixture.trigger("configurationsAction");
    auto* list = fixture.part<QTreeWidget>("configurationList");
    list->setCurrentItem(list->topLevelItem(2));
    photographer.take(window, QStringLiteral("page-5-configurations"));
    fixture.click("viewConfigurationButton");
    photographer.take(window, QStringLiteral("page-6-configuration"));
    fixture.click("configurationListButton");

    fixture.server.play(
        {.status = 503, .body = "The service is down for maintenance.\nPlease try again in an hour."});
    fixture.click("refreshConfigurationsButton");
    fixture.trigger("aboutAction");
    fixture.trigger("configurationLibraryAction");
    fixture.trigger("apiKeyAction");

    fixture.trigger("monitorAction");
    fixture.click("startMonitoringButton");
    QTest::qWait(300);  // until the whole disc is watched
    testsupport::Player player;
    player.openAndClose(disc + "/BDMV/PLAYLIST/00000.mpls");
    player.open(3, disc + "/BDMV/PLAYLIST/00800.mpls");
    player.openAndClose(disc + "/BDMV/PLAYLIST/00801.mpls");
    QTest::qWait(300);
    photographer.take(window, QStringLiteral("page-7-monitor"));

    fixture.server.playFor(
        "/api/tessera/bluray/find/",
        {.status = 503, .body = "The service is down for maintenance.\nPlease try again in an hour."});
    window->populate(QString::fromStdString(disc), scanner.scan(QString::fromStdString(disc), false));
    fixture.trigger("configurationsAction");
    photographer.take(window, QStringLiteral("page-8-error"));
}

}  // namespace

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    if (argc < 2) { return EXIT_FAILURE; }
    installTranslations(application);
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    if (argc > 2) { QApplication::setPalette(darkPalette()); }
    QDir().mkpath(QString::fromLocal8Bit(argv[1]));
    Photographer photographer(QString::fromLocal8Bit(argv[1]));
    takeFirstStart(photographer);
    takePages(photographer);
    return EXIT_SUCCESS;
}
