// The titles of the open disc: a tree of titles with their streams, and the details of the selected row. The tree has
// the width of its widest visible row, at most half of the window, until the user moves the splitter.
#pragma once

#include "scan/disc_scan_result.h"

#include <QSplitter>

class QTextEdit;
class QTimer;
class QTreeWidget;

class TitlesPage : public QSplitter {
    Q_OBJECT

public:
    explicit TitlesPage(QWidget* parent = nullptr);

    // Rebuilds the tree from the titles of the result, in their order, and selects the title with the longest distinct
    // play time.
    void showTitles(const DiscScanResult& result);

protected:
    void showEvent(QShowEvent* event) override;

private:
    void createTree();
    void createDetails();
    void fitPendingTree();
    // Gives the tree the width of its rows, but at least `least` pixels.
    void fitTree(int least);

    QString m_signature;  // SHA-256 of the disc's package, in hexadecimal digits
    QTreeWidget* m_tree;
    QTextEdit* m_details;
    QTimer* m_growTimer;          // single shot; started when a title is opened in the tree
    bool m_isFitPending = false;  // the tree was rebuilt while the page was hidden and had no size
    bool m_isDividedByUser = false;
};
