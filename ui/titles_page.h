// The titles of the open disc: a tree of titles with their streams, and the details of the row selected.
#pragma once

#include "scan/disc_scan_result.h"

#include <QSplitter>

class QTextEdit;
class QTreeWidget;
class QTreeWidgetItem;

class TitlesPage : public QSplitter {
    Q_OBJECT

public:
    explicit TitlesPage(QWidget* parent = nullptr);

    // Rebuilds the tree from the titles of the result's disc kind, in their order. The first of them is selected.
    void showTitles(const DiscScanResult& result);

private:
    void createTree();
    void createDetails();
    void showDetails(const QTreeWidgetItem* item);
    [[nodiscard]] QString detailsOf(const QTreeWidgetItem& item) const;

    DiscScanResult m_result;
    QTreeWidget* m_tree;
    QTextEdit* m_details;
};
