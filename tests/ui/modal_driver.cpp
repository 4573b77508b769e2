#include "tests/ui/modal_driver.h"

#include "ui/busy_task.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QEvent>
#include <QFileDialog>
#include <QInputDialog>
#include <QLineEdit>
#include <QPointer>
#include <QTest>

ModalDriver::ModalDriver()
{
    qApp->installEventFilter(this);
}

void ModalDriver::expectBox(const QString& title, const QString& text, QMessageBox::StandardButton button)
{
    expectBox(title, text,
              [button](QMessageBox* box) { QTest::mouseClick(box->button(button), Qt::LeftButton); });
}

void ModalDriver::expectBox(const QString& title, const QString& text, Qt::Key key)
{
    expectBox(title, text, [key](QMessageBox* box) { QTest::keyClick(box, key); });
}

void ModalDriver::expectBox(const QString& title, const QString& text,
                            const std::function<void(QMessageBox*)>& answer)
{
    m_expected.push_back({title, [this, title, text, answer](QWidget* dialog) {
                              auto* box = qobject_cast<QMessageBox*>(dialog);
                              if (box == nullptr) {
                                  m_problems.append(title + QStringLiteral(": no message box"));
                                  return;
                              }
                              if (!text.isNull() && box->text() != text) {
                                  m_problems.append(title + QStringLiteral(": ") + box->text());
                              }
                              if (box->textFormat() != Qt::PlainText) {
                                  m_problems.append(title + QStringLiteral(": may be taken for markup"));
                              }
                              m_lastDetails = box->detailedText();
                              answer(box);
                          }});
}

void ModalDriver::expectHelpBox(const QString& title, const QString& text, const QString& buttonText)
{
    m_expected.push_back({title, [this, text, buttonText](QWidget* dialog) {
                              const auto* box = qobject_cast<QMessageBox*>(dialog);
                              if (box == nullptr || box->text() != text) {
                                  m_problems.append(box == nullptr ? dialog->objectName() : box->text());
                              }
                              for (auto* button : dialog->findChildren<QAbstractButton*>()) {
                                  if (button->text() != buttonText) { continue; }
                                  QTest::mouseClick(button, Qt::LeftButton);
                                  return;
                              }
                              QTest::keyClick(dialog->focusWidget(), Qt::Key_Return);
                          }});
}

void ModalDriver::expectKeyDialog(const QString& typed, const std::function<void()>& before)
{
    const QString title = QStringLiteral("Vantor API Key");
    m_expected.push_back({title, [this, title, typed, before](QWidget* dialog) {
                              auto* edit = dialog->findChild<QLineEdit*>();
                              if (edit == nullptr) {
                                  m_problems.append(title + QStringLiteral(": no text field"));
                                  return;
                              }
                              if (edit->width() < edit->fontMetrics().horizontalAdvance(QString(64, u'0'))) {
                                  m_problems.append(title + QStringLiteral(": too narrow for a key"));
                              }
                              if (before) { before(); }
                              if (typed.isNull()) {
                                  QTest::keyClick(dialog, Qt::Key_Escape);
                                  return;
                              }
                              edit->selectAll();
                              QTest::keyClicks(edit, typed);
                              QTest::keyClick(edit, Qt::Key_Return);
                          }});
}

void ModalDriver::expectFileDialog(const QString& title, const QString& path,
                                   const std::function<void()>& afterwards)
{
    m_expected.push_back({title, [this, title, path, afterwards](QWidget* dialog) {
                              auto* fileDialog = qobject_cast<QFileDialog*>(dialog);
                              if (fileDialog == nullptr) {
                                  m_problems.append(title + QStringLiteral(": no file dialog"));
                                  return;
                              }
                              if (path.isEmpty()) {
                                  QTest::keyClick(dialog, Qt::Key_Escape);
                                  return;
                              }
                              auto* edit = fileDialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
                              edit->setText(path);
                              QTest::keyClick(edit, Qt::Key_Return);
                              if (afterwards) { afterwards(); }
                          }});
}

void ModalDriver::whenBusy(const QString& title, std::function<void()> action)
{
    m_whenBusy.emplace_back(title, std::move(action));
}

QStringList ModalDriver::problems() const
{
    QStringList problems = m_problems;
    for (const Expectation& expectation : m_expected) {
        problems.append(QStringLiteral("never shown: ") + expectation.title);
    }
    return problems;
}

bool ModalDriver::eventFilter(QObject* watched, QEvent* event)
{
    auto* dialog = qobject_cast<QDialog*>(watched);
    if (event->type() == QEvent::Show && dialog != nullptr && dialog->isModal()) {
        // Once the dialog's own event loop runs.
        QMetaObject::invokeMethod(
            this,
            [this, shown = QPointer<QWidget>(dialog)] {
                if (shown) { handle(shown); }
            },
            Qt::QueuedConnection);
    }
    return QObject::eventFilter(watched, event);
}

void ModalDriver::handle(QWidget* dialog)
{
    const QString title = dialog->windowTitle();
    if (const auto* busy = qobject_cast<BusyDialog*>(dialog)) {
        m_busyDialogs.append(title + QStringLiteral(": ") + busy->labelText());
        if (!m_whenBusy.empty() && m_whenBusy.front().first == title) {
            const auto action = m_whenBusy.front().second;
            m_whenBusy.pop_front();
            action();
        }
        return;
    }
    if (m_expected.empty() || m_expected.front().title != title) {
        const auto* box = qobject_cast<QMessageBox*>(dialog);
        m_problems.append(QStringLiteral("not expected: ") + title +
                          (box == nullptr ? QString() : QStringLiteral(": ") + box->text()));
        qobject_cast<QDialog*>(dialog)->reject();
        return;
    }
    const Expectation expectation = m_expected.front();
    m_expected.pop_front();
    Q_EMIT boxShown();
    expectation.answer(dialog);
}
