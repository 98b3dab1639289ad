#include "documents/ViewMode.h"

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

struct Description {
    ViewMode mode;
    QString rawValue;
    QString symbol;
    QString label;
    QString helpText;
};

const Description &description(ViewMode mode)
{
    static const Description table[] = {
        {ViewMode::Editor, u"editor"_s, u"doc.richtext"_s, u"Editor"_s,
         u"Edit the document directly without Markdown syntax"_s},
        {ViewMode::RawMarkdown, u"rawMarkdown"_s, u"chevron.left.forwardslash.chevron.right"_s, u"Markdown"_s,
         u"Edit the Markdown source"_s},
        {ViewMode::Split, u"split"_s, u"rectangle.split.2x1"_s, u"Split"_s,
         u"Show source and formatted editor side by side"_s},
        {ViewMode::PlainText, u"plainText"_s, u"doc.plaintext"_s, u"Plain Text"_s, u"Edit the plain-text document"_s},
    };
    return table[static_cast<int>(mode)];
}

} // namespace

QString rawValue(ViewMode mode)
{
    return description(mode).rawValue;
}

std::optional<ViewMode> viewModeFromRaw(const QString &text)
{
    for (const ViewMode mode : {ViewMode::Editor, ViewMode::RawMarkdown, ViewMode::Split, ViewMode::PlainText})
        if (rawValue(mode) == text)
            return mode;
    return std::nullopt;
}

QString symbol(ViewMode mode)
{
    return description(mode).symbol;
}

QString label(ViewMode mode)
{
    return description(mode).label;
}

QString helpText(ViewMode mode)
{
    return description(mode).helpText;
}

QList<ViewMode> availableViewModes(std::optional<DocumentType> type)
{
    if (type == DocumentType::Markdown)
        return {ViewMode::Editor, ViewMode::RawMarkdown, ViewMode::Split};
    return {ViewMode::PlainText};
}

ViewMode effectiveViewMode(ViewMode stored, const QList<ViewMode> &available)
{
    return available.contains(stored) ? stored : available.constFirst();
}

} // namespace Tessaline
