// A scripted service on this computer, which is the service in force.
#pragma once

#include "tests/support/scoped_environment.h"
#include "tests/support/scripted_server.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

class ServiceTest : public testing::Test {
protected:
    using Strings = std::vector<std::string>;

    // A request's header lines without those that the HTTP library writes by itself.
    static Strings ownHeaderLines(const testsupport::RecordedRequest& request)
    {
        Strings lines;
        for (const std::string& line : request.headerLines) {
            const std::string name = line.substr(0, line.find(':'));
            if (name != "Host" && name != "Accept" && name != "Content-Length" && name != "Expect") {
                lines.push_back(line);
            }
        }
        return lines;
    }

    testsupport::ScriptedServer m_server;
    testsupport::ScopedEnvironment m_address{"PLATTERSCOPE_SERVICE_URL", m_server.url()};
};
