#include "shell/Console.h"

#include <QtCore/QtGlobal>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <unistd.h>
#include <utility>

namespace Tessaline::Console {

namespace {

using namespace Qt::StringLiterals;

// Each is a matter of the machine's set-up in which everything works all the same.
constexpr std::array kNoise{
    "This plugin does not support propagateSizeHints()"_L1, // the platform "offscreen"
    "This plugin does not support raise()"_L1,
    "  OpenType support missing for "_L1,         // no face for a script: its signs are shown as boxes
    "QStandardPaths: XDG_RUNTIME_DIR not set"_L1, // another folder is used
    "QStandardPaths: wrong permissions on runtime directory"_L1,
    "QStandardPaths: runtime directory"_L1,
    "Detected locale \""_L1,    // the toolkit goes on in UTF-8
    "Qt depends on a UTF-8"_L1, // the second line of the same
    "qt.qpa.wayland: Wayland does not support QWindow::requestActivate()"_L1,
    "Wayland does not support QWindow::requestActivate()"_L1,
    "WARNING Qt AtSpiAdaptor: Accessible invalid"_L1, // a screen reader asked for a row that has gone meanwhile
};

// WORKAROUND: Qt 6.4 tells nobody but the console, and then ends the process: with exit() on X11, _exit() on Wayland.
constexpr std::array kLossesOfDisplay{
    "The X11 connection broke"_L1,
    "The Wayland connection broke"_L1,
    "The Wayland connection experienced a fatal error"_L1,
};

bool startsWithOneOf(const QString &message, std::span<const QLatin1StringView> beginnings)
{
    return std::any_of(beginnings.begin(), beginnings.end(),
                       [&message](QLatin1StringView beginning) { return message.startsWith(beginning); });
}

QtMessageHandler g_toolkitHandler = nullptr;
std::function<void()> g_displayLossHandler;

void performLastAct()
{
    if (const auto lastAct = std::exchange(g_displayLossHandler, nullptr))
        lastAct();
}

void handle(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type == QtFatalMsg && message.contains("no Qt platform plugin could be initialized"_L1)) {
        report(u"tessaline: Could not open a window: the display cannot be reached.\n"_s);
        _exit(1); // the toolkit would abort
    }
    if (type != QtFatalMsg && isNoise(message))
        return;
    if (isLossOfDisplay(message))
        performLastAct();
    g_toolkitHandler(type, context, message);
}

void write(std::FILE *file, const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), file);
    std::fflush(file);
}

} // namespace

void print(const QString &text)
{
    write(stdout, text);
}

void report(const QString &text)
{
    write(stderr, text);
}

bool isNoise(const QString &message)
{
    return startsWithOneOf(message, kNoise);
}

bool isLossOfDisplay(const QString &message)
{
    return startsWithOneOf(message, kLossesOfDisplay);
}

void setDisplayLossHandler(std::function<void()> lastAct)
{
    g_displayLossHandler = std::move(lastAct);
    // The library below the toolkit may notice first that the X server has gone. It calls exit() as well.
    [[maybe_unused]] static const bool isRegistered = std::atexit(performLastAct) == 0;
}

void filterToolkitMessages()
{
    g_toolkitHandler = qInstallMessageHandler(handle);
}

} // namespace Tessaline::Console
