// A helper process with the command line of the real one. It sends its --root, which selects what it does then.
#include "base/native/utf16_windows.h"
#include "etw_helper/helper_arguments.h"
#include "monitor/helper_client.h"
#include "monitor/helper_message.h"

using monitor::encodeMessage;
using monitor::MessageKind;

int wmain(int argc, wchar_t** argv)
{
    const std::span<const wchar_t* const> all(argv, static_cast<std::size_t>(argc));
    const auto arguments = etw_helper::parseHelperArguments(all.subspan(1));
    if (!arguments) { return 2; }
    const std::string root = native::utf8Text(arguments->root);
    monitor::HelperClient client;
    if (root == "absent" ||
        client.connect(arguments->pipe, arguments->stopEvent, arguments->parentProcessId) != 0) {
        return 1;
    }
    std::string messages = encodeMessage(MessageKind::Opened, root);
    if (root == "id") {
        messages += encodeMessage(MessageKind::Closed, std::to_string(::GetCurrentProcessId()));
    }
    if (root == "cut") { messages += encodeMessage(MessageKind::Opened, "x").substr(0, 7); }
    if (root == "fail") { messages += encodeMessage(MessageKind::Failed, "over"); }
    if (!client.write(messages) || root == "cut" || root == "fail") { return 1; }
    while (root == "flood" && client.write(encodeMessage(MessageKind::Opened, "x"))) {}
    client.waitForStop();
    return 0;
}
