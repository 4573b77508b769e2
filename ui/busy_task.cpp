#include "ui/busy_task.h"

#include "base/log.h"

#include <QCloseEvent>
#include <QEventLoop>
#include <QPointer>
#include <QProgressBar>
#include <QThread>

namespace {

constexpr int kMinimumWidth = 440;

}  // namespace

BusyDialog::BusyDialog(const QString& title, const QString& label, QWidget* parent)
    : QProgressDialog(label, QString(), 0, 0, parent)
{
    setObjectName(QStringLiteral("busyDialog"));
    setWindowTitle(title);
    setCancelButton(nullptr);
    setWindowModality(Qt::ApplicationModal);
    setMinimumDuration(0);
    setMinimumWidth(kMinimumWidth);
    setAutoClose(false);
    setAutoReset(false);

    auto* bar = new QProgressBar;
    bar->setObjectName(QStringLiteral("busyBar"));
    bar->setAccessibleName(label);
    bar->setRange(0, 0);
    bar->setTextVisible(false);
    setBar(bar);
}

void BusyDialog::closeEvent(QCloseEvent* event)
{
    event->ignore();
}

bool runBusyTask(QWidget* parent, const QString& title, const QString& label, std::function<void()> work)
{
    BusyDialog dialog(title, label, parent);
    bool isDone = false;
    const QPointer<QThread> thread = QThread::create([&isDone, work = std::move(work)] {
        try {
            work();
            isDone = true;
        } catch (...) {
            // The caller's thread logs it: after bad_alloc, formatting here could throw again.
        }
    });
    QEventLoop loop;
    QObject::connect(thread, &QThread::finished, &loop, &QEventLoop::quit);
    QObject::connect(thread, &QThread::finished, thread, &QThread::deleteLater);

    dialog.show();
    thread->start(QThread::InheritPriority);
    // QThread has no other report that the system did not create the thread, which then never finishes.
    if (!thread->isRunning() && !thread->isFinished()) {
        thread->deleteLater();
        logging::log(logging::kPlatterscope, logging::kError,
                     QStringLiteral("there is no thread for the work"));
        return false;
    }
    loop.exec(QEventLoop::DialogExec);
    // quit() ends the loop while the work still runs. Its result must not be read before it has ended.
    if (thread) { thread->wait(); }
    dialog.hide();
    if (!isDone) {
        logging::log(logging::kPlatterscope, logging::kError, QStringLiteral("the work ended early"));
    }
    return isDone;
}
