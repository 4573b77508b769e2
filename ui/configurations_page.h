// The configurations that users have contributed for the open disc: their list, and a page for one of them.
#pragma once

#include "scan/disc_scan_result.h"

#include <QStackedWidget>

class ConfigurationDetailPage;
class ConfigurationListPage;

class ConfigurationsPage : public QStackedWidget {
    Q_OBJECT

public:
    explicit ConfigurationsPage(QWidget* parent = nullptr);

    // Shows the list of the disc's configurations: another disc's, or the same one's after a refresh.
    void showDisc(const DiscScanResult& disc);

    void setRefreshEnabled(bool enabled);

    // Puts the keyboard into the list, or into the configuration that is shown.
    void takeFocus();

Q_SIGNALS:
    void refreshRequested();

private:
    void showList();
    void showConfiguration(qsizetype index);

    DiscScanResult m_disc;
    ConfigurationListPage* m_listPage;
    ConfigurationDetailPage* m_detailPage;
};
