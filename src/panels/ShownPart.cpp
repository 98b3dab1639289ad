#include "panels/ShownPart.h"

namespace Tessaline {

QString shownPart(const QString &text, qsizetype most)
{
    if (text.size() <= most)
        return text;
    const qsizetype end = most > 0 && text[most - 1].isHighSurrogate() ? most - 1 : most;
    return text.first(end) + QStringLiteral("\n… (%1 more characters)").arg(text.size() - end);
}

} // namespace Tessaline
