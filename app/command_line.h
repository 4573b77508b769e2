// What the command line asks for. Read before the application object exists, so that help, version and reports need
// no display.
#pragma once

#include <QString>
#include <QStringList>

struct CommandLine {
    enum class Mode { Window, TextReport, JsonReport, Help, Version, Wrong };

    Mode mode = Mode::Window;
    QString disc;     // Window: the disc to open, or empty; reports: the disc, which there always is
    QString problem;  // Wrong: a sentence for standard error
    // Of the disc among the arguments, -1 without one. Not every path survives becoming a QString; the argument does.
    qsizetype discIndex = -1;
};

// What stands behind the program's name, as texts.
[[nodiscard]] QStringList decodedArguments(int argc, char** argv);

// Takes the arguments without the program's name. The toolkit's own options ("-platform xcb", "--style=...")
// pass unread, "--" ends the options, and one argument may name a disc, before or behind the options. Two
// report options are wrong.
[[nodiscard]] CommandLine parseCommandLine(const QStringList& arguments);

// The text that --help prints, and the sentence that points to it.
[[nodiscard]] QString helpText();
[[nodiscard]] QString helpHint();
