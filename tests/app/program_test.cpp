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
#include <sys/stat.h>
#include <sys/sysmacros.h>

using namespace testsupport;
using namespace Qt::StringLiterals;

namespace {

class Program : public testing::Test {
protected:
    Program()
    {
        for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "HOME", "LANGUAGE"}) {
            m_environment.remove(QString::fromLatin1(name));
        }
        const QString programs = QFileInfo(QStringLiteral(PLATTERSCOPE_EXECUTABLE)).path();
        m_environment.insert(u"PATH"_s, programs + u':' + m_environment.value(u"PATH"_s));
        m_environment.insert(u"LC_ALL"_s, u"C.UTF-8"_s);
        m_environment.insert(u"QT_QPA_PLATFORM"_s, u"nonsense"_s);
        m_environment.insert(u"PLATTERSCOPE_SERVICE_URL"_s, QString::fromStdString(m_server.url()));
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
        shell.setProcessEnvironment(m_environment);
        shell.start(u"/bin/sh"_s, {u"-c"_s, QString::fromUtf8(command)});
        EXPECT_TRUE(shell.waitForFinished());
        QByteArray text = "$ " + command + '\n' + shell.readAllStandardOutput();
        for (QByteArray line = shell.readAllStandardError(); !line.isEmpty();) {
            const qsizetype end = line.indexOf('\n') + 1;
            text += "! " + line.first(end);
            line.remove(0, end);
        }
        if (shell.exitCode() != 0) { text += '[' + QByteArray::number(shell.exitCode()) + "]\n"; }
        return text;
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
    QProcessEnvironment m_environment = QProcessEnvironment::systemEnvironment();
};

TEST_F(Program, ReadsItsCommandLine)
{
    expectTranscript(u"command_line.txt"_s);
}

TEST_F(Program, ReportsDiscs)
{
    expectTranscript(u"reports.txt"_s);
}

TEST_F(Program, NamesTheCommandThatMountsADrive)
{
    if (::mknod((m_folder / "sr0").c_str(), S_IFBLK | 0600U, ::makedev(7, 250)) != 0) {
        GTEST_SKIP() << "only root makes devices";
    }
    const QByteArray text = run("ln -s sr0 cdrom; platterscope --report text cdrom");
    EXPECT_TRUE(text.endsWith("! platterscope: error: The device is not mounted. Mount it with this command: "
                              "udisksctl mount -b " +
                              QByteArray::fromStdString(m_folder / "sr0") + "\n[1]\n"))
        << text.toStdString();
}

}  // namespace
