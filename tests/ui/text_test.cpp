// Texts of others, made fit to be shown; needs no window.
#include "ui/plain_text.h"

#include <QTest>

class TextTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void textsOfOthersAreCutToTheirPlace();
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
    QCOMPARE(plaintext::wrapped(QStringLiteral("one two\nthree"), 7, 3), QStringLiteral("one two\nthree"));
    QCOMPARE(plaintext::wrapped(QStringLiteral("abcdefgh ij"), 4, 3), QStringLiteral("abcd\nefgh\nij"));
    QCOMPARE(plaintext::wrapped(QStringLiteral("abcdefghijkl"), 4, 2), QStringLiteral("abcd\nefgh") + more);
    QCOMPARE(plaintext::wrapped(QString(), 4, 2), QString());
    QCOMPARE(plaintext::toolTip(QStringLiteral("<b>")), QStringLiteral("<span>&lt;b&gt;</span>"));
}

QTEST_MAIN(TextTest)
#include "text_test.moc"
