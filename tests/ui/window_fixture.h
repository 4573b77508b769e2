// What each test of the window starts from: a home of its own, a service, a driver for the modal dialogs, and
// the window with ways to find its parts by object name.
#pragma once

#include "service/api_key_store.h"
#include "tests/support/captured_log.h"
#include "tests/support/sample_dvd.h"
#include "tests/support/scoped_environment.h"
#include "tests/support/scripted_server.h"
#include "tests/ui/modal_driver.h"
#include "ui/main_window.h"

#include <QAction>
#include <QApplication>
#include <QDropEvent>
#include <QLabel>
#include <QMimeData>
#include <QPushButton>
#include <QStackedWidget>
#include <QTest>
#include <QTextEdit>
#include <QTreeWidget>

#include <functional>
#include <memory>
#include <string>

inline constexpr char kUserPath[] = "/api/tessera/user/";
inline constexpr char kFindPath[] = "/api/tessera/dvd/find/";
inline constexpr char kAddPath[] = "/api/tessera/dvd/add/";
inline constexpr char kUserReply[] = R"({"UID": 1, "Username": "ada"})";

inline const QString kAddTitle = QStringLiteral("Add disc to Tessera?");
inline const QString kAddQuestion = QStringLiteral(
    "This disc is not in Tessera. Do you want to add its technical signature? If you don't add it, "
    "you won't be able to create a configuration for this disc.");

struct WindowFixture {
    // A stored key is one that the service accepted some time ago.
    explicit WindowFixture(const QString& storedKey = {})
    {
        server.playFor(kUserPath, {.body = kUserReply});
        server.playFor(kFindPath, {.body = R"({"Disc ID": 17})"});
        if (!storedKey.isEmpty() && !service::saveApiKey(storedKey)) { qFatal("cannot store the key"); }
    }

    // Shows the window and lets its start-up run until `ended` holds.
    template <typename Ended>
    [[nodiscard]] bool start(Ended ended, const QString& disc = {})
    {
        window = std::make_unique<MainWindow>();
        window->setDiscToOpenAtStart(disc);
        window->show();
        return QTest::qWaitFor(ended);
    }

    // The same for a window whose stored key is accepted and that opens no disc.
    [[nodiscard]] bool startWithKey()
    {
        return start(
            [this] { return driver.busyDialogs().size() == 1 && isEnabled("openDiscDirectoryAction"); });
    }

    template <typename Part>
    [[nodiscard]] Part* part(const char* objectName) const
    {
        auto* found = window->findChild<Part*>(QString::fromLatin1(objectName));
        if (found == nullptr) { qFatal("no part named %s", objectName); }
        return found;
    }

    [[nodiscard]] bool isEnabled(const char* action) const { return part<QAction>(action)->isEnabled(); }
    void trigger(const char* action) const { part<QAction>(action)->trigger(); }
    void click(const char* button) const { QTest::mouseClick(part<QPushButton>(button), Qt::LeftButton); }
    [[nodiscard]] QTreeWidget* tree() const { return part<QTreeWidget>("titlesTree"); }
    [[nodiscard]] QString details() const { return part<QTextEdit>("titleDetails")->toPlainText(); }
    [[nodiscard]] QString page() const
    {
        return part<QStackedWidget>("pages")->currentWidget()->objectName();
    }

    // Opens the directory from the menu. `expectMore` tells the driver what comes after the file dialog.
    void openDirectory(
        const std::string& path, const std::function<void()>& expectMore = [] {})
    {
        driver.expectFileDialog(QStringLiteral("Open Disc Directory"), QString::fromStdString(path));
        expectMore();
        trigger("openDiscDirectoryAction");
    }

    testsupport::TemporaryFolder folder;
    testsupport::ScriptedServer server;
    testsupport::ScopedEnvironment home{"HOME", folder.path()};
    testsupport::ScopedEnvironment address{"PLATTERSCOPE_SERVICE_URL", server.url()};
    ModalDriver driver;
    std::unique_ptr<MainWindow> window;
};

// Drops the paths on the window; whether it accepted the drag.
inline bool drop(QWidget* window, const QStringList& paths)
{
    QMimeData data;
    QList<QUrl> urls;
    for (const QString& path : paths) {
        urls.append(QUrl::fromLocalFile(path));
    }
    data.setUrls(urls);
    QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window, &enter);
    QDropEvent dropped(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window, &dropped);
    return enter.isAccepted();
}
