// InotifyWatcher over a watch that reports what a test gives it.
#include "monitor/inotify_watcher.h"
#include "tests/support/golden.h"
#include "tests/support/temporary_folder.h"

#include <QCoreApplication>
#include <QTest>
#include <QThread>

#include <gtest/gtest.h>

#include <sstream>
#include <thread>

using monitor::WatchFailure;
using EventKind = monitor::AccessEvent::Kind;
using namespace Qt::StringLiterals;

namespace {

class Watcher : public testing::Test {
protected:
    struct FakeWatch final : monitor::AccessWatch {
        explicit FakeWatch(Watcher& owner)
            : test(owner)
        {}
        std::optional<WatchFailure> start(const std::string& root, monitor::WatchSink sink) override
        {
            test.add(root == test.m_folder.path() ? u"started"_s : QString::fromStdString(root));
            test.m_sink = std::move(sink);
            return test.m_refusal;
        }
        void stop() override
        {
            test.add(u"stopped"_s);
            test.m_sink = {};
        }

        Watcher& test;
    };

    Watcher()
    {
        const auto event = [this](const QString& kind) {
            return [this, kind](const QString& path, const QString& type) { add(kind + type + u' ' + path); };
        };
        const auto set = [this](const QString& kind) {
            return [this, kind](const QSet<QString>& files) {
                QStringList names(files.begin(), files.end());
                names.sort();
                add(kind + u'{' + names.join(u' ') + u'}');
            };
        };
        QObject::connect(&m_watcher, &InotifyWatcher::mplsEvent, event(u"mpls "_s));
        QObject::connect(&m_watcher, &InotifyWatcher::m2tsEvent, event(u"m2ts "_s));
        QObject::connect(&m_watcher, &InotifyWatcher::openMplsFilesChanged, set(u"mpls "_s));
        QObject::connect(&m_watcher, &InotifyWatcher::openFilesChanged, set(u"m2ts "_s));
        QObject::connect(&m_watcher, &InotifyWatcher::errorOccurred,
                         [this](const QString& text) { add(text); });
    }
    void add(const QString& line)
    {
        EXPECT_EQ(QThread::currentThread(), m_watcher.thread());
        m_lines.append(line);
        if (line.endsWith(u"OPEN /stop.m2ts")) { m_watcher.stopWatching(); }  // a receiver may do that
    }
    void start(const std::string& end = {})
    {
        m_watcher.startWatching(QString::fromStdString(m_folder.path().string() + end));
    }
    // Delivers "+path", "-path" or, if others have the file open, "~path", on a thread of its own as a watch does.
    void report(const std::string& line, std::size_t count = 1)
    {
        const auto kind = line[0] == '+' ? EventKind::Open : EventKind::Close;
        const std::vector<monitor::AccessEvent> events(count, {kind, line.substr(1), line[0] == '~'});
        std::thread([&] { m_sink.onEvents(events); }).join();
    }
    void fail()
    {
        const WatchFailure failure{WatchFailure::Kind::HelperFailed, 0, "<b>50%1</b>"};
        std::thread([&] { m_sink.onFailure(failure); }).join();
    }

    int m_argumentCount = 0;
    QCoreApplication m_application{m_argumentCount, nullptr};
    testsupport::TemporaryFolder m_folder;
    std::optional<WatchFailure> m_refusal;  // of the next start
    monitor::WatchSink m_sink;              // of the watch that runs
    QStringList m_lines;                    // the calls of the watch and all signals
    InotifyWatcher m_watcher{[this] { return std::make_unique<FakeWatch>(*this); }};
};

// Each line of the table that is not indented is what happens, without a pause; what comes of it is below.
TEST_F(Watcher, FollowsAWatch)
{
    testsupport::writeFile(m_folder / "file", {});
    std::filesystem::create_directory_symlink(m_folder.path(), m_folder / "link");
    std::ifstream table(GOLDEN_DIR "/watcher.txt");
    std::string text;
    for (std::string line; std::getline(table, line);) {
        if (line.starts_with(' ')) { continue; }
        text += line + '\n';
        std::istringstream words(line);
        for (std::string word; words >> word;) {
            if (word == "stop") {
                m_watcher.stopWatching();
            } else if (word == "fail") {
                fail();
            } else if (word.starts_with("start")) {
                start(word.substr(5));
            } else {
                report(word);
            }
        }
        const QString last = u"mpls CLOSE /last.mpls"_s;  // changes no set
        if (m_sink.onEvents) { report("-/last.mpls"); }
        EXPECT_TRUE(QTest::qWaitFor([&] { return !m_sink.onEvents || m_lines.contains(last); })) << line;
        m_lines.removeAll(last);
        for (const QString& emitted : std::exchange(m_lines, {})) {
            text += "    " + emitted.toStdString() + '\n';
        }
    }
    EXPECT_EQ(testsupport::goldenDifference(text, "monitor/golden/watcher.txt"), "");
}

TEST_F(Watcher, EmitsManyEventsInBatchesBeforeTheFailure)
{
    start();
    m_lines.clear();
    report("-/d/a.mpls", 2500);
    fail();
    EXPECT_TRUE(QTest::qWaitFor([this] { return !m_lines.isEmpty(); }));
    EXPECT_EQ(m_lines.size(), 1000);
    EXPECT_TRUE(QTest::qWaitFor([this] { return m_lines.contains(u"<b>50%1</b>"_s); }));
    EXPECT_EQ(m_lines.size(), 2500 + 2) << "the stop and the failure";
}

TEST_F(Watcher, HasATextForEveryFailure)
{
    std::string text;
    for (int kind = 0; kind <= static_cast<int>(WatchFailure::Kind::HelperStopped); ++kind) {
        m_refusal = {static_cast<WatchFailure::Kind>(kind), UINT32_MAX, {}};
        start();
        text += m_lines.takeLast().toStdString() + '\n';
    }
    EXPECT_EQ(testsupport::goldenDifference(text, "monitor/golden/failures.txt"), "");
}

}  // namespace
