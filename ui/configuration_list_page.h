// The list of a disc's configurations, under what the service knows of the disc.
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
    explicit ConfigurationListPage(QWidget* parent = nullptr);

    // Shows another disc, or the same one after a refresh. Sorting stays; the current row and its selection
    // stay on the configuration of the same uid, where there still is one.
    void showDisc(const DiscScanResult& disc);

    void setRefreshEnabled(bool enabled);

Q_SIGNALS:
    void refreshRequested();
    // `index` is the configuration's place in the result.
    void viewRequested(qsizetype index);

protected:
    // Enter on a row of the list.
    bool eventFilter(QObject* watched, QEvent* event) override;
    // Another palette.
    void changeEvent(QEvent* event) override;

private:
    void createHeader();
    void createList();
    void showHeader();
    void showRows();
    void keepCurrentRow(qint64 uid, bool isSelected);
    void requestView(const QTreeWidgetItem* row);
    [[nodiscard]] qint64 uidOf(const QTreeWidgetItem* row) const;

    DiscScanResult m_disc;
    QLabel* m_discLabel;
    QLabel* m_linkLabel;
    QPushButton* m_viewButton;
    QPushButton* m_refreshButton;
    QTreeWidget* m_list;
};
