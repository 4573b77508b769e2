// Asks the service for the configurations of one disc: GET /api/tessera/<kind>/configurations/get/?discId=17
#pragma once

#include "service/configurations.h"
#include "service/disc_requests.h"

#include <QList>
#include <QString>

namespace service {

struct ConfigurationsOutcome {
    bool ok = false;
    QList<DiscConfiguration> configurations;  // when ok, in the service's order
    QString errorText;                        // when not ok; empty where the array holds too much
};

// One blocking request.
[[nodiscard]] ConfigurationsOutcome getConfigurations(DiscKind kind, qint64 discId, const QString& apiKey);

}  // namespace service
