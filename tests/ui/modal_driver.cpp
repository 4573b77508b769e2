#include "tests/ui/modal_driver.h"

#include "ui/busy_task.h"

#include <QApplication>
#include <QEvent>
#include <QFileDialog>
#include <QInputDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {

QString described(const QMessageBox& box)
{
    QString text = box.property("icon").toString();
    if (box.textFormat() != Qt::PlainText) { text += u" (markup)"_s; }
    for (const QAbstractButton* button : box.buttons()) {
        const bool isDefault = button == box.defaultButton();
        text += u" ["_s + button->text().remove(u'&') + (isDefault ? u"*]"_s : u"]"_s);
    }
    const QString details = box.detailedText();
    return text + u": "_s + box.text() + (details.isEmpty() ? details : u" (details: "_s + details + u')');
}

// The kind of the dialog and what it asks.
QString described(const QDialog& dialog)
{
    if (const auto* busy = qobject_cast<const BusyDialog*>(&dialog)) {
        return u"busy: "_s + busy->labelText();
    }
    if (const auto* box = qobject_cast<const QMessageBox*>(&dialog)) { return described(*box); }
    if (const auto* files = qobject_cast<const QFileDialog*>(&dialog)) {
        return files->property("fileMode").toString() + u' ' + files->nameFilters().join(u";;"_s);
    }
    const auto* input = qobject_cast<const QInputDialog*>(&dialog);
    if (input == nullptr) { return u"unknown"_s; }
    return input->labelText() + u" \""_s + input->textValue() + u'"';
}

}  // namespace

ModalDriver::ModalDriver()
{
    qApp->installEventFilter(this);
}

void ModalDriver::end(QDialog* dialog)
{
    if (qobject_cast<BusyDialog*>(dialog) != nullptr) { return; }
    const bool isBox = qobject_cast<QMessageBox*>(dialog) != nullptr;
    QTest::keyClick(dialog, isBox ? Qt::Key_Return : Qt::Key_Escape);
}

QString ModalDriver::neverShown() const
{
    QString lines;
    for (const auto& [title, answer] : m_answers) {
        lines += u"never shown: "_s + title + u'\n';
    }
    return lines;
}

bool ModalDriver::eventFilter(QObject* watched, QEvent* event)
{
    auto* dialog = qobject_cast<QDialog*>(watched);
    if (event->type() == QEvent::Show && dialog != nullptr && dialog->isModal()) {
        QTimer::singleShot(0, dialog, [this, dialog] { handle(dialog); });  // in the dialog's own event loop
    }
    return QObject::eventFilter(watched, event);
}

void ModalDriver::handle(QDialog* dialog)
{
    const QString title = dialog->windowTitle();
    m_lines += u"  "_s + title + u" | "_s + described(*dialog).replace(u'\n', u"\\n"_s) + u'\n';
    onShown(dialog);
    const auto given = m_answers.lower_bound(title);
    if (given == m_answers.end() || given->first != title) { return end(dialog); }
    m_answers.extract(given).mapped()(dialog);
}
