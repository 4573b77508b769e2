#include "tests/ui/window_fixture.h"

#include "tests/support/sample_bluray.h"
#include "tests/support/sample_dvd.h"

#include <QClipboard>
#include <QContextMenuEvent>
#include <QDesktopServices>
#include <QDropEvent>
#include <QFile>
#include <QHeaderView>
#include <QLineEdit>
#include <QListWidget>
#include <QMimeData>
#include <QRegularExpression>
#include <QTimer>

#include <filesystem>
#include <fstream>

namespace fs = std::filesystem;

namespace {

constexpr char kBlurayReply[] = R"({"Disc ID": 17, "Configurations": [
    {"UID": 1, "Language Code": "en", "Added By Username": "ada", "Data": "{\"disc_name\": \"Extras\"}"},
    {"UID": 2, "Language Code": "de", "Added By Username": "bert", "Data": "{\"disc_name\": \"The Movie\",
      \"titles\": [{\"id\": 800, \"name\": \"Film\"}, {\"id\": 0, \"name\": \"Menu\"}]}"}]})";

QDialog* dialog()
{
    return qobject_cast<QDialog*>(QApplication::activeModalWidget());
}

void waitFor(const char* what, const std::function<bool()>& isReached)
{
    if (!QTest::qWaitFor(isReached, 20'000)) { qFatal("never: %s", what); }
}

}  // namespace

WindowFixture::WindowFixture(const QString& commands)
{
    testsupport::sampleDvd().writeDirectory(root + "/dvd");
    testsupport::sampleDvd().image(testsupport::DiscForm::Iso).writeTo(root + "/dvd.iso");
    testsupport::sampleBluray().writeDirectory(root + "/bluray");
    testsupport::sampleBluray().image(testsupport::DiscForm::Iso).writeTo(root + "/bluray.iso");
    server.playFor("/api/tessera/user/", {.body = R"({"UID": 1, "Username": "ada"})"});
    found(u"{\"Disc ID\": 17}"_s);
    server.playFor("/api/tessera/bluray/find/", {.body = kBlurayReply});
    m_shell.setWorkingDirectory(m_home.path());
    m_shell.start(u"sh"_s, QStringList());
    QDesktopServices::setUrlHandler(u"http"_s, this, "show");
    QDesktopServices::setUrlHandler(u"file"_s, this, "show");
    QGuiApplication::clipboard()->clear();
    if (!commands.isEmpty()) { (void)seen({}, commands); }
}

void WindowFixture::run(const QString& commands, const QString& separator)
{
    for (QString command : commands.split(separator)) {
        command.replace(u"FOLDER"_s, m_home.path()).replace(u"BUILD"_s, m_build);
        const QString argument = command.section(u' ', 1).replace(u"\\n"_s, u"\n"_s);
        const QByteArray slot = command.section(u' ', 0, 0).toLatin1();
        if (!QMetaObject::invokeMethod(this, slot.constData(), Q_ARG(QString, argument))) {
            qFatal("no %s", slot.constData());
        }
    }
}

QString WindowFixture::seen(const QString& step, const QString& commands)
{
    if (!commands.isEmpty()) { run(commands); }
    QCoreApplication::processEvents();
    QString text = step + u'\n' + driver.taken();
    for (const auto requests = server.requests(); m_seenRequests < requests.size(); ++m_seenRequests) {
        const auto& request = requests.at(m_seenRequests);
        text += QString::fromStdString("  " + request.method + ' ' + request.target + " [" +
                                       request.header("apiKey") + "]\n");
    }
    const QStringList facts = this->facts();
    for (const QString& fact : facts) {
        if (!m_seenFacts.contains(fact)) { text += u"  "_s + fact + u'\n'; }
    }
    m_seenFacts = facts;
    static const QRegularExpression time(u"\\[\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\]"_s);
    static const QRegularExpression digest(u"\\b[0-9a-f]{64}\\b"_s);
    text.replace(time, u"TIME"_s).replace(digest, u"DIGEST"_s).replace(m_build, u"BUILD"_s);
    text.replace(m_home.path(), u"FOLDER"_s);
    return text.replace(QString::fromStdString(server.url()), u"SERVICE"_s);
}

QString WindowFixture::play(const std::string& name, const std::function<void()>& afterEach)
{
    std::ifstream file(PLATTERSCOPE_UI_SCRIPTS "/" + name + ".txt");
    QString text;
    for (std::string bytes; std::getline(file, bytes);) {
        const QString line = QString::fromStdString(bytes);
        if (line.startsWith(u'#')) { text += line + u'\n'; }
        if (!line.startsWith(u'$')) { continue; }
        text += seen(line, line.sliced(2));
        afterEach();
    }
    return text + driver.neverShown();
}

void WindowFixture::sh(const QString& commands)
{
    m_shell.write("{ " + commands.toUtf8() + "\n} >/dev/null\necho\n");
    if (!m_shell.waitForReadyRead()) { qFatal("never done: %s", qPrintable(commands)); }
    m_shell.readAll();
}

void WindowFixture::reply(const QString& reply)
{
    const bool isHeld = reply.startsWith(u"held "_s);
    const QString text = reply.sliced(isHeld ? 5 : 0);
    server.play(
        {.status = text.first(3).toInt(), .body = text.sliced(3).trimmed().toStdString(), .isHeld = isHeld});
}

void WindowFixture::found(const QString& body)
{
    server.playFor("/api/tessera/dvd/find/", {.body = body.toStdString()});
    server.playFor("/api/tessera/bluray/find/", {.body = body.toStdString()});
}

void WindowFixture::release(const QString& requests)
{
    while (server.requests().size() < requests.toULong()) {
        QTest::qSleep(1);
    }
    server.release();
}

void WindowFixture::start(const QString& disc)
{
    window = std::make_unique<MainWindow>();
    window->setDiscToOpenAtStart(disc);
    window->show();
    m_seenFacts = facts();
    // Fires after the window's own timer, or in a dialog that it shows; the wait ends when no dialog is left.
    bool isStarted = false;
    QTimer::singleShot(0, window.get(), [&isStarted] { isStarted = true; });
    waitFor("the end of the start", [&isStarted] { return isStarted; });
}

QPoint WindowFixture::placeOf(const QString& row) const
{
    const auto* view = part<QAbstractItemView>(row.section(u' ', 0, 0));
    const QRect rect = view->visualRect(view->model()->index(row.section(u' ', 1).toInt(), 0));
    return rect.isValid() ? rect.center() : view->viewport()->rect().bottomRight();
}

void WindowFixture::openRow(const QString& row)
{
    QWidget* viewport = part<QAbstractItemView>(row.section(u' ', 0, 0))->viewport();
    QTest::mouseClick(viewport, Qt::LeftButton, {}, placeOf(row));
    QTest::mouseDClick(viewport, Qt::LeftButton, {}, placeOf(row));
}

void WindowFixture::menu(const QString& row)
{
    QWidget* viewport = part<QAbstractItemView>(row.section(u' ', 0, 0))->viewport();
    QContextMenuEvent event(QContextMenuEvent::Mouse, placeOf(row), viewport->mapToGlobal(placeOf(row)));
    QApplication::sendEvent(viewport, &event);
    const QWidget* menu = QApplication::activePopupWidget();
    say(menu != nullptr && menu->pos() == event.globalPos());
}

void WindowFixture::sort(const QString& column)
{
    const QHeaderView* header = part<QTreeWidget>(column.section(u' ', 0, 0))->header();
    const int left = header->sectionViewportPosition(column.section(u' ', 1).toInt());
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, QPoint(left + 20, 5));
}

void WindowFixture::drop(const QString& names)
{
    QMimeData data;
    QList<QUrl> urls;
    for (const QString& name : names.split(u' ')) {
        urls.append(QUrl::fromLocalFile(m_home.filePath(name)));
    }
    data.setUrls(urls);
    QDragEnterEvent enter(QPoint(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window.get(), &enter);
    QDropEvent dropped(QPointF(10, 10), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(window.get(), &dropped);
    say(enter.isAccepted());
}

void WindowFixture::open(const QString& name)
{
    const bool isDirectory = QFileInfo(m_home.filePath(name)).isDir();
    during((isDirectory ? u"Open Disc Directory: type "_s : u"Open Disc ISO: type "_s) +
           m_home.filePath(name));
    trigger(isDirectory ? u"openDiscDirectory"_s : u"openDiscIso"_s);
}

QWidget* WindowFixture::focus() const
{
    for (QWidget* front : {QApplication::activePopupWidget(), QApplication::activeModalWidget()}) {
        if (front != nullptr) { return front->focusWidget() == nullptr ? front : front->focusWidget(); }
    }
    // Without a desktop nobody makes the window active again when a dialog or a menu has closed.
    window->activateWindow();
    waitFor("an active window", [this] { return window->isActiveWindow(); });
    if (QApplication::focusWidget() == nullptr) { QCoreApplication::processEvents(); }
    return QApplication::focusWidget() == nullptr ? window.get() : QApplication::focusWidget();
}

void WindowFixture::press(const QString& keys)
{
    for (const QString& key : keys.split(u' ')) {
        QWidget* target = focus();
        if (key == u"Alt"_s) {
            QTest::keyPress(target, Qt::Key_Alt, Qt::AltModifier);
            QTest::keyRelease(target, Qt::Key_Alt);
        } else {
            const QKeyCombination combination = QKeySequence::fromString(key)[0];
            QTest::keyClick(target, combination.key(), combination.keyboardModifiers());
        }
    }
}

void WindowFixture::find(const QString& text)
{
    QApplication::setKeyboardInputInterval(0);  // the first key begins anew
    QTest::keyClicks(focus(), text.first(1));
    QApplication::setKeyboardInputInterval(60'000);  // a slow machine makes no pauses
    QTest::keyClicks(focus(), text.sliced(1));
}

void WindowFixture::tab(const QString& /*none*/)
{
    QStringList names;
    do {
        names.append(focus()->objectName());
        press(u"Tab"_s);
    } while (names.size() < 20 && focus()->objectName() != names.first());
    driver.record(u"Tab: "_s + names.join(u' ') + u'\n');
}

void WindowFixture::during(const QString& titleAndCommands)
{
    const QString commands = titleAndCommands.section(u": "_s, 1);
    driver.answer(titleAndCommands.section(u": "_s, 0, 0), [this, commands](QDialog* shown) {
        run(commands, u"; "_s);
        if (dialog() == shown) { ModalDriver::end(shown); }
    });
}

void WindowFixture::button(const QString& text)
{
    for (auto* button : dialog()->findChildren<QPushButton*>()) {
        if (button->text().remove(u'&') == text) { return QTest::mouseClick(button, Qt::LeftButton); }
    }
    qFatal("no button %s", qPrintable(text));
}

void WindowFixture::type(const QString& text)
{
    auto* edit = dialog()->findChild<QLineEdit*>();
    edit->setText(text);
    QTest::keyClick(edit, Qt::Key_Return);
}

void WindowFixture::parts(const QString& whose)
{
    QWidget* parent = whose == u"dialog"_s ? dialog() : static_cast<QWidget*>(window.get());
    driver.record(partsOf(whose == u"page"_s ? window->centralWidget() : parent));
}

void WindowFixture::look(const QString& /*none*/)
{
    driver.record(seen(dialog() == nullptr ? u"  meanwhile, without a dialog"_s : u"  meanwhile"_s));
}

void WindowFixture::watched(const QString& /*none*/)
{
    waitFor("events", [this] {
        sh(u": <bluray/BDMV/PLAYLIST/00000.mpls; : <bluray/BDMV/STREAM/00003.m2ts"_s);
        return part<QListWidget>(u"eventPlaylistList"_s)->count() > 0 &&
               part<QListWidget>(u"eventSegmentList"_s)->count() > 0;
    });
    settle({});
}

void WindowFixture::settle(const QString& /*none*/)
{
    const auto* events = part<QListWidget>(u"eventSegmentList"_s);
    const int count = events->count();
    sh(u": <bluray/BDMV/STREAM/00002.m2ts"_s);
    waitFor("the mark", [&] {
        return events->count() > count &&
               events->item(events->count() - 1)->text().endsWith(u"CLOSE: 00002.m2ts"_s);
    });
}

void WindowFixture::idle(const QString& /*none*/)
{
    waitFor("the end of all threads but the window's and the service's", [] {
        int count = 0;
        for (const auto& thread : fs::directory_iterator("/proc/self/task")) {
            std::string name;
            std::getline(std::ifstream(thread.path() / "comm"), name);
            if (name != "Thread (pooled)") { ++count; }  // the toolkit's own wait for work
        }
        return count <= 2;
    });
}

void WindowFixture::until(const QString& status)
{
    waitFor("the status", [&] { return part<QLabel>(u"monitorStatusLabel"_s)->text() == status; });
}

QStringList WindowFixture::facts() const
{
    QStringList facts = {u"clipboard: "_s + QGuiApplication::clipboard()->text().replace(u'\n', u" / "_s)};
    QFile file(service::apiKeyFilePath());
    if (file.open(QIODevice::ReadOnly)) {
        const auto permissions = static_cast<int>(fs::status(file.filesystemFileName()).permissions());
        facts.append(u"%1 %2 \"%3\""_s.arg(file.fileName(), QString::number(permissions, 8),
                                           QString::fromUtf8(file.readLine()).trimmed()));
    }
    return window == nullptr ? facts : facts + factsOf(*window);
}
