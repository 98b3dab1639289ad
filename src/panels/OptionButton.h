#pragma once

#include "foundation_ui/PlainButton.h"

namespace Tessaline {

/// A way to go on in a popover: a symbol and a text over the whole width.
class OptionButton final : public PlainButton
{
    Q_OBJECT
public:
    OptionButton(const Theme &theme, const QString &symbol, const QString &text, QWidget *parent = nullptr);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_symbol;
};

/// One reading of a topic that has several: a card with its title and what it is.
class ConceptOption final : public PlainButton
{
    Q_OBJECT
public:
    ConceptOption(const Theme &theme, const QString &title, const QString &subtitle, QWidget *parent = nullptr);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_title;
    QString m_subtitle;
};

} // namespace Tessaline
