// The configurations that users have contributed for the open disc: a list, and a detail page for one of
// them. The page stands with its texts; nothing fills it yet, so its controls are disabled.
#pragma once

#include <QStackedWidget>

class ConfigurationsPage : public QStackedWidget {
    Q_OBJECT

public:
    explicit ConfigurationsPage(QWidget* parent = nullptr);

private:
    QWidget* createListPage();
    QWidget* createDetailPage();
};
