// Takes pictures of every page and dialog of the program, as it is, on sample discs:
//
//   make_screenshots FOLDER [dark]
//
// QT_SCALE_FACTOR and QT_QPA_PLATFORM do what they always do, and so do LC_ALL and LANGUAGE.
#include "app/translation.h"
#include "tests/ui/window_fixture.h"

#include <QDir>
#include <QPalette>
#include <QStyleFactory>

#include <cstdlib>

using namespace Qt::StringLiterals;

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

// Takes pictures of the window, and of each dialog before it is answered.
class Photographer {
public:
    Photographer(WindowFixture& fixture, const QString& folder)
        : m_fixture(fixture)
        , m_folder(folder)
    {
        fixture.driver.onShown = [this](QDialog* dialog) {
            take(dialog, QStringLiteral("dialog-%1-%2")
                             .arg(++m_dialogs, 2, 10, QLatin1Char('0'))
                             .arg(dialog->windowTitle().remove(QLatin1Char('?'))));
        };
    }

    // Runs the commands and takes a picture of the page that they lead to.
    void page(const QString& commands, const QString& name)
    {
        m_fixture.run(commands);
        take(m_fixture.window.get(), QStringLiteral("page-%1-%2").arg(QString::number(++m_pages), name));
    }

    // Opens the disc without a dialog, whose title is in the user's language.
    void open()
    {
        m_fixture.run(u"drop bluray"_s);
        QCoreApplication::processEvents();
    }

private:
    void take(QWidget* widget, const QString& name)
    {
        QCoreApplication::processEvents();
        const QString path = m_folder.filePath(name + QStringLiteral(".png"));
        if (!widget->grab().save(path)) { qFatal("cannot write %s", qPrintable(path)); }
    }

    WindowFixture& m_fixture;
    QDir m_folder;
    int m_dialogs = 0;
    int m_pages = 0;
};

void takePictures(const QString& folder)
{
    WindowFixture fixture;
    Photographer photographer(fixture, folder);
    const QString configurations = QString::fromUtf8(kConfigurations).simplified();
    fixture.server.playFor("/api/tessera/user/",
                           {.body = R"({"UID": 1, "Username": "ada", "LatestVersion": "1.10.0"})"});
    photographer.page(u"start"_s, u"no-key"_s);
    photographer.page(u"stored key ; start"_s, u"no-disc"_s);
    fixture.found(u"{\"Disc ID\": 17, \"Configurations\": "_s + configurations + u'}');
    photographer.open();
    photographer.page(u"press Right"_s, u"titles"_s);
    photographer.page(u"press Down Down"_s, u"stream"_s);
    photographer.page(u"trigger configurations ; press End"_s, u"configurations"_s);
    photographer.page(u"click viewConfiguration"_s, u"configuration"_s);
    const QString down = u"503 The service is down for maintenance.\\nPlease try again in an hour."_s;
    fixture.run(u"click configurationList ; reply "_s + down + u" ; click refreshConfigurations"_s);
    fixture.run(u"trigger about ; trigger configurationLibrary ; trigger apiKey"_s);
    fixture.run(u"trigger monitor ; click startMonitoring ; watched ; click clearMonitor"_s);
    photographer.page(u"sh : <bluray/BDMV/PLAYLIST/00000.mpls; exec 3<bluray/BDMV/PLAYLIST/00800.mpls; "
                      ": <bluray/BDMV/PLAYLIST/00801.mpls ; settle"_s,
                      u"monitor"_s);
    fixture.run(u"reply "_s + down);
    photographer.open();
    photographer.page(u"trigger configurations"_s, u"error"_s);
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
    takePictures(QString::fromLocal8Bit(argv[1]));
    return EXIT_SUCCESS;
}
