// The titles of the open disc: a tree of titles with their streams, and the details of the row selected. The tree takes
// the width that its widest visible row needs, at most half of the window, until the user moves the division.
#pragma once

#include "scan/disc_scan_result.h"

#include <QSplitter>

class QTextEdit;
class QTimer;
class QTreeWidget;
class QTreeWidgetItem;

class TitlesPage : public QSplitter {
    Q_OBJECT

public:
    explicit TitlesPage(QWidget* parent = nullptr);

    // Rebuilds the tree from the titles of the result's disc kind, in their order. The title with the longest distinct
    // play time is selected.
    void showTitles(const DiscScanResult& result);

protected:
    void showEvent(QShowEvent* event) override;

private:
    void createTree();
    void createDetails();
    void fitPendingTree();
    // Gives the tree the width of its rows, and not less than `least` pixels.
    void fitTree(int least);
    void showDetails(const QTreeWidgetItem* item);
    [[nodiscard]] QString detailsOf(const QTreeWidgetItem& item) const;

    DiscScanResult m_result;
    QTreeWidget* m_tree;
    QTextEdit* m_details;
    QTimer* m_growTimer;          // runs after titles were opened in the tree
    bool m_isFitPending = false;  // titles were set while the page, which has no size yet, was hidden
    bool m_isDividedByUser = false;
};
