#include "Services/ContextStats.h"

#include <QtCore/QByteArray>
#include <QtCore/QtNumeric>

#include <charconv>
#include <limits>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

QString tokenCount(qint64 tokens)
{
    constexpr qint64 kThousand = 1000;
    if (tokens < kThousand)
        return QString::number(tokens);
    // NOTE: QString::number rounds a tie up (1250 → 1.3), this to the even digit (1.2), as "%.1f" does.
    char digits[32];
    const auto end =
        std::to_chars(std::begin(digits), std::end(digits),
                      static_cast<double>(tokens) / static_cast<double>(kThousand), std::chars_format::fixed, 1);
    return QString::fromLatin1(digits, end.ptr - digits) + u'K';
}

} // namespace

QString statusLine(const ContextStats &stats)
{
    qint64 sources = 0;
    if (qAddOverflow(stats.attachedContextCount, stats.workspaceContextCount, &sources))
        sources = std::numeric_limits<qint64>::max();
    const QString document = stats.activeDocumentChars > 0 ? u"document"_s : u"no document"_s;
    return u"Using %1 + %2 sources · ~%3 tokens"_s.arg(document, QString::number(sources),
                                                       tokenCount(stats.estimatedInputTokens));
}

} // namespace Tessaline
