#include "app/busy_task.h"
#include "tests/support/captured_log.h"
#include "tests/support/fault_table.h"
#include "tests/support/no_threads.h"

#include <QApplication>
#include <QCloseEvent>
#include <QProgressBar>
#include <QPushButton>
#include <QSemaphore>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

class BusyTaskTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void anInstantTaskShowsTheDialogAndIsDone();
    void theDialogCannotBeDismissed();
    void aQuittingApplicationStillWaitsForTheWork();
    void theThreadIsDeletedInTheMainLoop();
    void thousandsOfInstantTasksInARow();
    void workThatThrowsEndsAlone();
    void aSystemWithoutThreadsIsSaidAtOnce();
    void aTaskBegunBehindAnotherEndsFirst();
};

namespace {

const QString kTitle = QStringLiteral("Connecting");
const QString kLabel = QStringLiteral("Authenticating");

// Runs a task that ends only after `visit` has seen the dialog.
template <typename Visit>
void runVisited(QWidget* parent, Visit visit)
{
    QSemaphore visited;
    QTimer::singleShot(0, parent, [&] {
        visit(qobject_cast<BusyDialog*>(QApplication::activeModalWidget()));
        visited.release();
    });
    QVERIFY(runBusyTask(parent, kTitle, kLabel, [&visited] { visited.acquire(); }));
}

}  // namespace

void BusyTaskTest::anInstantTaskShowsTheDialogAndIsDone()
{
    QWidget parent;
    parent.show();
    bool wasShown = false;
    QThread* workThread = nullptr;
    QTimer::singleShot(0, &parent, [&wasShown] { wasShown = QApplication::activeModalWidget() != nullptr; });
    QVERIFY(runBusyTask(&parent, kTitle, kLabel, [&workThread] { workThread = QThread::currentThread(); }));
    QVERIFY(wasShown);
    QVERIFY(workThread != nullptr && workThread != QThread::currentThread());
    QVERIFY(QApplication::activeModalWidget() == nullptr);
}

void BusyTaskTest::theDialogCannotBeDismissed()
{
    QWidget parent;
    parent.show();
    bool visited = false;
    runVisited(&parent, [&](BusyDialog* dialog) {
        QVERIFY(dialog != nullptr);
        QCOMPARE(dialog->windowTitle(), kTitle);
        QCOMPARE(dialog->labelText(), kLabel);
        QCOMPARE(dialog->windowModality(), Qt::ApplicationModal);
        QVERIFY(dialog->minimumWidth() >= 440);
        QVERIFY(dialog->findChildren<QPushButton*>().isEmpty());
        const auto* bar = dialog->findChild<QProgressBar*>();
        QCOMPARE(bar->minimum(), 0);
        QCOMPARE(bar->maximum(), 0);
        QVERIFY(!bar->isTextVisible());

        QTest::keyClick(dialog, Qt::Key_Escape);
        QVERIFY(!dialog->close());
        dialog->reject();
        QCloseEvent windowManagersClose;
        QSpontaneKeyEvent::setSpontaneous(&windowManagersClose);
        qApp->notify(dialog, &windowManagersClose);
        QVERIFY(dialog->isVisible());
        QVERIFY(parent.isVisible());
        QVERIFY(!dialog->wasCanceled());
        visited = true;
    });
    QVERIFY(visited);
    testsupport::recordFault("Window: Escape and close on the busy dialog",
                             "ignored: the dialog and the window stay until the work has ended", 4);
}

void BusyTaskTest::aQuittingApplicationStillWaitsForTheWork()
{
    QWidget parent;
    parent.show();
    std::atomic<bool> isDone = false;
    QSemaphore quitAsked;
    QTimer::singleShot(0, &parent, [&quitAsked] {
        QApplication::quit();
        quitAsked.release();
    });
    QTimer::singleShot(0, &parent, [&] {
        const bool wasRun = runBusyTask(&parent, kTitle, kLabel, [&] {
            quitAsked.acquire();
            QThread::msleep(50);  // the work is slow; the loop that waited for it has already gone
            isDone = true;
        });
        QVERIFY(wasRun && isDone);
    });
    QApplication::exec();
    QVERIFY(isDone);
    testsupport::recordFault("Window: the application told to quit while work runs",
                             "the work ends first, then the program");
}

void BusyTaskTest::theThreadIsDeletedInTheMainLoop()
{
    QWidget parent;
    parent.show();
    QPointer<QThread> thread;
    bool hasRun = false;
    QTimer::singleShot(0, &parent, [&] {
        QVERIFY(runBusyTask(&parent, kTitle, kLabel, [&thread, &hasRun] {
            thread = QThread::currentThread();
            hasRun = !thread.isNull();
        }));
        QTimer::singleShot(0, qApp, &QApplication::quit);
    });
    QApplication::exec();
    QVERIFY(hasRun);
    QTRY_VERIFY(thread.isNull());
}

void BusyTaskTest::thousandsOfInstantTasksInARow()
{
    constexpr int kTasks = 3000;
    auto parent = std::make_unique<QWidget>();
    parent->show();
    int runs = 0;
    for (int i = 0; i < kTasks; ++i) {
        // Every third thread may have finished before the loop that waits for it begins.
        const bool isDone = runBusyTask(parent.get(), kTitle, kLabel, [&runs] { ++runs; });
        QVERIFY(isDone);
        QCOMPARE(runs, i + 1);
        if (i % 3 == 0) { parent = std::make_unique<QWidget>(); }  // the window gone right after
    }
    QVERIFY(QApplication::activeModalWidget() == nullptr);
    testsupport::recordFault("Window: work that ends at once, again and again", "each result arrives",
                             kTasks);
}

void BusyTaskTest::workThatThrowsEndsAlone()
{
    QWidget parent;
    parent.show();
    const std::vector<std::function<void()>> works = {[] { throw std::bad_alloc(); },
                                                      [] { throw std::runtime_error("a secret"); },
                                                      [] { throw 1; }, [] { std::string().at(1); }};
    const testsupport::CapturedLog log;
    for (const auto& work : works) {
        QVERIFY(!runBusyTask(&parent, kTitle, kLabel, work));
    }
    const std::vector<std::string> lines = log.lines();
    QCOMPARE(std::ranges::count(lines, "platterscope: error: the work ended early"),
             static_cast<std::ptrdiff_t>(works.size()));
    QVERIFY(std::ranges::none_of(lines,
                                 [](const std::string& line) { return line.find("secret") != line.npos; }));
    QVERIFY(parent.isVisible());
    testsupport::recordFault("Window: work that throws", "ends alone; the window stands and says so",
                             works.size());
}

void BusyTaskTest::aSystemWithoutThreadsIsSaidAtOnce()
{
    QWidget parent;
    parent.show();
    bool hasRun = false;
    {
        const testsupport::NoThreads noThreads;
        const testsupport::CapturedLog log;
        QVERIFY(!runBusyTask(&parent, kTitle, kLabel, [&hasRun] { hasRun = true; }));
        QCOMPARE(log.lines().back(), std::string("platterscope: error: there is no thread for the work"));
    }
    QVERIFY(!hasRun);
    QVERIFY(QApplication::activeModalWidget() == nullptr);
    QVERIFY(runBusyTask(&parent, kTitle, kLabel, [&hasRun] { hasRun = true; }));
    QVERIFY(hasRun);
    testsupport::recordFault("Window: no thread can be made", "a message, and the next attempt works");
}

void BusyTaskTest::aTaskBegunBehindAnotherEndsFirst()
{
    QWidget parent;
    parent.show();
    QSemaphore innerDone;
    QStringList order;
    QTimer::singleShot(0, &parent, [&] {
        QVERIFY(runBusyTask(&parent, kTitle, kLabel, [] {}));
        order.append(QStringLiteral("inner"));
        innerDone.release();
    });
    QVERIFY(runBusyTask(&parent, kTitle, kLabel, [&innerDone] { innerDone.acquire(); }));
    order.append(QStringLiteral("outer"));
    QCOMPARE(order, (QStringList{QStringLiteral("inner"), QStringLiteral("outer")}));
    QVERIFY(QApplication::activeModalWidget() == nullptr);
}

QTEST_MAIN(BusyTaskTest)
#include "busy_task_test.moc"
