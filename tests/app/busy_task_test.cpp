#include "app/busy_task.h"

#include <QApplication>
#include <QCloseEvent>
#include <QProgressBar>
#include <QPushButton>
#include <QSemaphore>
#include <QTest>
#include <QThread>
#include <QTimer>

#include <atomic>

class BusyTaskTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void anInstantTaskShowsTheDialogAndIsDone();
    void theDialogCannotBeDismissed();
    void aQuittingApplicationStillWaitsForTheWork();
    void theThreadIsDeletedInTheMainLoop();
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
    runBusyTask(parent, kTitle, kLabel, [&visited] { visited.acquire(); });
}

}  // namespace

void BusyTaskTest::anInstantTaskShowsTheDialogAndIsDone()
{
    QWidget parent;
    parent.show();
    bool wasShown = false;
    QThread* workThread = nullptr;
    QTimer::singleShot(0, &parent, [&wasShown] { wasShown = QApplication::activeModalWidget() != nullptr; });
    runBusyTask(&parent, kTitle, kLabel, [&workThread] { workThread = QThread::currentThread(); });
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
        QVERIFY(dialog->isVisible());
        QVERIFY(!dialog->wasCanceled());
        visited = true;
    });
    QVERIFY(visited);
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
        runBusyTask(&parent, kTitle, kLabel, [&] {
            quitAsked.acquire();
            QThread::msleep(50);  // the work is slow; the loop that waited for it has already gone
            isDone = true;
        });
        QVERIFY(isDone);
    });
    QApplication::exec();
    QVERIFY(isDone);
}

void BusyTaskTest::theThreadIsDeletedInTheMainLoop()
{
    QWidget parent;
    parent.show();
    QPointer<QThread> thread;
    bool hasRun = false;
    QTimer::singleShot(0, &parent, [&] {
        runBusyTask(&parent, kTitle, kLabel, [&thread, &hasRun] {
            thread = QThread::currentThread();
            hasRun = !thread.isNull();
        });
        QTimer::singleShot(0, qApp, &QApplication::quit);
    });
    QApplication::exec();
    QVERIFY(hasRun);
    QTRY_VERIFY(thread.isNull());
}

QTEST_MAIN(BusyTaskTest)
#include "busy_task_test.moc"
