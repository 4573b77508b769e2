// A helper process that takes the real one's command line and acts out the file "script" of its --root, one act
// a line, then ends:
//
//   connect             meets the watch; ends where that fails
//   bytewise            from here on sends every byte by a call of its own
//   bytes N...          sends these bytes, decimal
//   header KIND LENGTH  sends a message's first 8 bytes
//   text TEXT           sends the rest of the line
//   fill COUNT          sends so many letters x
//   message KIND TEXT   sends a whole message
//   number COUNT        sends messages that open "0", close "1", open "2" and so on, all at once
//   pid                 sends its process id as the path of an opened file
//   flood               sends messages as long as somebody takes them
//   wait                waits for the stop, then makes the file "stopped" in its --root
//   hang                does not end for a long time
//   kill                ends as if killed
//
// Called with --record FILE it writes its other arguments there, each with a NUL behind it, and ends.
#include "monitor/helper_channel.h"
#include "monitor/helper_client.h"
#include "monitor/helper_message.h"
#include "tests/monitor/test_platform.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

namespace {

constexpr int kNotUnderstood = 64;

std::string messageOf(std::uint32_t kind, const std::string& text)
{
    return monitor::encodeMessage(static_cast<monitor::MessageKind>(kind), text);
}

std::string numberedMessages(int count)
{
    std::string messages;
    for (int i = 0; i < count; ++i) {
        messages += messageOf(i % 2 == 0 ? 2 : 3, std::to_string(i));
    }
    return messages;
}

struct Arguments {
    std::string pipe;
    std::filesystem::path root;
    std::string stopEvent;
    std::uint64_t parentProcessId = 0;
};

class Actor {
public:
    explicit Actor(Arguments arguments)
        : m_arguments(std::move(arguments))
    {}

    // False for an act that cannot be done.
    bool act(const std::string& name, std::istream& line)
    {
        if (name == "connect") {
            return m_client.connect(m_arguments.pipe, m_arguments.stopEvent, m_arguments.parentProcessId) ==
                   0;
        }
        if (name == "bytewise") { return m_isBytewise = true; }
        if (name == "flood") {
            while (m_client.write(messageOf(2, "flood"))) {}
            return true;
        }
        if (name == "wait") {
            m_client.waitForStop();
            return static_cast<bool>(std::ofstream(m_arguments.root / "stopped"));
        }
        if (name == "hang") { std::this_thread::sleep_for(std::chrono::minutes(1)); }
        if (name == "kill") { testsupport::killThisProcess(); }
        return name == "hang" || send(bytesOf(name, line));
    }

private:
    static std::string bytesOf(const std::string& name, std::istream& line)
    {
        std::uint32_t number = 0;
        std::string bytes;
        if (name == "bytes") {
            while (line >> number) {
                bytes += static_cast<char>(number);
            }
            return bytes;
        }
        if (name == "pid") { return messageOf(2, std::to_string(monitor::currentProcessId())); }
        if (name != "text") { line >> number; }
        if (name == "fill") { return std::string(number, 'x'); }
        if (name == "number") { return numberedMessages(static_cast<int>(number)); }
        std::string text;
        std::getline(line >> std::ws, text);
        if (name == "text") { return text; }
        if (name == "message") { return messageOf(number, text); }
        if (name != "header") { std::exit(kNotUnderstood); }
        std::string header = messageOf(number, {});
        const auto length = static_cast<std::uint32_t>(std::stoul(text));
        for (unsigned i = 0; i < 4; ++i) {
            header[4 + i] = static_cast<char>(length >> (8 * i));
        }
        return header;
    }

    bool send(const std::string& bytes)
    {
        if (!m_isBytewise) { return m_client.write(bytes); }
        bool isTaken = true;
        for (std::size_t i = 0; isTaken && i < bytes.size(); ++i) {
            isTaken = m_client.write(std::string_view(bytes).substr(i, 1));
        }
        return isTaken;
    }

    const Arguments m_arguments;
    monitor::HelperClient m_client;
    bool m_isBytewise = false;
};

std::filesystem::path pathOf(const std::string& utf8)
{
    return {std::u8string(utf8.begin(), utf8.end())};
}

int record(const std::vector<std::string>& arguments)
{
    std::ofstream file(pathOf(arguments.at(1)), std::ios::binary);
    for (std::size_t i = 2; i < arguments.size(); ++i) {
        file << arguments[i] << '\0';
    }
    return file.flush() ? EXIT_SUCCESS : EXIT_FAILURE;
}

int play(const Arguments& arguments)
{
    Actor actor(arguments);
    std::ifstream script(arguments.root / "script", std::ios::binary);
    for (std::string text; std::getline(script, text);) {
        std::istringstream line(text);
        std::string name;
        line >> name;
        if (!actor.act(name, line)) { return EXIT_FAILURE; }
    }
    return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv)
{
    const std::vector<std::string> arguments = testsupport::argumentsInUtf8(argc, argv);
    if (arguments.size() > 1 && arguments[0] == "--record") { return record(arguments); }
    if (arguments.size() != 8 || arguments[0] != "--pipe" || arguments[2] != "--root" ||
        arguments[4] != "--stop-event" || arguments[6] != "--parent-pid") {
        return kNotUnderstood;
    }
    return play({.pipe = arguments[1],
                 .root = pathOf(arguments[3]),
                 .stopEvent = arguments[5],
                 .parentProcessId = std::stoull(arguments[7])});
}
