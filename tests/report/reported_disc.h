// A built disc and what the program makes of it, for tests of reports.
#pragma once

#include "scan/disc_reader.h"
#include "tests/support/captured_log.h"
#include "tests/support/disc_tree.h"
#include "tests/support/sample_bluray.h"
#include "tests/support/sample_dvd.h"

#include <QByteArray>
#include <QFile>

#include <gtest/gtest.h>

namespace testsupport {

struct ReportedDisc {
    scan::ParsedDisc disc;
    DiscScanResult result;
};

// Reads and describes the disc at `path`, in silence.
[[nodiscard]] inline ReportedDisc readReported(const std::string& path)
{
    const CapturedLog quiet;
    ReportedDisc read;
    read.disc = scan::readDisc(QByteArray::fromStdString(path));
    read.result = scan::describeDisc(read.disc);
    EXPECT_NE(read.result.discType, DiscType::None) << path;
    return read;
}

[[nodiscard]] inline ReportedDisc readReported(const DiscTree& tree, DiscForm form = DiscForm::Directory)
{
    const TemporaryFolder folder;
    return readReported(tree.write(form, folder));
}

// The film of the sample disc alone: the example of the documents.
[[nodiscard]] inline DiscTree exampleBluray()
{
    return sampleBluray().remove("BDMV/PLAYLIST/00000.mpls").remove("BDMV/PLAYLIST/00801.mpls");
}

// The block of docs/REPORT.md that begins with ```KIND.
[[nodiscard]] inline QByteArray documentedExample(const QByteArray& kind)
{
    QFile document(QStringLiteral(DOCUMENTS_DIR "/REPORT.md"));
    EXPECT_TRUE(document.open(QIODevice::ReadOnly));
    const QByteArray text = document.readAll();
    const QByteArray opening = "\n```" + kind + '\n';
    const qsizetype begin = text.indexOf(opening) + opening.size();
    EXPECT_GE(begin, opening.size()) << "no example";
    return text.mid(begin, text.indexOf("\n```\n", begin) + 1 - begin);
}

}  // namespace testsupport
