#include "tests/browser/web_driver.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QRegularExpression>

#include <httplib.h>
#include <signal.h>
#include <sys/prctl.h>

#include <chrono>
#include <stdexcept>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace testsupport {

namespace {

constexpr auto kStartTime = 20s;
constexpr auto kFindTime = 10s;
constexpr auto kRequestTime = 40s;
constexpr int kPageLoadMs =
    30'000;  // within the time of its request, so that the driver can say what is wrong

// The member that holds an element's identifier, whatever the element.
const QString kElementKey = u"element-6066-11e4-a52e-4f735466cecf"_s;

[[noreturn]] void fail(const QString& what)
{
    throw std::runtime_error(what.toStdString());
}

QJsonObject capabilities(const QString& folder, WebDriver::Script script)
{
    // Root has no sandbox, a container little shared memory. The pipe ties the browser's life to the driver's.
    const QJsonArray arguments{u"--headless=new"_s,
                               u"--no-sandbox"_s,
                               u"--disable-dev-shm-usage"_s,
                               u"--disable-gpu"_s,
                               u"--remote-debugging-pipe"_s,
                               u"--window-size=1000,1600"_s,
                               u"--user-data-dir="_s + folder + u"/profile"_s};
    QJsonObject options{{u"args"_s, arguments}};
    if (script == WebDriver::Script::Off) {
        options[u"prefs"_s] = QJsonObject{{u"profile.managed_default_content_settings.javascript"_s, 2}};
    }
    const QJsonObject wanted{{u"browserName"_s, u"chrome"_s},
                             {u"timeouts"_s, QJsonObject{{u"pageLoad"_s, kPageLoadMs}}},
                             {u"goog:chromeOptions"_s, options}};
    return {{u"capabilities"_s, QJsonObject{{u"alwaysMatch"_s, wanted}}}};
}

}  // namespace

WebDriver::WebDriver(const QString& folder, Script script)
{
    startDriver(folder);
    const QJsonValue session = request("POST", u"/session"_s, capabilities(folder, script));
    m_session = u"/session/"_s + session[u"sessionId"_s].toString();
}

WebDriver::~WebDriver()
{
    try {
        request("DELETE", m_session);
    } catch (const std::runtime_error& error) {
        qWarning("%s", error.what());
    }
    m_process.kill();
    m_process.waitForFinished();
}

void WebDriver::startDriver(const QString& folder)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"TMPDIR"_s, folder);
    m_process.setProcessEnvironment(environment);
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    m_process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
    m_process.start(QString::fromLatin1(kChromedriver), {u"--port=0"_s});
    const QRegularExpression ready(u"started successfully on port (\\d+)"_s);
    const QDeadlineTimer deadline(kStartTime);
    QString output;
    while (!output.contains(ready)) {
        if (!m_process.waitForReadyRead(static_cast<int>(deadline.remainingTime()))) {
            fail(u"chromedriver does not start: "_s + m_process.errorString() + output);
        }
        output += QString::fromUtf8(m_process.readAll());
    }
    m_port = ready.match(output).captured(1).toInt();
}

// One command; gives its value.
QJsonValue WebDriver::request(const char* method, const QString& path, const QJsonObject& body)
{
    httplib::Client client("127.0.0.1", m_port);
    client.set_read_timeout(kRequestTime);
    httplib::Request message;
    message.method = method;
    message.path = path.toStdString();
    if (message.method == "POST") { message.body = QJsonDocument(body).toJson().toStdString(); }
    const httplib::Result reply = client.send(message);
    if (!reply) { fail(path + u": no answer from chromedriver"_s); }
    QJsonValue value = QJsonDocument::fromJson(QByteArray::fromStdString(reply->body)).object()[u"value"_s];
    if (reply->status != 200) { fail(path + u": "_s + value[u"message"_s].toString()); }
    return value;
}

// A command of Chromium's own protocol, for what WebDriver has none.
void WebDriver::devTools(const QString& command, const QJsonObject& parameters)
{
    request("POST", m_session + u"/goog/cdp/execute"_s, {{u"cmd"_s, command}, {u"params"_s, parameters}});
}

QJsonArray WebDriver::findAll(const char* selector)
{
    return request("POST", m_session + u"/elements"_s,
                   {{u"using"_s, u"css selector"_s}, {u"value"_s, QString::fromLatin1(selector)}})
        .toArray();
}

// The path below which the commands of the first such element lie.
QString WebDriver::find(const char* selector)
{
    const QDeadlineTimer deadline(kFindTime);
    QJsonArray found;
    while ((found = findAll(selector)).isEmpty()) {
        if (!deadline.hasExpired()) { continue; }
        const QString page = request("GET", m_session + u"/source"_s).toString();
        fail(u"no element %1 in\n%2"_s.arg(QString::fromLatin1(selector), page));
    }
    return m_session + u"/element/"_s + found[0][kElementKey].toString();
}

void WebDriver::open(const QString& url)
{
    request("POST", m_session + u"/url"_s, {{u"url"_s, url}});
}

void WebDriver::click(const char* selector)
{
    request("POST", find(selector) + u"/click"_s);
}

void WebDriver::type(const char* selector, const QString& text)
{
    request("POST", find(selector) + u"/clear"_s);
    click(selector);
    devTools(u"Input.insertText"_s, {{u"text"_s, text}});
}

QString WebDriver::property(const char* selector, const char* name)
{
    return request("GET", find(selector) + u"/property/"_s + QString::fromLatin1(name)).toString();
}

int WebDriver::count(const char* selector)
{
    return static_cast<int>(findAll(selector).size());
}

void WebDriver::saveScreenshot(const QString& path, bool isDark)
{
    const QJsonObject scheme{{u"name"_s, u"prefers-color-scheme"_s},
                             {u"value"_s, isDark ? u"dark"_s : u"light"_s}};
    devTools(u"Emulation.setEmulatedMedia"_s, {{u"features"_s, QJsonArray{scheme}}});
    const QString image = request("GET", m_session + u"/screenshot"_s).toString();
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(QByteArray::fromBase64(image.toLatin1())) <= 0) {
        fail(u"cannot write "_s + path);
    }
}

}  // namespace testsupport
