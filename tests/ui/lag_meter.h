// Whether the window keeps answering: how long its thread works without a turn of the event loop.
#pragma once

#include <QObject>
#include <QTimer>

#include <time.h>

#include <algorithm>

// How long the window may be busy at a stretch. Unoptimized and instrumented builds are slower.
#ifdef NDEBUG
inline constexpr qint64 kLagLimitMs = 300;
#else
inline constexpr qint64 kLagLimitMs = 3000;
#endif

// The longest stretch that the window's thread worked without a turn of the event loop. Its own time is what counts:
// a machine that is busy with other things makes no difference.
class LagMeter : public QObject {
public:
    LagMeter()
    {
        connect(&m_timer, &QTimer::timeout, this, [this] {
            m_longestMs = longestMs();
            m_lastTurnMs = workedMs();
        });
        m_timer.start(5);
    }

    [[nodiscard]] qint64 longestMs() const { return std::max(m_longestMs, workedMs() - m_lastTurnMs); }

private:
    static qint64 workedMs()
    {
        timespec time{};
        ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return qint64{time.tv_sec} * 1000 + time.tv_nsec / 1'000'000;
    }

    QTimer m_timer;
    qint64 m_lastTurnMs = workedMs();
    qint64 m_longestMs = 0;
};
