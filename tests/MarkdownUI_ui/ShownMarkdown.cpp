#include "tests/MarkdownUI_ui/ShownMarkdown.h"

#include <QtCore/QFile>
#include <QtCore/QRegularExpression>
#include <QtWidgets/QApplication>

#include <utility>

namespace MarkdownUI {

using namespace Qt::StringLiterals;

ShownMarkdown::ShownMarkdown(const QString &markdown, int width, DisplayEnvironment environment)
{
    environment.imageLoader = &images;
    display.setEnvironment(std::move(environment));
    display.setWidth(width);
    display.setMarkdown(markdown);
    display.layOutAll();
    QApplication::processEvents(); // images come with the next events
    display.layOutAll();
}

QStringList ShownMarkdown::lines(const QString &kind)
{
    QStringList lines;
    for (const QString &line : frameListing(display).split(u'\n'))
        if (line.startsWith(kind + u' '))
            lines.append(line);
    return lines;
}

QList<QRectF> ShownMarkdown::rects(const QString &kind)
{
    QList<QRectF> rects;
    for (const QString &line : lines(kind))
        rects.append(rectIn(line));
    return rects;
}

QRectF rectIn(const QString &line)
{
    static const QRegularExpression kRect(u"^\\w+ (-?[\\d.]+),(-?[\\d.]+) ([\\d.]+)x([\\d.]+)"_s);
    const QRegularExpressionMatch match = kRect.match(line);
    return {match.captured(1).toDouble(), match.captured(2).toDouble(), match.captured(3).toDouble(),
            match.captured(4).toDouble()};
}

QString everyConstruct()
{
    QFile file(QStringLiteral(TESSALINE_GALLERY_SAMPLE));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

} // namespace MarkdownUI
