#pragma once

#include "foundation_ui/PlainButton.h"

namespace Tessaline {

/// A low button on a card: the one that takes what is proposed, one of the others, or one without a ground.
class SmallButton final : public PlainButton
{
    Q_OBJECT
public:
    enum class Kind {
        Accept,
        Reject, // on a card in the conversation
        Plain,
        Strong, // the plain one with the colour of text
        Bare,
    };

    /// `symbol` stands before the text; empty for none. `textSize` in device-independent pixels.
    SmallButton(const Theme &theme, const QString &text, Kind kind, double textSize, const QString &symbol = QString(),
                QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    int sidePadding() const;
    int symbolRoom() const;

    Kind m_kind;
    QString m_symbol;
};

} // namespace Tessaline
