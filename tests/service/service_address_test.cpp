#include "service/service_address.h"
#include "tests/service/tables.h"
#include "tests/support/scoped_environment.h"

using service::ServiceAddress;
using testsupport::ScopedEnvironment;

// Origin, host and whether it is this computer; or why the address is refused. The host becomes the name of a directory
// under the home directory as well.
TEST(ServiceAddress, IsAnOriginThatIsSecureOrThisComputers)
{
    for (const QByteArrayList& row : readTable("addresses.txt")) {
        const ServiceAddress address = service::parseServiceAddress(QString::fromUtf8(row.value(0)));
        const std::string origin = (address.origin + u' ' + address.host).toStdString();
        const std::string judgement = address.isUsable() ? origin + (address.isLoopback ? " loopback" : "")
                                                         : address.problem.english().toStdString();
        EXPECT_EQ(judgement, row.value(1).toStdString());
        EXPECT_EQ(address.isUsable(), !address.origin.isEmpty() && !address.host.isEmpty())
            << row.value(0).data();
    }
}

TEST(ServiceAddress, EnvironmentOverridesTheCompiledInAddress)
{
    const ScopedEnvironment none("PLATTERSCOPE_SERVICE_URL", "");
    EXPECT_TRUE(service::currentServiceAddress().isUsable());
    const ScopedEnvironment chosen("PLATTERSCOPE_SERVICE_URL", "http://127.0.0.1:7");
    EXPECT_EQ(service::currentServiceAddress().origin.toStdString(), "http://127.0.0.1:7");
    const ScopedEnvironment refused("PLATTERSCOPE_SERVICE_URL", "http://tessera.example");
    EXPECT_FALSE(service::currentServiceAddress().isUsable());
}
