#pragma once

#include <QtCore/QStringView>
#include <QtGui/QFont>

#include <array>

namespace MarkdownUI {

/// Guesses sizes of text from the widths of single letters, a hundred times as fast as laying it out. Right to about
/// one in a hundred for Latin text; wide signs count as one em.
class TextEstimate
{
public:
    explicit TextEstimate(const QFont &font);

    double width(QStringView text) const; // in one row
    double longestWord(QStringView text) const;
    int rowHeight() const { return m_rowHeight; }
    static int rowHeightOf(const QFont &font); // the same without the rest
    /// The height of text of `length` units wrapped to a width.
    int height(qsizetype length, int width, int lineSpacing) const;

private:
    double advance(QChar character) const;

    std::array<double, 128> m_advances;
    double m_em = 0;
    double m_average = 0; // of running text
    int m_rowHeight = 0;
};

} // namespace MarkdownUI
