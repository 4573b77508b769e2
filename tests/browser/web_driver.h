// A real browser, without a window, driven over the WebDriver protocol: commands as JSON over HTTP to chromedriver,
// which starts Chromium and passes them on.
#pragma once

#include <QJsonObject>
#include <QProcess>
#include <QString>

namespace testsupport {

inline constexpr char kChromedriver[] = "/usr/bin/chromedriver";  // where Debian has it

// Elements are named by CSS selectors; one that is asked for may take up to 10 seconds to appear. What fails or takes
// too long throws std::runtime_error with the driver's message.
class WebDriver {
public:
    enum class Script { Off, On };

    // Starts the driver and a browser, which keep their files in `folder`. With Script::Off no page may run scripts.
    // Both processes end with this object, and with the thread that made it.
    WebDriver(const QString& folder, Script script);
    ~WebDriver();
    WebDriver(const WebDriver&) = delete;
    WebDriver& operator=(const WebDriver&) = delete;

    // Returns when the page is loaded. So does click() where it leads to another page.
    void open(const QString& url);
    void click(const char* selector);

    // Replaces what a field holds. The text arrives whole, as from an input method, so it may hold any letters.
    void type(const char* selector, const QString& text);

    // A property of an element's object, as "value" or "innerText" (the text that is seen).
    [[nodiscard]] QString property(const char* selector, const char* name);

    // How many such elements the page has now.
    [[nodiscard]] int count(const char* selector);

    // Writes what the window would show, in the light or the dark colours, to a PNG file.
    void saveScreenshot(const QString& path, bool isDark);

private:
    void startDriver(const QString& folder);
    QJsonValue request(const char* method, const QString& path, const QJsonObject& body = {});
    void devTools(const QString& command, const QJsonObject& parameters);
    QJsonArray findAll(const char* selector);
    QString find(const char* selector);

    QProcess m_process;
    int m_port = 0;
    QString m_session;  // the path below which the session's commands lie
};

}  // namespace testsupport
