#include "tests/support/captured_log.h"
#include "tests/support/no_threads.h"
#include "ui/busy_task.h"

#include <QApplication>
#include <QCloseEvent>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QSemaphore>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <memory>
#include <new>
#include <stdexcept>

class BusyTaskTest : public QObject {
    Q_OBJECT

    std::unique_ptr<QWidget> m_window = std::make_unique<QWidget>();

    bool run(std::function<void()> work)
    {
        return runBusyTask(m_window.get(), QStringLiteral("Connecting"), QStringLiteral("Authenticating"),
                           std::move(work));
    }

    // Acts as soon as the task that begins next waits for its work.
    static void whileItRuns(std::function<void()> act) { QTimer::singleShot(0, qApp, std::move(act)); }

private Q_SLOTS:
    void theDialogStaysUntilTheWorkHasEnded()
    {
        m_window->show();
        QSemaphore visited;
        whileItRuns([&] {
            const QSemaphoreReleaser releaser(visited);
            auto* const dialog = qobject_cast<BusyDialog*>(QApplication::activeModalWidget());
            const auto* const bar = dialog->findChild<QProgressBar*>();
            QCOMPARE(dialog->windowModality(), Qt::ApplicationModal);
            QVERIFY(bar->minimum() == 0 && bar->maximum() == 0 && !bar->isTextVisible());
            QVERIFY(dialog->findChildren<QPushButton*>().isEmpty());

            QTest::keyClick(dialog, Qt::Key_Escape);
            QVERIFY(!dialog->close());
            QCloseEvent windowManagersClose;
            QSpontaneKeyEvent::setSpontaneous(&windowManagersClose);
            qApp->notify(dialog, &windowManagersClose);
            QVERIFY(dialog->isVisible() && m_window->isVisible() && !dialog->wasCanceled());
        });
        QVERIFY(run([&visited] { visited.acquire(); }));
        QVERIFY(QApplication::activeModalWidget() == nullptr);
    }

    void aQuittingApplicationWaitsForTheWorkAndDeletesTheThread()
    {
        QPointer<QThread> thread;
        bool isDone = false;
        whileItRuns([&] {
            QSemaphore hasQuit;
            whileItRuns([&hasQuit] {
                QApplication::exit();
                hasQuit.release();
            });
            QVERIFY(run([&] {
                thread = QThread::currentThread();
                hasQuit.acquire();
                QThread::msleep(50);  // the loop that waited for the work has already gone
                isDone = thread != qApp->thread();
            }));
            QVERIFY(isDone);
        });
        QApplication::exec();
        QVERIFY(isDone);
        QTRY_VERIFY(thread.isNull());
    }

    void thousandsOfInstantTasksEndInARow()
    {
        int runs = 0;
        for (int i = 0; i < 3000; ++i) {
            // Every third thread may have finished before the loop that waits for it begins.
            QVERIFY(run([&runs] { ++runs; }));
            QCOMPARE(runs, i + 1);
            if (i % 3 == 0) { m_window = std::make_unique<QWidget>(); }
        }
    }

    void workThatThrowsOrHasNoThreadFailsAlone()
    {
        const testsupport::CapturedLog log;
        QVERIFY(!run([] { throw std::bad_alloc(); }));
        QVERIFY(!run([] { throw std::runtime_error("a secret"); }));
        QVERIFY(!run([] { throw 1; }));
        QCOMPARE(log.lines(), std::vector<std::string>(3, "platterscope: error: the work ended early"));
        bool hasRun = false;
        {
            const testsupport::NoThreads noThreads;
            QVERIFY(!run([&hasRun] { hasRun = true; }));
        }
        QCOMPARE(log.lines().back(), "platterscope: error: there is no thread for the work");
        QVERIFY(!hasRun);
        QVERIFY(run([&hasRun] { hasRun = true; }));
        QVERIFY(hasRun);
    }
};

QTEST_MAIN(BusyTaskTest)
#include "busy_task_test.moc"
