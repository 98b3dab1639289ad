#include "shell/CommandLine.h"

#include <algorithm>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

QString helpText()
{
    return u"Usage: tessaline [options]\n"
           "A writing application for Markdown and plain text.\n"
           "\n"
           "Options:\n"
           "  -h, --help     Print this text and exit.\n"
           "  -v, --version  Print the version and exit.\n"
           "\n"
           "Options of the window toolkit:\n"
           "  -platform NAME, -display ADDRESS, -session ID, -style NAME, -reverse\n"
           "\n"
           "Files are opened in the window: in the sidebar, or dropped on it.\n"_s;
}

CommandLine refusal(const QString &argument)
{
    CommandLine refused{CommandLine::Action::Refuse, {}, {}, false};
    if (argument.startsWith(u'-') && argument.size() > 1)
        refused.text =
            u"tessaline: There is no option “%1”; “tessaline --help” lists those there are.\n"_s.arg(argument);
    else
        refused.text =
            u"tessaline: Could not open “%1” from the command line: files are opened in the window.\n"_s.arg(argument);
    return refused;
}

bool isOneOf(const QString &argument, std::initializer_list<QLatin1StringView> names)
{
    return std::find(names.begin(), names.end(), argument) != names.end();
}

} // namespace

CommandLine readCommandLine(const QStringList &arguments, const QString &version)
{
    CommandLine line;
    for (qsizetype index = 0; index < arguments.size(); ++index) {
        const QString &argument = arguments.at(index);
        if (isOneOf(argument, {"-h"_L1, "--help"_L1}))
            return {CommandLine::Action::Print, helpText(), {}, false};
        if (isOneOf(argument, {"-v"_L1, "--version"_L1}))
            return {CommandLine::Action::Print, u"tessaline %1\n"_s.arg(version), {}, false};

        // The toolkit's own.
        const qsizetype equals = argument.indexOf(u'=');
        QString name = equals < 0 ? argument : argument.first(equals);
        if (name.startsWith("--"_L1))
            name.remove(0, 1);
        if (equals < 0 && name == "-reverse"_L1)
            continue;
        const bool takesValue = isOneOf(name, {"-platform"_L1, "-display"_L1, "-session"_L1, "-style"_L1});
        const bool hasValue = equals >= 0 || index + 1 < arguments.size();
        if (takesValue && hasValue) {
            const QString value = equals < 0 ? arguments.at(++index) : argument.sliced(equals + 1);
            if (name == "-platform"_L1)
                line.platform = value;
            else if (name == "-display"_L1)
                line.namesDisplay = true;
            continue;
        }

        if (line.action == CommandLine::Action::Run)
            line = refusal(argument);
    }
    return line;
}

} // namespace Tessaline
