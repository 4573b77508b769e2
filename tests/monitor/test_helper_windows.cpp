// A helper process with the command line of the real one. It sends its --root, again and again if that is "flood", and
// its number.
#include "base/native/utf16_windows.h"
#include "etw_helper/helper_arguments.h"
#include "monitor/helper_client.h"
#include "monitor/helper_message.h"

int wmain(int argc, wchar_t** argv)
{
    const std::span<const wchar_t* const> all(argv, static_cast<std::size_t>(argc));
    const auto arguments = etw_helper::parseHelperArguments(all.subspan(1));
    if (!arguments) { return 2; }
    const std::string root = native::utf8Text(arguments->root);
    const std::string opened = monitor::encodeMessage(monitor::MessageKind::Opened, root);
    const std::string number = std::to_string(::GetCurrentProcessId());
    monitor::HelperClient client;
    if (root == "absent" ||
        client.connect(arguments->pipe, arguments->stopEvent, arguments->parentProcessId) != 0) {
        return 1;
    }
    while (client.write(opened) && root == "flood") {}
    if (client.write(monitor::encodeMessage(monitor::MessageKind::Closed, number))) { client.waitForStop(); }
    return 0;
}
