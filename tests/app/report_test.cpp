// Reports by the executable itself, as a process that has neither a display, a platform plugin nor a home.
#include "tests/app/program_run.h"
#include "tests/support/sample_bluray.h"
#include "tests/support/sample_dvd.h"
#include "tests/support/scripted_server.h"
#include "tests/support/temporary_folder.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <iostream>

namespace {

using testsupport::DiscForm;
using testsupport::Ended;
using namespace Qt::Literals::StringLiterals;

class Report : public testing::Test {
protected:
    Report()
    {
        m_environment.remove(u"HOME"_s);
        m_environment.insert(u"QT_QPA_PLATFORM"_s, u"nonsense"_s);
        m_environment.insert(u"PLATTERSCOPE_SERVICE_URL"_s, QString::fromStdString(m_server.url()));
    }
    ~Report() override { EXPECT_TRUE(m_server.requests().empty()) << "a report asks nobody"; }

    [[nodiscard]] Ended report(const QStringList& arguments) const
    {
        QProcess process;
        process.setProcessEnvironment(m_environment);
        return testsupport::run(process, arguments);
    }

    // A line of the shell, in which $0 is the program and $1 the path.
    [[nodiscard]] Ended shell(const QString& line, const std::string& path) const
    {
        QProcess process;
        process.setProcessEnvironment(m_environment);
        return testsupport::run(
            process, {u"-c"_s, line, QStringLiteral(PLATTERSCOPE_EXECUTABLE), QString::fromStdString(path)},
            u"/bin/sh"_s);
    }

    [[nodiscard]] std::string writeBluray(DiscForm form = DiscForm::Directory) const
    {
        return testsupport::sampleBluray().write(form, m_folder);
    }

    testsupport::ScriptedServer m_server;
    testsupport::TemporaryFolder m_folder;
    QProcessEnvironment m_environment = testsupport::withoutDisplay();
};

TEST_F(Report, ABlurayInBothFormatsFromEveryForm)
{
    for (const DiscForm form : testsupport::kAllBlurayForms) {
        const QString path = QString::fromStdString(writeBluray(form));
        const Ended json = report({u"--report"_s, u"json"_s, path});
        EXPECT_EQ(json.exitCode, 0);
        EXPECT_EQ(json.errors, QByteArray("platterscope: info: started\n"
                                          "bdmeta: info: started parsing\n"
                                          "bdmeta: info: finished parsing: 3 playlists, 3 clips\n"
                                          "bdmeta: info: title sizes calculated from CPI packet ranges\n"));
        const QJsonObject read = QJsonDocument::fromJson(json.output).object();
        EXPECT_EQ(read[u"path"_s], path);
        EXPECT_EQ(read[u"titles"_s].toArray().size(), 3);

        const Ended text = report({path, u"--report=text"_s});
        EXPECT_EQ(text.exitCode, 0);
        EXPECT_TRUE(text.output.startsWith("Disc: Blu-ray\n"));
        EXPECT_TRUE(text.output.contains(
            "\nPackage SHA-256: " + read[u"packageSha256"_s].toString().toLatin1() + '\n'));
    }
}

TEST_F(Report, ADvdWhateverTheLocale)
{
    const std::string image = m_folder / "disc.iso";
    const testsupport::DiscTree disc = testsupport::sampleDvd();
    testsupport::DiscTree smallLetters;
    for (const testsupport::TreeFile& file : disc.files()) {
        smallLetters.add(QString::fromStdString(file.path).toLower().toStdString(), file.bytes);
    }
    smallLetters.image(testsupport::DiscForm::Iso).writeTo(image);
    const QString path = QString::fromStdString(image);
    QStringList locales = {u"C"_s, u"de_DE.UTF-8"_s, u"de_DE"_s};
    // In Turkish, "I" and "i" are different letters.
    const QString turkish = QString::fromStdString(m_folder / "tr_TR.UTF-8");
    if (QProcess::execute(u"localedef"_s, {u"-i"_s, u"tr_TR"_s, u"-f"_s, u"UTF-8"_s, turkish}) == 0) {
        m_environment.insert(u"LOCPATH"_s, QString::fromStdString(m_folder.path()));
        locales.append(u"tr_TR.UTF-8"_s);
    } else {
        std::cerr << "no Turkish locale: localedef or the package locales is missing\n";
    }
    QByteArray inFirstLocale;
    for (const QString& locale : locales) {
        m_environment.insert(u"LC_ALL"_s, locale);
        m_environment.insert(u"LANGUAGE"_s, locale);
        const Ended json = report({u"--report"_s, u"json"_s, path});
        EXPECT_EQ(json.exitCode, 0);
        EXPECT_EQ(json.errors, QByteArray("platterscope: info: started\n"
                                          "bdmeta: info: started parsing\n"
                                          "bdmeta: info: not a Blu-ray source; trying DVD parsing\n"
                                          "dvdmeta: info: started parsing\n"
                                          "dvdmeta: info: finished parsing: 2 titles\n"));
        if (inFirstLocale.isEmpty()) { inFirstLocale = json.output; }
        EXPECT_EQ(json.output, inFirstLocale);
        EXPECT_EQ(QJsonDocument::fromJson(json.output).object()[u"kind"_s], u"dvd"_s);
        EXPECT_TRUE(report({u"--report"_s, u"text"_s, path}).output.startsWith("Disc: DVD\n"));
    }
}

TEST_F(Report, WhatCannotBeReadIsOneWithTheReadersWords)
{
    const testsupport::DiscTree noTitles = testsupport::sampleBluray()
                                               .remove("BDMV/PLAYLIST/00000.mpls")
                                               .remove("BDMV/PLAYLIST/00800.mpls")
                                               .remove("BDMV/PLAYLIST/00801.mpls")
                                               .add("BDMV/PLAYLIST/note.txt", {});
    const std::string withoutTitles = noTitles.write(DiscForm::Directory, m_folder);
    struct Case {
        std::string path;
        QByteArray lastLines;
    };
    const Case cases[] = {
        {"/no/such/disc", "bdmeta: error: cannot stat '/no/such/disc': No such file or directory\n"
                          "dvdmeta: error: cannot stat '/no/such/disc': No such file or directory\n"
                          "platterscope: error: Path is not a valid Blu-ray or DVD.\n"},
        {"", "platterscope: error: Path is not a valid Blu-ray or DVD.\n"},
        {withoutTitles, "platterscope: error: No titles found on Blu-ray.\n"},
    };
    for (const Case& wrong : cases) {
        for (const char* format : {"--report=text", "--report=json"}) {
            const Ended ended = report({QString::fromLatin1(format), QString::fromStdString(wrong.path)});
            EXPECT_EQ(ended.exitCode, 1);
            EXPECT_TRUE(ended.output.isEmpty());
            EXPECT_TRUE(ended.errors.startsWith("platterscope: info: started\n"));
            EXPECT_TRUE(ended.errors.endsWith(wrong.lastLines)) << ended.errors.toStdString();
        }
    }
}

// A pipe of which a process gets the end to write to as its standard output or error.
class OutputPipe {
public:
    explicit OutputPipe(int writeFlags)
    {
        EXPECT_EQ(::pipe2(m_ends, O_CLOEXEC), 0);
        EXPECT_EQ(::fcntl(m_ends[1], F_SETFL, writeFlags), 0);
    }
    ~OutputPipe()
    {
        closeEnd(m_ends[0]);
        closeEnd(m_ends[1]);
    }
    OutputPipe(const OutputPipe&) = delete;
    OutputPipe& operator=(const OutputPipe&) = delete;

    void closeReadEnd() { closeEnd(m_ends[0]); }
    void become(int descriptor) const { ::dup2(m_ends[1], descriptor); }  // in the process that is to write

    // All that comes; this process' own end to write to is closed.
    [[nodiscard]] QByteArray readAll()
    {
        closeEnd(m_ends[1]);
        QByteArray all;
        std::array<char, 4096> buffer = {};
        for (ssize_t size = 1; size > 0; all.append(buffer.data(), size)) {
            size = std::max<ssize_t>(::read(m_ends[0], buffer.data(), buffer.size()), 0);
        }
        return all;
    }

private:
    static void closeEnd(int& descriptor)
    {
        if (descriptor >= 0) { ::close(descriptor); }
        descriptor = -1;
    }

    int m_ends[2] = {-1, -1};
};

TEST_F(Report, AReportThatCannotBeWrittenIsSaid)
{
    const std::string path = writeBluray();
    const auto expectReason = [](const Ended& ended, const QByteArray& reason) {
        EXPECT_EQ(ended.exitCode, 1);
        EXPECT_TRUE(
            ended.errors.endsWith("\nplatterscope: error: cannot write to standard output: " + reason + '\n'))
            << ended.errors.toStdString();
    };
    expectReason(shell(u"exec \"$0\" --report json \"$1\" >/dev/full"_s, path), "No space left on device");
    expectReason(shell(u"exec \"$0\" --report text \"$1\" >&-"_s, path), "Bad file descriptor");
}

TEST_F(Report, AReaderThatHasGoneEndsNothing)
{
    const QStringList arguments = {u"--report=text"_s, QString::fromStdString(writeBluray())};
    const Ended whole = report(arguments);
    OutputPipe withoutReader(0);
    withoutReader.closeReadEnd();
    for (const int descriptor : {STDOUT_FILENO, STDERR_FILENO}) {
        QProcess process;
        process.setProcessEnvironment(m_environment);
        process.setChildProcessModifier([&] { withoutReader.become(descriptor); });
        const Ended ended = testsupport::run(process, arguments);
        EXPECT_EQ(ended.exitCode, 0);
        EXPECT_EQ(ended.output, descriptor == STDOUT_FILENO ? QByteArray() : whole.output);
        EXPECT_EQ(ended.errors, descriptor == STDERR_FILENO ? QByteArray() : whole.errors);
    }
}

TEST_F(Report, AnOutputThatDoesNotBlockGetsAllOfALongReport)
{
    testsupport::DiscTree disc = testsupport::sampleBluray();
    testsupport::MplsSpec film;
    film.playItems = {testsupport::sampleItem("00001", 60)};
    for (int number = 100; number < 200; ++number) {
        disc.add("BDMV/PLAYLIST/00" + std::to_string(number) + ".mpls", film.build());
    }
    const QStringList arguments = {u"--report=json"_s,
                                   QString::fromStdString(disc.write(DiscForm::Directory, m_folder))};
    OutputPipe pipe(O_NONBLOCK);
    QProcess process;
    process.setChildProcessModifier([&pipe] { pipe.become(STDOUT_FILENO); });
    process.start(QStringLiteral(PLATTERSCOPE_EXECUTABLE), arguments);
    const QByteArray output = pipe.readAll();
    EXPECT_TRUE(process.waitForFinished());
    EXPECT_EQ(process.exitCode(), 0);
    EXPECT_GT(output.size(), 1 << 16) << "more than a pipe holds";
    EXPECT_EQ(output, report(arguments).output);
}

TEST_F(Report, APathIsUsedInTheBytesThatWereGiven)
{
    const std::filesystem::path folder = m_folder.path() / "\xE9t\xE9";
    testsupport::sampleDvd().writeDirectory(folder);
    const QString line = u"exec \"$0\" --report json \"$1/$(printf '\\351t\\351')\""_s;
    const Ended ended = shell(line, m_folder.path());
    EXPECT_EQ(ended.exitCode, 0) << ended.errors.toStdString();
    EXPECT_EQ(QJsonDocument::fromJson(ended.output).object()[u"path"_s],
              QString::fromStdString(m_folder.path()) + u"/\uFFFDt\uFFFD"_s);
}

TEST_F(Report, ADiscMayBeGivenByItsFilesOrWithASeparator)
{
    const auto readFrom = [this](const std::string& path) {
        const Ended json = report({u"--report=json"_s, QString::fromStdString(path)});
        EXPECT_EQ(json.exitCode, 0) << json.errors.toStdString();
        return QJsonDocument::fromJson(json.output)[u"packageSha256"_s].toString();
    };
    const std::string bluray = writeBluray();
    for (const char* spelling : {"/", "/BDMV//", "/BDMV/INDEX.BDMV", "/BDMV/PLAYLIST/00800.mpls"}) {
        EXPECT_EQ(readFrom(bluray + spelling), readFrom(bluray)) << spelling;
    }
    const testsupport::TemporaryFolder folder;
    const std::string dvd = testsupport::sampleDvd().write(DiscForm::Directory, folder);
    for (const char* spelling : {"/VIDEO_TS/", "/VIDEO_TS/VTS_01_0.ifo"}) {
        EXPECT_EQ(readFrom(dvd + spelling), readFrom(dvd)) << spelling;
    }
}

TEST_F(Report, ADriveThatIsNotMountedIsOne)
{
    const std::string device = m_folder / "sr0";
    const std::string link = m_folder / "cdrom";
    if (::mknod(device.c_str(), S_IFBLK | 0600U, ::makedev(7, 250)) != 0) {
        GTEST_SKIP() << "only root makes devices";
    }
    std::filesystem::create_symlink(device, link);
    for (const std::string& path : {device, link}) {
        const Ended ended = report({u"--report=text"_s, QString::fromStdString(path)});
        EXPECT_EQ(ended.exitCode, 1);
        EXPECT_EQ(ended.errors.toStdString(),
                  "platterscope: info: started\nplatterscope: error: The device is not mounted. "
                  "Mount it with this command: udisksctl mount -b " +
                      device + '\n');
    }
}

TEST_F(Report, WrongUseIsTwo)
{
    for (const QStringList& wrong :
         {QStringList{u"--report"_s, u"text"_s}, QStringList{u"--report"_s},
          QStringList{u"--report=xml"_s, u"disc"_s}, QStringList{u"--report=text"_s, u"one"_s, u"two"_s}}) {
        const Ended ended = report(wrong);
        EXPECT_EQ(ended.exitCode, 2);
        EXPECT_TRUE(ended.output.isEmpty());
        EXPECT_TRUE(ended.errors.startsWith("platterscope: info: started\nplatterscope: "));
    }
}

}  // namespace
