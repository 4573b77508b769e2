// The list of a disc's configurations, below the disc's kind, its id in the service and the service's message.
#pragma once

#include "scan/disc_scan_result.h"

#include <QWidget>

class QLabel;
class QPushButton;
class QTreeWidget;
class QTreeWidgetItem;

class ConfigurationListPage : public QWidget {
    Q_OBJECT

public:
    // `disc` is the current scan result, which must outlive the page. Call showDisc() after each change of it.
    explicit ConfigurationListPage(const DiscScanResult& disc, QWidget* parent = nullptr);

    // Rebuilds the header and the list. Keeps the sort order; keeps the current row and its selection if there is
    // still a configuration with its uid.
    void showDisc();

    void setRefreshEnabled(bool enabled);

Q_SIGNALS:
    void refreshRequested();
    // `index` is the configuration's index in the result.
    void viewRequested(qsizetype index);

protected:
    // Handles Enter on a row of the list.
    bool eventFilter(QObject* watched, QEvent* event) override;
    // Handles a change of the palette.
    void changeEvent(QEvent* event) override;

private:
    void createHeader();
    void createList();
    void showHeader();
    void showRows();
    void keepCurrentRow(qint64 uid, bool isSelected);
    void requestView(const QTreeWidgetItem* row);

    const DiscScanResult& m_disc;
    QLabel* m_discLabel;
    QLabel* m_linkLabel;
    QPushButton* m_viewButton;
    QPushButton* m_refreshButton;
    QTreeWidget* m_list;
};
