// The texts that need no window: durations, languages, roles.
#include "ui/language_name.h"
#include "ui/plain_text.h"
#include "ui/title_text.h"

#include <QTest>

class TextTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void durationsAreWholeSecondsWithoutPluralForms();
    void languagesAreNamedInWordsWhereTheyAreKnown();
    void whatIsNotSaidIsUnknown();
    void textsOfOthersAreCutToTheirPlace();
};

void TextTest::durationsAreWholeSecondsWithoutPluralForms()
{
    const auto text = [](quint64 ms) { return titletext::duration(ms); };
    QCOMPARE(text(0), QStringLiteral("0 Second"));
    QCOMPARE(text(999), QStringLiteral("0 Second"));
    QCOMPARE(text(1'000), QStringLiteral("1 Second"));
    QCOMPARE(text(60'000), QStringLiteral("1 Minute"));
    QCOMPARE(text(3'600'000), QStringLiteral("1 Hour"));
    QCOMPARE(text(7'200'000), QStringLiteral("2 Hour"));
    QCOMPARE(text(3'661'999), QStringLiteral("1 Hour 1 Minute 1 Second"));
    QCOMPARE(text(3'601'000), QStringLiteral("1 Hour 1 Second"));
    QVERIFY(!text(~quint64{0}).isEmpty());
    QCOMPARE(titletext::titleSummary(2, 5'000), QStringLiteral("2 Chapters, 5 Second"));
}

void TextTest::languagesAreNamedInWordsWhereTheyAreKnown()
{
    QCOMPARE(languageName(QStringLiteral("de")), QStringLiteral("German"));
    QCOMPARE(languageName(QStringLiteral("DE")), QStringLiteral("German"));
    QCOMPARE(languageName(QStringLiteral("ger")), QStringLiteral("German"));
    QCOMPARE(languageName(QStringLiteral("deu")), QStringLiteral("German"));
    QCOMPARE(languageName(QStringLiteral("iw")), QStringLiteral("Hebrew"));
    QCOMPARE(languageName(QStringLiteral("in")), QStringLiteral("Indonesian"));
    QCOMPARE(languageName(QStringLiteral("zq")), QStringLiteral("zq"));
    QCOMPARE(languageName(QStringLiteral("<b>")), QStringLiteral("<b>"));
    QCOMPARE(languageName(QString()), QString());
}

void TextTest::whatIsNotSaidIsUnknown()
{
    QCOMPARE(titletext::summary(AudioTrackInfo{}), QStringLiteral("Unknown, Unknown"));
    QCOMPARE(titletext::details(AudioTrackInfo{}),
             QStringLiteral("Audio track\nLanguage: Unknown\nCodec: Unknown\nChannel layout: Unknown\n"
                            "Sample rate: Unknown\nPID: 0\n"));
    QCOMPARE(titletext::summary(SubtitleTrackInfo{}), QStringLiteral("Unknown, Unknown"));
    VideoStreamInfo video;
    video.category = 26;
    QCOMPARE(titletext::details(video),
             QStringLiteral("Video track\nCodec: Unknown\nRole: Unknown (0x1a)\nPID: 0\n"));
    DvdTitleInfo title;
    title.isSizeEstimated = true;
    title.playbackSizeBytes = 1'234'567;
    QVERIFY(titletext::details(title).contains(
        QStringLiteral("\nPlayback size (angle 1, estimated): 1234567 bytes\n")));
}

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
