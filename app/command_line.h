// What the command line asks for. Read before the application object exists, so that help and version need no
// display.
#pragma once

#include <QString>
#include <QStringList>

struct CommandLine {
    enum class Mode { Window, Help, Version, Wrong };

    Mode mode = Mode::Window;
    QString disc;     // Window: the disc to open, or empty
    QString problem;  // Wrong: a sentence for standard error
};

// Takes the arguments without the program's name. The toolkit's own options ("-platform xcb", "--style=...")
// pass unread, "--" ends the options, and one argument may name a disc.
[[nodiscard]] CommandLine parseCommandLine(const QStringList& arguments);

// The text that --help prints.
[[nodiscard]] QString helpText();
