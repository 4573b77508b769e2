// A window for tests, with a home, a service and discs of its own, that is driven by commands: what a user does, one by one.
// What is seen then is a text, to compare with a golden file.
#pragma once

#include "service/api_key_store.h"
#include "tests/support/scopes.h"
#include "tests/support/scripted_server.h"
#include "tests/support/temporary_folder.h"
#include "tests/ui/modal_driver.h"
#include "ui/main_window.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QTest>
#include <QTextEdit>
#include <QTreeWidget>

#include <functional>
#include <memory>
#include <ostream>
#include <string>

using namespace Qt::StringLiterals;

// The home has a DVD in "dvd" and "dvd.iso" and a Blu-ray disc in "bluray" and "bluray.iso". The service knows both, the
// Blu-ray disc with two configurations, and accepts every key.
class WindowFixture : public QObject {
    Q_OBJECT

public:
    // Runs the commands.
    explicit WindowFixture(const QString& commands = {});
    ~WindowFixture() override
    {
        m_shell.closeWriteChannel();
        m_shell.waitForFinished();
    }

    // Runs commands, the name of a slot with its argument each. In an argument FOLDER is the home, BUILD the folder of the
    // build, and "\n" a line break.
    void run(const QString& commands, const QString& separator = u" ; "_s);

    // Runs commands and what they leave in the event loop. Returns what has been seen since the last call: the name of the
    // step, and lines for each dialog, for each request to the service (the key in brackets), and for all that has changed in
    // the window, on the clipboard and in the file of the key.
    [[nodiscard]] QString seen(const QString& step, const QString& commands = {});

    // Plays tests/ui/golden/scripts/<name>.txt: runs the commands of each line that begins with "$", then `afterEach`.
    // Returns the script with what is seen now, and a line for each dialog that is waited for and was never shown.
    [[nodiscard]] QString play(
        const std::string& name, const std::function<void()>& afterEach = [] {});

    template <typename Part>
    [[nodiscard]] Part* part(const QString& objectName) const
    {
        return window->findChild<Part*>(objectName);
    }

    testsupport::TemporaryFolder folder;
    std::string root = folder.path();
    testsupport::ScriptedServer server;
    testsupport::ScopedEnvironment home{"HOME", root};
    testsupport::ScopedEnvironment address{"PLATTERSCOPE_SERVICE_URL", server.url()};
    ModalDriver driver;
    std::unique_ptr<MainWindow> window;

public Q_SLOTS:
    // Commands of one shell in the home, an accepted key in its file, the address of the service, its reply to the next
    // request ("403 text", "held 503 text") or to each lookup, the end of a held reply after so many requests, "off": a
    // system without threads.
    void sh(const QString& commands);
    void stored(const QString& key) { (void)service::saveApiKey(key); }
    void service(const QString& url) { qputenv("PLATTERSCOPE_SERVICE_URL", url.toUtf8()); }
    void reply(const QString& reply);
    void found(const QString& body);
    void release(const QString& requests);
    void threads(const QString& word)
    {
        m_noThreads.reset(word == u"off"_s ? new testsupport::NoThreads : nullptr);
    }

    // Shows a new window and waits until its start-up, with this disc to open, has ended. A slot of the window, a check of a
    // key, the ends of program and window.
    void start(const QString& disc);
    void call(const QString& slot) { QMetaObject::invokeMethod(window.get(), slot.toLatin1().constData()); }
    void check(const QString& key) { say(window->authenticateAndSaveApiKey(key)); }
    void quit(const QString& /*none*/) { QApplication::quit(); }
    void destroy(const QString& /*none*/) { window.reset(); }

    // An action of a menu, a click on a button, a double click on a row ("list 2"), a click with the right button, a click on
    // a column's header, discs that are dropped, which opens nothing before the next step, a disc opened from the menu.
    void trigger(const QString& name) { part<QAction>(name + u"Action"_s)->trigger(); }
    void click(const QString& name)
    {
        QTest::mouseClick(part<QPushButton>(name + u"Button"_s), Qt::LeftButton);
    }
    void openRow(const QString& row);
    void menu(const QString& row);
    void sort(const QString& column);
    void drop(const QString& names);
    void open(const QString& name);

    // Keys ("Alt Down Shift+F10"; "Alt" alone goes to the menu bar and back), a text that finds a row, what has the focus
    // while Tab goes once around.
    void press(const QString& keys);
    void find(const QString& text);
    void tab(const QString& /*none*/);

    // Commands while the next dialog of a title is shown ("Title: look; type key"). In these: a button, a text and Return,
    // the desktop's close, all parts of the "dialog", "page" or "window", what has changed meanwhile.
    void during(const QString& titleAndCommands);
    void button(const QString& text);
    void type(const QString& text);
    void shut(const QString& /*none*/) { QApplication::activeModalWidget()->close(); }
    void parts(const QString& whose);
    void look(const QString& /*none*/);

    // Waits until the monitor watches the Blu-ray disc, for all that has happened so far, for a status, for the end of all
    // threads that the window began.
    void watched(const QString& /*none*/);
    void settle(const QString& /*none*/);
    void until(const QString& status);
    void idle(const QString& /*none*/);

    // An address that the desktop is to open.
    void show(const QUrl& url) { driver.record(u"  opened "_s + url.toString() + u'\n'); }

private:
    [[nodiscard]] QPoint placeOf(const QString& row) const;
    void say(bool isAccepted) { driver.record(isAccepted ? u"  accepted\n"_s : u"  refused\n"_s); }
    [[nodiscard]] QWidget* focus() const;
    [[nodiscard]] QStringList facts() const;

    QDir m_home{QString::fromStdString(root)};
    QString m_build = QDir(QCoreApplication::applicationDirPath() + u"/.."_s).canonicalPath();
    QProcess m_shell;
    std::unique_ptr<testsupport::NoThreads> m_noThreads;
    std::size_t m_seenRequests = 0;
    QStringList m_seenFacts;
};

// The window or dialog as assistive technology finds it: a line for each part and for each row of a list, with the
// properties and stretch factors that make a difference to the user.
[[nodiscard]] QString partsOf(QWidget* window);

// What a user sees of the main window, a line each: the page, what is enabled, texts, rows, the focus, an open menu.
[[nodiscard]] QStringList factsOf(const QWidget& window);

// The texts of the row's columns.
[[nodiscard]] QString cellsOf(const QModelIndex& row);

// For failure messages.
inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}
