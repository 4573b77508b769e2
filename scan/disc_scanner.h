// Scans a disc directory or an image: reads the disc, builds its package and looks the package up in the service. Every
// operation blocks; run it on a worker thread with a scanner of its own.
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
    // The key of every request. White space around it is removed.
    void setApiKey(const QString& apiKey) { m_apiKey = apiKey.trimmed(); }

    // Whether the operations write diagnostic lines. Each operation sets the calling thread's switch and restores it.
    void setLoggingEnabled(bool enabled) { m_loggingEnabled = enabled; }

    // Reads the disc at `path` and looks it up. Adds an unknown disc to the service if `addIfMissing` is set. The result
    // of a failure has no disc kind if there is no disc to show; it has titles and package if only the service failed.
    [[nodiscard]] DiscScanResult scan(const QString& path, bool addIfMissing) const;

    // Returns the result of an earlier scan with the service's current configurations. On failure the earlier ones stay,
    // `ok` is 0 and `error` is set.
    [[nodiscard]] DiscScanResult refreshConfigurations(const DiscScanResult& previous) const;

    // Checks the key with the service.
    [[nodiscard]] service::AuthenticationOutcome authenticate() const;

private:
    QString m_apiKey;
    bool m_loggingEnabled = true;
};
