// The page shown while no disc is open. It asks for the key or for a disc.
#pragma once

#include <QWidget>

class QLabel;
class QPushButton;

class PlaceholderPage : public QWidget {
    Q_OBJECT

public:
    explicit PlaceholderPage(QWidget* parent = nullptr);

    // Chooses the request: with a key for a disc, without one for the key.
    void setHasKey(bool hasKey);

Q_SIGNALS:
    void keyDialogRequested();

private:
    QLabel* m_label;
    QPushButton* m_keyButton;
};
