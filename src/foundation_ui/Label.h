#pragma once

#include "foundation_ui/Theme.h"

#include <QtWidgets/QLabel>

namespace Tessaline {

/// A plain text in the colour of a role, without markup. On one line it gives way when there is no room and ends in
/// "…"; with word wrap it is as high as its lines.
class Label final : public QLabel
{
    Q_OBJECT
public:
    /// `theme` must outlive the label.
    Label(const Theme &theme, ColorRole role, const QFont &font, const QString &text = QString(),
          QWidget *parent = nullptr);

    void setElideMode(Qt::TextElideMode mode); // ElideRight at first
    void setColorRole(ColorRole role);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return wordWrap(); }
    int heightForWidth(int width) const override;

    /// `text` with its line breaks shown as spaces, for what is drawn on one line: the name of a file may hold any
    /// character.
    static QString singleLine(QString text);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const Theme &m_theme;
    ColorRole m_role;
    Qt::TextElideMode m_elideMode = Qt::ElideRight;
};

} // namespace Tessaline
