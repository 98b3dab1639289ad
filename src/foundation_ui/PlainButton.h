#pragma once

#include "foundation_ui/Theme.h"

#include <QtCore/QPointer>
#include <QtGui/QAccessible>
#include <QtWidgets/QAbstractButton>

namespace Tessaline {

class FocusRing;

/// What all buttons of the application share: hover and press, the focus ring, repainting with the theme, and how they
/// are told to assistive technology. A click by mouse leaves the focus where it is; the keyboard reaches every button.
class PlainButton : public QAbstractButton
{
    Q_OBJECT
public:
    /// `theme` must outlive the button.
    explicit PlainButton(const Theme &theme, QWidget *parent = nullptr);
    ~PlainButton() override;

    /// The tool tip, which is also the name of a button without a text of its own.
    void setHelp(const QString &help);

    // As told to assistive technology
    virtual QAccessible::Role accessibleRole() const;
    virtual QString accessibleValue() const { return QString(); } // "Selected" for a selected segment, for example
    virtual bool isShownSelected() const { return false; }        // for roles that can be selected

protected:
    const Theme &theme() const { return m_theme; }
    bool isHovered() const { return isEnabled() && underMouse(); }
    /// The tone of hover or press over the control's own ground; transparent at rest.
    QColor stateTone() const;
    void setCornerRadius(double radius); // of the focus ring and of the ground, 6 at first
    double cornerRadius() const { return m_cornerRadius; }
    /// For buttons that touch others: no ring around it, the button draws one inside while this is true.
    void setDrawsOwnRing(bool drawsOwnRing) { m_drawsOwnRing = drawsOwnRing; }
    bool needsOwnRing() const { return m_drawsOwnRing && m_hasKeyboardFocus; }

    bool event(QEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override; // Return and Enter press it, as Space does

private:
    void showRing();

    const Theme &m_theme;
    QPointer<FocusRing> m_ring; // made at the first keyboard focus; lives among the parents' children
    double m_cornerRadius = 6;
    bool m_drawsOwnRing = false;
    bool m_hasKeyboardFocus = false; // the focus came by a key
};

} // namespace Tessaline
