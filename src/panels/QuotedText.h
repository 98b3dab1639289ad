#pragma once

#include "foundation_ui/Theme.h"

#include <QtCore/QHash>
#include <QtCore/QPointer>
#include <QtGui/QTextDocument>
#include <QtWidgets/QTextEdit>

namespace Tessaline {

class FocusRing;

/// A text that can be read, selected and copied, on a tint of its own colour or on none. As high as its lines, up to a
/// bound, behind which it scrolls. What is longer than a book chapter is shown up to a point, and a last line says how
/// much more there is: all of it is laid out at once, and a whole document can be asked about.
class QuotedText final : public QTextEdit
{
    Q_OBJECT
public:
    static constexpr qsizetype kMostShown = 100'000; // UTF-16 units
    enum class Tint { None, OwnColor };

    /// `theme` must outlive the text. `name` is for assistive technology.
    QuotedText(const Theme &theme, ColorRole role, Tint tint, const QString &name, const QString &text,
               QWidget *parent = nullptr);
    ~QuotedText() override;

    void setTextFont(const QFont &font); // the small face of the interface at first
    const QString &quotedText() const { return m_text; }
    void setQuotedText(const QString &text);
    void setPadding(int horizontal, int vertical); // 6 on all sides at first
    void setTintOpacity(double opacity);           // 0.08 at first
    void setLineSpacing(double points);            // more between two lines; none at first
    enum class Height { Bounded, OfText };
    void setHeight(Height height); // Bounded at first
    enum class FocusLook { Ring, OfHolder };
    void
    setFocusLook(FocusLook look); // how a focus by keyboard is seen; Ring at first, OfHolder leaves it to the parent
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    void takeColor();
    void showText();
    void updateBar();
    int textHeight(int width) const;

    const Theme &m_theme;
    ColorRole m_role;
    Tint m_tint;
    QString m_text;                    // as it was given: the documents spell some spaces in another way
    mutable QTextDocument m_measured;  // the same text, laid out to be measured: the shown one keeps the widget's width
    mutable QHash<int, int> m_heights; // by width; several are asked for in turn
    Height m_height = Height::Bounded;
    FocusLook m_focusLook = FocusLook::Ring;
    QPointer<FocusRing> m_ring; // once it was needed; the toolkit gives it to the window around, with which it may go
    int m_horizontalPadding = 6;
    int m_verticalPadding = 6;
    double m_tintOpacity = 0.08;
    double m_lineSpacing = 0;
};

} // namespace Tessaline
