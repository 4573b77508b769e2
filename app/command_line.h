// The command line. It is parsed before the application object exists, so that help, version and reports need no
// display.
#pragma once

#include <QString>
#include <QStringList>

struct CommandLine {
    enum class Mode { Window, TextReport, JsonReport, Help, Version, Wrong };

    Mode mode = Mode::Window;
    QString disc = {};     // Window: the disc to open, or empty; reports: the disc
    QString problem = {};  // Wrong: a sentence for standard error
    // The disc's index among the arguments, -1 without a disc. A path that is not valid text is lost in a QString, but
    // not in the argument.
    qsizetype discIndex = -1;
};

// argv[1..], decoded from the file system's encoding.
[[nodiscard]] QStringList decodedArguments(int argc, char** argv);

// Parses the arguments without the program's name, from the first to the last; help, version and the first error end
// the parsing. Ignores the toolkit's own options ("-platform xcb", "--style=..."). "--" ends the options. One argument
// may name a disc, before or after the options. Two report options are an error.
[[nodiscard]] CommandLine parseCommandLine(const QStringList& arguments);

// The text of --help.
[[nodiscard]] QString helpText();

// The sentence that follows an error and points to --help.
[[nodiscard]] QString helpHint();
