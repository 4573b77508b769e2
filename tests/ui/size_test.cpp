// Discs, replies and logs of any size do not hold the window up.
#include "tests/ui/window_fixture.h"

#include <QListWidget>

#include <gtest/gtest.h>
#include <time.h>

namespace {

// The longest that the window may be busy at a stretch. Unoptimized and instrumented builds are slower.
#ifdef NDEBUG
constexpr qint64 kLagLimitMs = 300;
#else
constexpr qint64 kLagLimitMs = 3000;
#endif

// Expects that the window's thread, while the object lives, never works for longer without a turn of the event loop. Only
// time of the processor counts, so that a machine that is busy with other things makes no difference.
class LagLimit : public QObject {
public:
    LagLimit() { startTimer(5); }
    ~LagLimit() override { LagLimit::timerEvent(nullptr); }

    qint64 limitMs = kLagLimitMs;

protected:
    void timerEvent(QTimerEvent* /*event*/) override
    {
        const qint64 nowMs = workedMs();
        EXPECT_LT(nowMs - std::exchange(m_lastTurnMs, nowMs), limitMs);
    }

private:
    static qint64 workedMs()
    {
        timespec time{};
        ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return qint64{time.tv_sec} * 1000 + time.tv_nsec / 1'000'000;
    }

    qint64 m_lastTurnMs = workedMs();
};

TEST(Size, OfADiscLeavesTheWindowFree)
{
    BlurayTitleInfo decoy{.segmentMap = QStringList(100, u"00001"_s),
                          .videoStreams = QList<VideoStreamInfo>(1)};
    decoy.audioTracks = QList<AudioTrackInfo>(4, {.language = u"eng"_s, .codecName = u"DTS-HD Master"_s});
    decoy.subtitleTracks = QList<SubtitleTrackInfo>(8, {.language = u"deu"_s});
    QList<BlurayTitleInfo> decoys(1500, decoy);
    decoys.last().label = u"#1500 11499"_s;
    decoys[1400].durationMs = 36'610'000;  // the longest row is far from the first
    constexpr auto kBluray = DiscType::Bluray;
    const struct {
        const char* name;
        DiscScanResult result;
    } rows[] = {{"250,000 titles", {.discType = DiscType::Dvd, .dvdTitles = QList<DvdTitleInfo>(250'000)}},
                {"250,000 segments and tracks",
                 {.discType = kBluray,
                  .blurayTitles = {{.segmentMap = QStringList(250'000, u"00001"_s),
                                    .audioTracks = QList<AudioTrackInfo>(250'000)}}}},
                {"a name of 100 MB", {.discType = kBluray, .blurayDiscName = u"x\n"_s.repeated(50'000'000)}},
                {"an error of 100 MB", {.error = Message::verbatim(u"<b>\u05D0\n"_s.repeated(20'000'000))}},
                {"1,500 decoys", {.discType = kBluray, .blurayTitles = decoys}}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        WindowFixture fixture(u"stored key ; start"_s);
        QTreeWidget* tree = fixture.part<QTreeWidget>(u"titlesTree"_s);
        const bool isDecoys = row.result.blurayTitles.size() == decoys.size();
        LagLimit lag;
        lag.limitMs *= isDecoys ? 1 : 10;
        fixture.window->populate({}, row.result);
        const qsizetype titles = row.result.dvdTitles.size() + row.result.blurayTitles.size();
        ASSERT_EQ(tree->topLevelItemCount(), titles);
        QCoreApplication::processEvents();
        if (isDecoys) {
            const QString longest = tree->topLevelItem(1400)->text(1);
            EXPECT_GE(tree->columnWidth(1), tree->fontMetrics().horizontalAdvance(longest));
            fixture.find(u"11499"_s);
            EXPECT_TRUE(tree->currentItem() == tree->topLevelItem(1499));
            tree->expandAll();
            QCoreApplication::processEvents();
            fixture.find(u"nowhere"_s);
        }
        tree->setCurrentItem(tree->topLevelItem(tree->topLevelItemCount() - 1));
        QCoreApplication::processEvents();
        EXPECT_LT(fixture.window->windowTitle().size(), 3000);
        EXPECT_FALSE(fixture.window->windowTitle().contains(u'\n'));
    }
}

TEST(Size, OfAReplyLeavesTheWindowFree)
{
    const struct {
        const char* name;
        int configurations, titles, noteLength;
    } rows[] = {{"50 MB of configurations", 10'000, 1, 2'500},
                {"50 MB of one text", 1, 1, 25'000'000},
                {"as many configurations as may be", int{service::kMaximumConfigurations}, 0, 0},
                {"as many titles as may be", 1, int{service::kMaximumEntries} - 2, 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const QString text = u"\u05D0\u05D1 <b>"_s.repeated(row.noteLength / 6);
        const QString title = uR"({\"id\": 1, \"note\": \"%1\"})"_s.arg(text);
        const QString titles = QStringList(row.titles, title).join(u',');
        QStringList list;
        for (int i = 0; i < row.configurations; ++i) {
            list.append(
                uR"({"UID": %1, "Added By Username": "%2", "Data": "{\"disc_name\": \"%3\", \"titles\": [%4]}"})"_s
                    .arg(QString::number(i + 1), text, QString::number(i * 7919 % row.configurations) + text,
                         titles));
        }
        WindowFixture fixture(u"stored key ; start ; open bluray ; trigger configurations"_s);
        fixture.server.play({.body = '[' + list.join(u',').toStdString() + ']'});
        const LagLimit lag;
        fixture.click(u"refreshConfigurations"_s);
        auto* view = fixture.part<QTreeWidget>(u"configurationList"_s);
        ASSERT_EQ(view->topLevelItemCount(), row.configurations);
        QCoreApplication::processEvents();
        view->setCurrentItem(view->topLevelItem(row.configurations / 2));
        view->sortByColumn(2, Qt::DescendingOrder);
        QCoreApplication::processEvents();
        fixture.click(u"viewConfiguration"_s);
        QCoreApplication::processEvents();
        EXPECT_EQ(fixture.part<QTreeWidget>(u"configurationTree"_s)->topLevelItemCount(), row.titles);
    }
}

TEST(Size, OfAnEventLogLeavesTheWindowFree)
{
    constexpr int kOpensAtOnce = 2000;  // each with its close; the kernel keeps 16,384 events
    WindowFixture fixture(u"stored key ; start ; open bluray ; trigger monitor ; click startMonitoring ; "
                          "watched ; click clearMonitor"_s);
    const LagLimit lag;
    const auto* events = fixture.part<QListWidget>(u"eventPlaylistList"_s);
    for (int count = 2 * kOpensAtOnce; count <= 100'000; count += 2 * kOpensAtOnce) {
        fixture.sh(u"for i in $(seq %1); do : <bluray/BDMV/PLAYLIST/00800.mpls; done"_s.arg(kOpensAtOnce));
        ASSERT_TRUE(QTest::qWaitFor([&] { return events->count() == count; }, 60'000));
    }
    QCoreApplication::processEvents();
    EXPECT_TRUE(events->visualItemRect(events->item(99'999)).intersects(events->viewport()->rect()));
    EXPECT_EQ(fixture.part<QListWidget>(u"openFilePlaylistList"_s)->count(), 0);
}

}  // namespace
