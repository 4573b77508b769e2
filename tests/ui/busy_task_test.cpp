#include "tests/support/scopes.h"
#include "ui/busy_task.h"

#include <QApplication>
#include <QPointer>
#include <QSemaphore>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

bool run(std::function<void()> work)
{
    return runBusyTask(nullptr, QStringLiteral("Connecting"), {}, std::move(work));
}

TEST(BusyTask, OfAQuittingApplicationEndsFirstAndDeletesItsThread)
{
    QPointer<QThread> thread;
    bool isDone = false;
    QTimer::singleShot(0, qApp, [&] {
        QSemaphore hasQuit;
        QTimer::singleShot(0, qApp, [&hasQuit] {  // while the work runs
            QApplication::exit();
            hasQuit.release();
        });
        EXPECT_TRUE(run([&] {
            thread = QThread::currentThread();
            hasQuit.acquire();
            QThread::msleep(50);  // the loop that waited for the work has already gone
            isDone = thread != qApp->thread();
        }));
    });
    QApplication::exec();
    EXPECT_TRUE(isDone);
    EXPECT_TRUE(QTest::qWaitFor([&thread] { return thread.isNull(); }));
}

TEST(BusyTask, MayEndBeforeAnybodyWaitsForIt)
{
    for (int i = 0; i < 3000; ++i) {
        bool isDone = false;
        ASSERT_TRUE(run([&isDone] { isDone = true; }) && isDone);
    }
}

TEST(BusyTask, FailsAloneIfItThrows)
{
    const testsupport::CapturedLog log;
    EXPECT_FALSE(run([] { throw std::runtime_error("a secret"); }));
    EXPECT_FALSE(run([] { throw 1; }));
    EXPECT_EQ(log.lines(), std::vector<std::string>(2, "platterscope: error: the work ended early"));
}

}  // namespace
