// Answers the modal dialogs that the code under test opens, as a user would: by the mouse and the keyboard. A
// test writes down the dialogs it expects, in their order, runs the code, and then asks whether all of them
// came.
#pragma once

#include <QMessageBox>
#include <QObject>
#include <QString>
#include <QStringList>

#include <deque>
#include <functional>

class ModalDriver : public QObject {
    Q_OBJECT

public:
    ModalDriver();

    // A message box with this title and, where one is given, exactly this text; answered by clicking the
    // button.
    void expectBox(const QString& title, const QString& text,
                   QMessageBox::StandardButton button = QMessageBox::Ok);
    // The same, answered by a key.
    void expectBox(const QString& title, const QString& text, Qt::Key key);

    // A box of rich text that offers a document; answered by the button of this text, or by Return for a null one.
    void expectHelpBox(const QString& title, const QString& text, const QString& buttonText);

    // The key dialog: typed into and ended with Return; or, for a null text, cancelled with Escape.
    void expectKeyDialog(const QString& typed, const std::function<void()>& before = {});

    // A file dialog; given the path, or cancelled for an empty one. `afterwards` runs when it has been
    // answered.
    void expectFileDialog(const QString& title, const QString& path,
                          const std::function<void()>& afterwards = {});

    // Runs while the busy dialog of this title is up. Busy dialogs close by themselves and need not be
    // expected.
    void whenBusy(const QString& title, std::function<void()> action);

    // Empty when every expected dialog came, as it was expected, and no other did.
    [[nodiscard]] QStringList problems() const;

    // "title: label" of each busy dialog so far.
    [[nodiscard]] const QStringList& busyDialogs() const { return m_busyDialogs; }

    // What "Show Details..." of the last expected message box held.
    [[nodiscard]] const QString& lastDetails() const { return m_lastDetails; }

Q_SIGNALS:
    // An expected dialog stands, and is about to be answered.
    void boxShown();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Expectation {
        QString title;
        std::function<void(QWidget*)> answer;
    };

    void handle(QWidget* dialog);
    void expectBox(const QString& title, const QString& text,
                   const std::function<void(QMessageBox*)>& answer);

    std::deque<Expectation> m_expected;
    std::deque<std::pair<QString, std::function<void()>>> m_whenBusy;
    QStringList m_problems;
    QStringList m_busyDialogs;
    QString m_lastDetails;
};
