// The executable as a process without a display, a platform plugin and a home. The golden files are transcripts of a
// shell: "$ " before a command, "! " before each line of its standard error, and its exit status in brackets unless 0.
#include "base/identity.h"
#include "tests/support/golden.h"
#include "tests/support/sample_bluray.h"
#include "tests/support/sample_dvd.h"
#include "tests/support/scripted_server.h"

#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <gtest/gtest.h>

using namespace testsupport;
using namespace Qt::StringLiterals;

namespace {

// Runs the command %3 with the programs of the folder %1 and the service %2.
const QString kScript = uR"(unset DISPLAY WAYLAND_DISPLAY HOME LANGUAGE
export PATH=%1:$PATH LC_ALL=C.UTF-8 QT_QPA_PLATFORM=nonsense PLATTERSCOPE_SERVICE_URL=%2
(%3) 2>.errors; status=$?; sed 's/^/! /' .errors; [ $status = 0 ] || echo [$status])"_s;

class Program : public testing::Test {
protected:
    Program()
    {
        sampleDvd().writeDirectory(m_folder / "dvd");
        sampleBluray().writeDirectory(m_folder / "bluray");
        std::filesystem::rename(sampleDvd().write(DiscForm::Iso, m_folder), m_folder / "dvd.iso");
        std::filesystem::rename(sampleBluray().write(DiscForm::Iso, m_folder), m_folder / "bluray.iso");
    }
    ~Program() override { EXPECT_TRUE(m_server.requests().empty()) << "no service is asked"; }

    // Runs a command in the folder of the discs, and gives its part of a transcript.
    QByteArray run(const QByteArray& command)
    {
        QProcess shell;
        shell.setWorkingDirectory(QString::fromStdString(m_folder.path()));
        shell.start(
            u"/bin/sh"_s,
            {u"-c"_s, kScript.arg(QFileInfo(QStringLiteral(PLATTERSCOPE_EXECUTABLE)).path(),
                                  QString::fromStdString(m_server.url()), QString::fromUtf8(command))});
        EXPECT_TRUE(shell.waitForFinished());
        return "$ " + command + '\n' + shell.readAllStandardOutput();
    }

    // Runs the commands of a transcript again.
    void expectTranscript(const QString& name)
    {
        QFile file(QStringLiteral(TRANSCRIPTS_DIR "/") + name);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        QByteArray text;
        for (const QByteArray& line : file.readAll().split('\n')) {
            if (line.startsWith("$ ")) { text += run(line.sliced(2)); }
        }
        text.replace(QByteArray::fromStdString(m_folder.path()), "FOLDER");
        text.replace(QByteArray("Platterscope ") + identity::kVersion, "Platterscope VERSION");
        EXPECT_EQ(goldenDifference(text.toStdString(), "app/golden/" + name.toStdString()), "");
    }

    ScriptedServer m_server;
    TemporaryFolder m_folder;
};

TEST_F(Program, ReadsItsCommandLineAndReportsDiscs)
{
    expectTranscript(u"command_line.txt"_s);
    expectTranscript(u"reports.txt"_s);
}

TEST_F(Program, NamesTheCommandThatMountsADrive)
{
    const QByteArray text =
        run("mknod sr0 b 7 250 || exit 77; ln -s sr0 cdrom; platterscope --report text cdrom");
    if (text.endsWith("[77]\n")) { GTEST_SKIP() << "only root makes devices"; }
    EXPECT_TRUE(text.endsWith("! platterscope: error: The device is not mounted. Mount it with this command: "
                              "udisksctl mount -b " +
                              QByteArray::fromStdString(m_folder / "sr0") + "\n[1]\n"))
        << text.toStdString();
}

}  // namespace
