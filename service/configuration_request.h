// Asks the service for the configurations of one disc: GET /api/tessera/<kind>/configurations/get/?discId=17
#pragma once

#include "base/message.h"
#include "service/configurations.h"
#include "service/disc_requests.h"

#include <QList>
#include <QString>

namespace service {

struct ConfigurationsOutcome {
    bool ok = false;
    QList<DiscConfiguration> configurations;  // if ok, in the service's order
    Message error;                            // if not ok; empty if the array holds too much
};

// Sends one blocking request. Throws std::bad_alloc.
[[nodiscard]] ConfigurationsOutcome getConfigurations(DiscKind kind, qint64 discId, const QString& apiKey);

}  // namespace service
