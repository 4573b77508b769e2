// The page that shows which files of a Blu-ray disc a player opens: the events so far, and the files that are open now.
#pragma once

#include <QSet>
#include <QWidget>

class QLabel;
class QListWidget;
class QListWidgetItem;
class QPushButton;

class MonitorPage : public QWidget {
    Q_OBJECT

public:
    enum class Files { Playlists, Segments };

    explicit MonitorPage(QWidget* parent = nullptr);

    // Appends a line to the list of events and scrolls to it.
    void addEvent(Files files, const QString& line);

    // Replaces the list of open files: one row for each path, which shows the file name.
    void showOpenFiles(Files files, const QSet<QString>& paths);

    // Empties all four lists.
    void clearLists();

    void setStatus(const QString& status);
    void setControls(bool canStart, bool canStop, bool canClear);

Q_SIGNALS:
    void startRequested();
    void stopRequested();
    void clearRequested();
    // After a click or Enter on a row.
    void eventChosen(QListWidgetItem* item);
    void openFileChosen(QListWidgetItem* item);

private:
    // The two lists of one kind of files. An update of the view is queued and serves all changes until then, because
    // scrolling after each of a thousand rows took eight seconds.
    struct Lists {
        QListWidget* events = nullptr;
        QListWidget* openFiles = nullptr;
        QSet<QString> openPaths;
        bool hasNewEvents = false;
        bool hasNewOpenPaths = false;
        bool isUpdatePending = false;
    };

    void createLists();
    [[nodiscard]] Lists& lists(Files files);
    void updateLater(Lists& outdated);
    void update(Lists& outdated);

    Lists m_playlists;
    Lists m_segments;
    QLabel* m_status;
    QPushButton* m_startButton;
    QPushButton* m_stopButton;
    QPushButton* m_clearButton;
};
