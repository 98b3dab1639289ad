#pragma once

#include <QtCore/QObject>
#include <QtGui/QColor>

namespace Tessaline {

/// What is drawn, as opposed to what colour it has.
enum class ColorRole {
    EditorBackground,
    SidebarBackground,
    RightColumn,
    Text,
    Heading,
    SecondaryText,
    TertiaryText, // placeholders too
    Hairline,
    Control, // controls, cards
    Field,
    Hover,
    Pressed,
    Accent,     // fills and marks
    OnAccent,   // text on a fill of the accent
    AccentText, // the accent as text
    SelectedSegment,
    SelectedSegmentText,
    SegmentShadow, // under the selected segment
    SelectedRow,   // lies on the background of its column
    TextSelection,
    InlineCode,
    InlineCodeBackground,
    Link,
    Bubble,
    BubbleBorder,
    RemovedText,
    AddedText,
    Accept,
    AcceptText,
    FocusRing,
};

enum class Appearance { Light, Dark };

/// The one table of colours.
QColor color(ColorRole role, Appearance appearance);

/// The appearance in force, which views follow live. Views read colours when they paint and repaint on `changed`.
class Theme final : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    Appearance appearance() const { return m_appearance; }
    bool isDark() const { return m_appearance == Appearance::Dark; }
    QColor color(ColorRole role) const { return Tessaline::color(role, m_appearance); }

    void setAppearance(Appearance appearance);

Q_SIGNALS:
    void changed();

private:
    Appearance m_appearance = Appearance::Light;
};

} // namespace Tessaline
