// Answers the modal dialogs that the code under test opens, as a user would, and records each as a line of text.
#pragma once

#include <QDialog>
#include <QString>

#include <functional>
#include <map>
#include <utility>

class ModalDriver : public QObject {
public:
    using Answer = std::function<void(QDialog*)>;

    ModalDriver();

    // Called for each dialog that is shown, before it is answered.
    Answer onShown = [](QDialog*) {};

    // Gives the next dialog of this title its answer. Any other dialog is ended with end().
    void answer(const QString& title, Answer answer) { m_answers.emplace(title, std::move(answer)); }

    // Presses Return in a message box and Escape in any other dialog. A busy dialog ends by itself.
    static void end(QDialog* dialog);

    // Adds lines to the record.
    void record(const QString& lines) { m_lines += lines; }

    // Returns the record since the last call: a line for each dialog.
    [[nodiscard]] QString taken() { return std::exchange(m_lines, {}); }

    // A line for each dialog that was given an answer and was never shown.
    [[nodiscard]] QString neverShown() const;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void handle(QDialog* dialog);

    std::multimap<QString, Answer> m_answers;  // by titles
    QString m_lines;
};
