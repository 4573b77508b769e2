#include "app/translation.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QXmlStreamReader>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace {

QString translated(const char* text)
{
    return QCoreApplication::translate("Messages", text);
}

// What a text must have in common with its translation: the places to fill in, and the line ends around it.
QStringList framework(const QString& text)
{
    static const QRegularExpression place(u"%[0-9n]"_s);
    QStringList found;
    for (auto match = place.globalMatch(text); match.hasNext();) {
        found.append(match.next().captured());
    }
    found.sort();
    found.append(text.startsWith(u'\n') ? u"begins a line"_s : QString());
    found.append(text.endsWith(u'\n') ? u"ends a line"_s : QString());
    return found;
}

}  // namespace

TEST(Translation, KeepsPlacesToFillInAndLineEnds)
{
    int texts = 0;
    const QDir folder(QStringLiteral(PLATTERSCOPE_TRANSLATIONS));
    for (const QString& name : folder.entryList({u"*.ts"_s})) {
        QFile file(folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        QXmlStreamReader reader(&file);
        QString source;
        while (!reader.atEnd()) {
            reader.readNext();
            if (reader.isStartElement() && reader.name() == u"source") { source = reader.readElementText(); }
            if (reader.isStartElement() && reader.name() == u"translation") {
                const QString translation = reader.readElementText();
                EXPECT_EQ(framework(translation), framework(source)) << source.toStdString();
                EXPECT_FALSE(translation.trimmed().isEmpty()) << source.toStdString();
                ++texts;
            }
        }
        EXPECT_FALSE(reader.hasError()) << reader.errorString().toStdString();
    }
    EXPECT_GT(texts, 200);
}

TEST(Translation, IsOfTheFirstLanguageThatHasOne)
{
    struct Case {
        QStringList languages;
        const char* text;
    };
    constexpr char kEnglish[] = "The monitored disc was removed.";
    constexpr char kGerman[] = "Die überwachte Disc wurde entfernt.";
    const Case cases[] = {{{u"de-DE"_s}, kGerman},
                          {{u"de-AT"_s, u"de"_s}, kGerman},
                          {{u"tlh"_s, u"de"_s, u"en"_s}, kGerman},
                          {{u"en-GB"_s, u"de"_s}, kEnglish},
                          {{u"C"_s}, kEnglish},
                          {{u"tlh"_s}, kEnglish},
                          {{}, kEnglish}};
    for (const Case& c : cases) {
        int argc = 0;
        QCoreApplication application(argc, nullptr);
        installTranslations(application, c.languages, QStringLiteral(PLATTERSCOPE_COMPILED_TRANSLATIONS));
        EXPECT_EQ(translated(kEnglish).toStdString(), c.text) << c.languages.join(u' ').toStdString();
    }
}
