#include "editing/SourceFormat.h"

#include <array>

namespace Tessaline {

namespace {

/// A command that puts its marks around the selection. With nothing selected the caret goes between the marks.
struct Wrapping {
    const char16_t *type;
    const char16_t *before;
    const char16_t *after;
};

constexpr std::array kWrappings{
    Wrapping{u"bold", u"**", u"**"},     Wrapping{u"italic", u"*", u"*"},
    Wrapping{u"codeInline", u"`", u"`"}, Wrapping{u"codeBlock", u"```\n", u"\n```"},
    Wrapping{u"link", u"[", u"](url)"},  Wrapping{u"image", u"![", u"](url)"},
};

struct Prefix {
    const char16_t *type;
    const char16_t *prefix;
};

constexpr std::array kPrefixes{
    Prefix{u"h1", u"# "},     Prefix{u"h2", u"## "},       Prefix{u"h3", u"### "},     Prefix{u"quote", u"> "},
    Prefix{u"bullet", u"- "}, Prefix{u"numbered", u"1. "}, Prefix{u"task", u"- [ ] "},
};

/// A command that puts a fixed text in place of the selection.
struct Template {
    const char16_t *type;
    const char16_t *text;
};

constexpr std::array kTemplates{
    Template{u"hr", u"---"},
    Template{u"table", u"| Header 1 | Header 2 |\n| --- | --- |\n| Cell 1 | Cell 2 |"},
};

} // namespace

std::optional<SourceFormat> sourceFormat(const QString &type, const QString &selection)
{
    for (const Wrapping &wrapping : kWrappings) {
        if (type != QStringView(wrapping.type))
            continue;
        const QString before = QString::fromUtf16(wrapping.before);
        const QString replacement = before + selection + QString::fromUtf16(wrapping.after);
        return SourceFormat{replacement, selection.isEmpty() ? before.size() : replacement.size()};
    }
    for (const Prefix &prefix : kPrefixes) {
        if (type != QStringView(prefix.type))
            continue;
        const QString replacement = QString::fromUtf16(prefix.prefix) + selection;
        return SourceFormat{replacement, replacement.size()};
    }
    for (const Template &fixed : kTemplates) {
        if (type != QStringView(fixed.type))
            continue;
        const QString replacement = QString::fromUtf16(fixed.text);
        return SourceFormat{replacement, replacement.size()};
    }
    return std::nullopt;
}

} // namespace Tessaline
