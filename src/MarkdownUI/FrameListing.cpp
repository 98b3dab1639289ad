#include "MarkdownUI/FrameListing.h"

#include <algorithm>

namespace MarkdownUI {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype kShownText = 40; // units of a leaf's text

QString nameOf(const LeafContent &content)
{
    if (const TextLeaf *const text = std::get_if<TextLeaf>(&content)) {
        if (text->headingLevel > 0)
            return u"heading%1"_s.arg(text->headingLevel);
        return text->isHtml ? u"html"_s : u"paragraph"_s;
    }
    if (std::holds_alternative<CodeLeaf>(content))
        return u"code"_s;
    if (const TableRowLeaf *const row = std::get_if<TableRowLeaf>(&content))
        return row->row == 0 ? u"header"_s : u"row"_s;
    if (std::holds_alternative<PictureLeaf>(content))
        return u"picture"_s;
    return std::holds_alternative<RuleLeaf>(content) ? u"rule"_s : u"empty"_s;
}

QString placeOf(const QRectF &rect)
{
    return u"%1,%2 %3x%4"_s.arg(rect.x()).arg(rect.y()).arg(rect.width()).arg(rect.height());
}

} // namespace

QString frameListing(MarkdownDisplay &display)
{
    display.layOutAll();
    QString listing = u"display 0,0 %1x%2\n"_s.arg(display.width()).arg(display.height());
    for (qsizetype leaf = 0; leaf < display.leafCount(); ++leaf) {
        const QRectF rect = display.leafRect(leaf);
        std::vector<MarkdownDisplay::ShownContainer> shown = display.shownContainersOf(leaf);
        std::reverse(shown.begin(), shown.end()); // the outermost first
        for (const MarkdownDisplay::ShownContainer &container : shown) {
            if (container.firstLeaf != leaf)
                continue;
            if (const ItemPlace *const item = std::get_if<ItemPlace>(&container.container->kind)) {
                const QRectF marker(container.left, rect.y(), item->marker.width, 0);
                listing.append(u"marker %1 %2\n"_s.arg(placeOf(marker), item->marker.plainText()));
            } else {
                const QuoteBar &bar = std::get<QuoteBar>(container.container->kind);
                const double height = display.leafRect(container.lastLeaf).bottom() - rect.y();
                listing.append(u"bar %1\n"_s.arg(
                    placeOf({static_cast<double>(container.left), rect.y(), static_cast<double>(bar.width), height})));
            }
        }
        const QString text = display.leafText(leaf).simplified();
        listing.append(
            u"%1 %2 %3"_s.arg(nameOf(display.leaf(leaf).content), placeOf(rect), text.left(kShownText)).trimmed());
        listing.append(u'\n');
    }
    return listing;
}

} // namespace MarkdownUI
