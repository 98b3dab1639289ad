#include "MarkdownUI/TableColumns.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace MarkdownUI {

namespace {

constexpr double kSlack = 1.01;         // a cell whose guess was a little too small must not wrap for it
constexpr double kLongestWordKept = 15; // em; longer words may be broken
constexpr double kShortKept = 4;        // em; shorter cells stay in one row

struct Widths {
    double natural = 0;
    double narrowest = 0;
};

Widths measured(const StyledText &styled)
{
    QTextLayout layout(textForLayout(styled), styled.font);
    layout.setFormats(styled.formats);
    QTextOption option;
    option.setWrapMode(QTextOption::WordWrap);
    layout.setTextOption(option);
    layout.beginLayout();
    for (QTextLine row = layout.createLine(); row.isValid(); row = layout.createLine())
        row.setLineWidth(1e6);
    layout.endLayout();
    return {layout.maximumWidth(), layout.minimumWidth()};
}

} // namespace

TableColumns::TableColumns(TableLook look, QList<LaidOutText::Alignment> alignments)
    : m_look(std::move(look)), m_columns(static_cast<size_t>(alignments.size())), m_demands(m_columns.size())
{
    for (size_t i = 0; i < m_columns.size(); ++i)
        m_columns[i].alignment = alignments.at(static_cast<qsizetype>(i));
}

void TableColumns::take(qsizetype index, QStringView text, const TextEstimate &estimate,
                        const std::function<StyledText()> &styled)
{
    if (index >= count())
        return;
    Demand &demand = m_demands[static_cast<size_t>(index)];
    const Widths guess{estimate.width(text), estimate.longestWord(text)};
    if (guess.natural <= demand.guessedNatural && guess.narrowest <= demand.guessedNarrowest)
        return;
    demand.guessedNatural = std::max(demand.guessedNatural, guess.natural);
    demand.guessedNarrowest = std::max(demand.guessedNarrowest, guess.narrowest);
    const StyledText cell = styled();
    const Widths exact = measured(cell);
    const double longest = kLongestWordKept * cell.font.pixelSize();
    const double kept = std::max(exact.narrowest, std::min(exact.natural, kShortKept * cell.font.pixelSize()));
    demand.natural = std::max(demand.natural, std::ceil(exact.natural * kSlack) + 1);
    demand.narrowest = std::max(demand.narrowest, std::min(std::ceil(kept) + 1, longest));
}

bool TableColumns::fit(int width)
{
    // 1. How much room there is for text, and how much is asked for.
    const auto columns = static_cast<int>(count());
    const int frame = (columns + 1) * m_look.borderWidth + 2 * columns * m_look.horizontalPadding;
    const double room = width - frame;
    double natural = 0;
    double narrowest = 0;
    for (const Demand &demand : m_demands) {
        natural += demand.natural;
        narrowest += demand.narrowest;
    }

    // 2. Columns give up what they can spare, each in proportion to what it has.
    double share = 0; // of what lies between the narrowest and the natural width
    if (natural <= room)
        share = 1;
    else if (narrowest < room)
        share = (room - narrowest) / (natural - narrowest);

    // 3. From left to right.
    bool isChanged = m_viewWidth != width;
    m_viewWidth = width;
    m_isRoomy = share == 1;
    int x = m_look.borderWidth;
    for (size_t i = 0; i < m_columns.size(); ++i) {
        Column &column = m_columns[i];
        const Demand &demand = m_demands[i];
        const int content =
            std::max(1, static_cast<int>(demand.narrowest + share * (demand.natural - demand.narrowest)));
        const int contentX = x + m_look.horizontalPadding;
        isChanged = isChanged || column.x != contentX || column.width != content;
        column.x = contentX;
        column.width = content;
        x = contentX + content + m_look.horizontalPadding + m_look.borderWidth;
    }
    m_width = x;
    setSideways(m_sideways);
    return isChanged;
}

double TableColumns::sidewaysRange() const
{
    return std::max(0, m_width - m_viewWidth);
}

void TableColumns::setSideways(double points)
{
    m_sideways = std::clamp(points, 0.0, sidewaysRange());
}

} // namespace MarkdownUI
