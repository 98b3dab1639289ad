// Shows how Markdown is displayed: every construct, or a file, in a window, as a picture, or as a list of frames.

#include "gallery/SampleImages.h"

#include "foundation/FileAccess.h"
#include "foundation_ui/Theme.h"
#include "MarkdownUI/DisplayPainting.h"
#include "MarkdownUI/FrameListing.h"
#include "MarkdownUI/MarkdownView.h"
#include "MarkdownUI/TextFonts.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QFile>
#include <QtGui/QPainter>
#include <QtWidgets/QApplication>

#include <cstdio>
#include <optional>

namespace {

using namespace Qt::StringLiterals;

constexpr int kInset = 24; // around the text in a picture
constexpr int kDefaultWidth = 720;
constexpr int kHighestPicture = 30000;

void printError(const QString &text)
{
    std::fputs(qPrintable(text + u'\n'), stderr);
}

std::optional<QString> readSource(const QStringList &arguments)
{
    if (arguments.isEmpty()) {
        QFile sample(u":/gallery/constructs.md"_s);
        return sample.open(QIODevice::ReadOnly) ? std::optional(QString::fromUtf8(sample.readAll())) : std::nullopt;
    }
    const Tessaline::Result<Tessaline::ChunkedText> text = Tessaline::readText(Tessaline::FileURL(arguments.first()));
    if (!text) {
        printError(text.failure().text);
        return std::nullopt;
    }
    return text.value().toString();
}

/// As an answer stands in a bubble: the book face, without a ground of its own.
MarkdownUI::DisplayEnvironment bubbleEnvironment()
{
    MarkdownUI::DisplayEnvironment environment;
    environment.theme = MarkdownUI::embeddedTheme();
    MarkdownUI::FontProperties font;
    font.family = MarkdownUI::FontProperties::Design::Serif;
    environment.attributes.fontProperties = font;
    environment.attributes.foregroundColor = MarkdownUI::dynamicColor(Tessaline::ColorRole::Text);
    return environment;
}

bool savePicture(MarkdownUI::MarkdownDisplay &display, const Tessaline::Theme &theme, const QString &path)
{
    display.layOutAll();
    const QSize size(display.width() + 2 * kInset, std::min(display.height() + 2 * kInset, kHighestPicture));
    QImage picture(size, QImage::Format_ARGB32_Premultiplied);
    const std::optional<MarkdownUI::DynamicColor> ground = display.environment().textAttributes().backgroundColor;
    picture.fill(ground ? MarkdownUI::colorOf(*ground, display.environment().scheme)
                        : theme.color(Tessaline::ColorRole::RightColumn));
    QPainter painter(&picture);
    MarkdownUI::DisplayPaint paint;
    paint.selectionColor = theme.color(Tessaline::ColorRole::TextSelection);
    MarkdownUI::paintDisplay(painter, display, {kInset, kInset}, QRectF({0, 0}, size), paint);
    painter.end();
    return picture.save(path);
}

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QApplication::setApplicationName(u"tessaline-gallery"_s);

    QCommandLineParser parser;
    parser.setApplicationDescription(u"Shows how Markdown is displayed."_s);
    parser.addHelpOption();
    parser.addPositionalArgument(u"file"_s, u"A Markdown file; every construct without one."_s, u"[file]"_s);
    const QCommandLineOption dark(u"dark"_s, u"In the dark appearance."_s);
    const QCommandLineOption bubble(u"bubble"_s, u"As in a bubble of the chat."_s);
    const QCommandLineOption width(u"width"_s, u"The width of the text."_s, u"points"_s,
                                   QString::number(kDefaultWidth));
    const QCommandLineOption picture(u"picture"_s, u"Saves a picture instead of showing a window."_s, u"file"_s);
    const QCommandLineOption frames(u"frames"_s, u"Prints where everything stands instead of showing a window."_s);
    parser.addOptions({dark, bubble, width, picture, frames});
    parser.process(application);

    const std::optional<QString> source = readSource(parser.positionalArguments());
    if (!source)
        return 1;
    Tessaline::Theme theme;
    theme.setAppearance(parser.isSet(dark) ? Tessaline::Appearance::Dark : Tessaline::Appearance::Light);
    Gallery::SampleImages images;
    MarkdownUI::DisplayEnvironment environment =
        parser.isSet(bubble) ? bubbleEnvironment() : MarkdownUI::DisplayEnvironment();
    environment.imageLoader = &images;

    MarkdownUI::MarkdownView view(theme);
    view.setWindowTitle(u"Markdown"_s);
    view.setInset(kInset);
    view.resize(parser.value(width).toInt() + 2 * kInset, 900);
    view.setEnvironment(environment);
    view.setMarkdown(*source);
    MarkdownUI::MarkdownDisplay &display = view.display();
    display.setWidth(parser.value(width).toInt());
    if (!parser.isSet(picture) && !parser.isSet(frames)) {
        view.show();
        return QApplication::exec();
    }

    // Images that are asked for when blocks are laid out come with the next events.
    display.layOutAll();
    QApplication::processEvents();
    if (parser.isSet(frames))
        std::fputs(MarkdownUI::frameListing(display).toUtf8().constData(), stdout);
    if (parser.isSet(picture) && !savePicture(display, theme, parser.value(picture))) {
        printError(u"Could not save “%1”."_s.arg(parser.value(picture)));
        return 1;
    }
    return 0;
}
