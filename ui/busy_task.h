// Runs blocking work on a new thread while a modal progress dialog is shown.
#pragma once

#include <QProgressDialog>
#include <QString>

#include <functional>

// An indeterminate progress dialog. The work cannot be stopped, so the dialog has no cancel button and ignores Escape
// and close requests, including those of the window manager.
class BusyDialog : public QProgressDialog {
    Q_OBJECT

public:
    BusyDialog(const QString& title, const QString& label, QWidget* parent);

    void reject() override {}

protected:
    void closeEvent(QCloseEvent* event) override;
};

// Shows the dialog over `parent`, runs `work` on a new thread and returns after `work` has ended, even if the
// application quits meanwhile. Call it on the GUI thread. `work` must not use widgets; `parent` must outlive the call.
//
// Returns whether `work` ran to its end. Returns false, and logs why, if the system cannot create the thread or `work`
// throws. `work` should not throw, but memory can run out anywhere, and an exception that leaves the thread would end
// the program; so the exception is dropped.
[[nodiscard]] bool runBusyTask(QWidget* parent, const QString& title, const QString& label,
                               std::function<void()> work);
