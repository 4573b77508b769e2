// Texts of others, made fit to be shown, and messages in the user's language; needs no window.
#include "app/translation.h"
#include "base/message.h"
#include "text/title_text.h"
#include "ui/plain_text.h"

#include <QTest>
#include <QTranslator>

class TextTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void textsOfOthersAreCutToTheirPlace();
    void messagesAndDiscsAreInTheUsersLanguage();
};

void TextTest::textsOfOthersAreCutToTheirPlace()
{
    const QString text = QStringLiteral("a\nb\nc");
    const QString more = QChar(0x2026);
    QCOMPARE(plaintext::bounded(text, 5, 3), text);
    QCOMPARE(plaintext::bounded(text, 5, 2), QStringLiteral("a\nb") + more);
    QCOMPARE(plaintext::bounded(text, 3, 3), QStringLiteral("a\nb") + more);
    QCOMPARE(plaintext::bounded(QStringLiteral("a\U0001F4BF"), 2, 1),
             QStringLiteral("a") + more);  // no half character
    QCOMPARE(plaintext::oneLine(QStringLiteral(" a\n\tb\u2028\u00A0c "), 9),
             QStringLiteral(" a  b \u00A0c "));
    QCOMPARE(plaintext::oneLine(QStringLiteral("abcd"), 3), QStringLiteral("abc") + more);
    QCOMPARE(plaintext::oneLine(QStringLiteral("a\u202Eb\u2066c\u200F"), 9),
             QStringLiteral("a\uFFFDb\uFFFDc\u200F"));
    for (const char16_t lineBreak : {u'\n', u'\r', u'\v', u'\f', u'\u0085', u'\u2028', u'\u2029'}) {
        QCOMPARE(plaintext::bounded(QString(9, QChar(lineBreak)), 9, 2), QStringLiteral("\n") + more);
    }
    QCOMPARE(plaintext::bounded(QStringLiteral("a\r\nb"), 9, 2), QStringLiteral("a\nb"));
    QCOMPARE(plaintext::toolTip(QStringLiteral("<b>")), QStringLiteral("<span>&lt;b&gt;</span>"));
}

void TextTest::messagesAndDiscsAreInTheUsersLanguage()
{
    const AudioTrackInfo track{.language = QStringLiteral("ji"),
                               .codecName = QStringLiteral("AC-3"),
                               .channelLayout = QStringLiteral("6 channels"),
                               .sampleRate = QStringLiteral("48 kHz")};
    BlurayTitleInfo title;
    title.name = QStringLiteral("#1 00800");
    title.angleCount = 2;
    const Message failed("Network error: %1", {QStringLiteral("Timeout was reached")});
    QCOMPARE(titletext::label(title), QStringLiteral("#1 00800 (2 angles)"));

    installTranslations(*qApp, {QStringLiteral("de")}, QStringLiteral(PLATTERSCOPE_COMPILED_TRANSLATIONS));
    QCOMPARE(failed.english(), QStringLiteral("Network error: Timeout was reached"));
    QCOMPARE(failed.translated(), QStringLiteral("Netzwerkfehler: Timeout was reached"));
    QCOMPARE(Message::verbatim(QStringLiteral("%1 %2")).translated(), QStringLiteral("%1 %2"));
    QVERIFY(Message().translated().isEmpty() && Message::verbatim({}).isEmpty());
    QCOMPARE(titletext::summary(track), QStringLiteral("Jiddisch, AC-3, 6 Kanäle, 48 kHz"));
    QCOMPARE(titletext::label(title), QStringLiteral("#1 00800 (2 Blickwinkel)"));
}

QTEST_MAIN(TextTest)
#include "text_test.moc"
