// How long the window's thread works without a turn of the event loop. Only time of the processor counts, so that a
// machine that is busy with other things makes no difference.
#pragma once

#include <QObject>

#include <time.h>

#include <algorithm>

// The longest that the window may be busy at a stretch. Unoptimized and instrumented builds are slower.
#ifdef NDEBUG
inline constexpr qint64 kLagLimitMs = 300;
#else
inline constexpr qint64 kLagLimitMs = 3000;
#endif

class LagMeter : public QObject {
public:
    LagMeter() { startTimer(5); }

    // The longest stretch so far.
    [[nodiscard]] qint64 longestMs() const { return std::max(m_longestMs, workedMs() - m_lastTurnMs); }

protected:
    void timerEvent(QTimerEvent* /*event*/) override
    {
        m_longestMs = longestMs();
        m_lastTurnMs = workedMs();
    }

private:
    static qint64 workedMs()
    {
        timespec time{};
        ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return qint64{time.tv_sec} * 1000 + time.tv_nsec / 1'000'000;
    }

    qint64 m_lastTurnMs = workedMs();
    qint64 m_longestMs = 0;
};
