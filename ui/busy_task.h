// Runs one piece of blocking work on a fresh worker thread while the user sees a modal, indeterminate
// progress dialog. The call returns when the work has ended, so its callers read as straight-line code.
#pragma once

#include <QProgressDialog>
#include <QString>

#include <functional>

// The dialog has no cancel button and ignores Escape and every close request, the window manager's included: the work
// cannot be stopped.
class BusyDialog : public QProgressDialog {
    Q_OBJECT

public:
    BusyDialog(const QString& title, const QString& label, QWidget* parent);

    void reject() override {}

protected:
    void closeEvent(QCloseEvent* event) override;
};

// Shows the dialog over `parent`, runs `work` on a thread of its own and returns when it has finished, also
// where the application is told to quit meanwhile. GUI thread only; `work` must touch no widget, and `parent` must
// outlive the call.
//
// Whether `work` ran to its end. It did not where the system has no thread left for it, and where it threw: it is not
// meant to, but memory can run out anywhere, and an exception that left the thread would end the program and take the
// user's window with it. So the exception ends with the work, and neither its type nor its text is passed on. Both
// failures are logged.
[[nodiscard]] bool runBusyTask(QWidget* parent, const QString& title, const QString& label,
                               std::function<void()> work);
