// The configurations that users have contributed for the open disc: a list of them, and a page for one of them.
#pragma once

#include "scan/disc_scan_result.h"

#include <QStackedWidget>

class ConfigurationDetailPage;
class ConfigurationListPage;

class ConfigurationsPage : public QStackedWidget {
    Q_OBJECT

public:
    // `disc` is the current scan result, which must outlive the page. Call showDisc() after each change of it.
    explicit ConfigurationsPage(const DiscScanResult& disc, QWidget* parent = nullptr);

    // Shows the list of the disc's configurations.
    void showDisc();

    void setRefreshEnabled(bool enabled);

    // Gives the keyboard focus to the list, or to the configuration if one is shown.
    void takeFocus();

Q_SIGNALS:
    void refreshRequested();

private:
    void showList();
    void showConfiguration(qsizetype index);

    ConfigurationListPage* m_listPage;
    ConfigurationDetailPage* m_detailPage;
};
