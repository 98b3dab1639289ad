#include "editing/PartedSigns.h"

namespace Tessaline {

namespace {

bool isSign(QChar unit)
{
    return unit.unicode() > u' ' && unit.unicode() < 0x7f && !unit.isLetterOrNumber();
}

} // namespace

QList<QTextLayout::FormatRange> formatsThatPartSigns(QStringView text, const QTextCharFormat &format)
{
    QList<QTextLayout::FormatRange> formats;
    for (qsizetype i = 1; i < text.size(); ++i) {
        if (!isSign(text[i]) || !isSign(text[i - 1]))
            continue;
        QTextLayout::FormatRange apart;
        apart.start = static_cast<int>(i);
        apart.length = 1;
        apart.format = format;
        apart.format.setProperty(QTextFormat::UserProperty, true);
        formats.append(apart);
        ++i; // the next one has a border on its left already
    }
    return formats;
}

} // namespace Tessaline
