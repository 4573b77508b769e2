// Turns a path, a disc directory or an image, into a DiscScanResult: reads the disc, builds its package and
// asks the service about it. Every operation blocks and belongs on a worker thread, with a scanner of its
// own.
#pragma once

#include "scan/disc_scan_result.h"
#include "service/authentication.h"

#include <QObject>
#include <QString>

class DiscScanner : public QObject {
    Q_OBJECT

public:
    // Starts without a key and with logging on.
    explicit DiscScanner(QObject* parent = nullptr);

    [[nodiscard]] const QString& apiKey() const { return m_apiKey; }
    // The key that every request carries; white space around it is dropped.
    void setApiKey(const QString& apiKey) { m_apiKey = apiKey.trimmed(); }

    // Whether diagnostic lines are written while this scanner works. Each operation sets the calling thread's
    // switch to it and restores what stood there before.
    void setLoggingEnabled(bool enabled) { m_loggingEnabled = enabled; }

    // Reads and looks up the disc at `path`, and adds it to the service when it is unknown there and
    // `addIfMissing` is set. Failures come back inside the result: without a disc kind where there is no disc
    // to show, with titles and package where only the service failed.
    [[nodiscard]] DiscScanResult scan(const QString& path, bool addIfMissing) const;

    // The result of an earlier scan with the configurations that the service has now; where that fails, the
    // earlier ones stay, `ok` is 0 and `errorMessage` says why.
    [[nodiscard]] DiscScanResult refreshConfigurations(const DiscScanResult& previous) const;

    // Asks the service whether it accepts the key.
    [[nodiscard]] service::AuthenticationOutcome authenticate() const;

private:
    QString m_apiKey;
    bool m_loggingEnabled = true;
};
