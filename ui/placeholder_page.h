// The page shown while there is no disc: what the user has to do next.
#pragma once

#include <QWidget>

class QLabel;
class QPushButton;

class PlaceholderPage : public QWidget {
    Q_OBJECT

public:
    explicit PlaceholderPage(QWidget* parent = nullptr);

    // With a key the page asks for a disc, without one for the key.
    void setHasKey(bool hasKey);

Q_SIGNALS:
    void keyDialogRequested();

private:
    QLabel* m_label;
    QPushButton* m_keyButton;
};
