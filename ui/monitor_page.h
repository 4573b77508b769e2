// The Blu-ray Access Monitor: which playlists and segments a player opens and closes, and which are open now.
// The page stands with its texts; nothing watches yet, so its buttons are disabled.
#pragma once

#include <QWidget>

class MonitorPage : public QWidget {
    Q_OBJECT

public:
    explicit MonitorPage(QWidget* parent = nullptr);
};
