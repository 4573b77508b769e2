#include "monitor/helper_command_line.h"

namespace monitor {

HelperNames helperNames(std::string_view uuid)
{
    HelperNames names{.pipe = "Platterscope-ETW-", .stopEvent = "Local\\Platterscope-ETW-Stop-"};
    names.pipe += uuid;
    names.stopEvent += uuid;
    return names;
}

std::string quoteArgument(std::string_view argument)
{
    std::string quoted = "\"";
    std::size_t backslashes = 0;  // directly before the current character
    for (const char character : argument) {
        if (character == '"') { quoted.append(backslashes + 1, '\\'); }
        backslashes = character == '\\' ? backslashes + 1 : 0;
        quoted += character;
    }
    quoted.append(backslashes, '\\');
    quoted += '"';
    return quoted;
}

std::string helperParameters(const HelperNames& names, std::string_view root, std::uint64_t parentProcessId)
{
    return "--pipe " + quoteArgument(names.pipe) + " --root " + quoteArgument(root) + " --stop-event " +
           quoteArgument(names.stopEvent) + " --parent-pid " + std::to_string(parentProcessId);
}

}  // namespace monitor
