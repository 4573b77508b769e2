// One configuration: its titles, and the details of the selected title from the configuration and from the disc.
#pragma once

#include "scan/disc_scan_result.h"

#include <QWidget>

class QTextEdit;
class QTreeWidget;
class QTreeWidgetItem;

class ConfigurationDetailPage : public QWidget {
    Q_OBJECT

public:
    // `disc` is the current scan result, which must outlive the page.
    explicit ConfigurationDetailPage(const DiscScanResult& disc, QWidget* parent = nullptr);

    // Shows `disc.configurations[index]` and selects its first title. A copy stays on the page if the result changes.
    void showConfiguration(qsizetype index);

    // Gives the keyboard focus to the tree. The page has no focus proxy, because Tab would then skip the button above
    // the tree.
    void takeFocus();

Q_SIGNALS:
    void listRequested();

protected:
    // Escape requests the list, whichever widget has the focus.
    void keyPressEvent(QKeyEvent* event) override;

private:
    void createTree();
    void showDetails(const QTreeWidgetItem* row);

    const DiscScanResult& m_disc;
    service::DiscConfiguration m_configuration;
    QTreeWidget* m_tree;
    QTextEdit* m_details;
};
