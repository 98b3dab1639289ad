#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Tessaline {

/// What the arguments of the program ask for.
struct CommandLine {
    enum class Action {
        Run,
        Print,  // `text` on standard output, then status 0
        Refuse, // `text` on standard error, then status 2
    };
    Action action = Action::Run;
    QString text;              // whole lines
    QString platform;          // the display's kind, where the arguments name one ("offscreen")
    bool namesDisplay = false; // whether they name the display's address

    friend bool operator==(const CommandLine &, const CommandLine &) = default;
};

/// Reads the arguments that follow the program's name. Those of the toolkit (-platform, -display, -session, -style,
/// -reverse; with one dash or two, the value behind a space or "=") are left to it. Documents are not among the
/// arguments: a file is opened in the sidebar or dropped on the window. The first argument that is not understood
/// decides, unless help or the version is asked for.
CommandLine readCommandLine(const QStringList &arguments, const QString &version);

} // namespace Tessaline
