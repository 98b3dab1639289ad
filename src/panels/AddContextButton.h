#pragma once

#include "foundation_ui/PlainButton.h"

namespace Tessaline {

/// Opens the ways to add something to the session: a plus on a ground of the accent.
class AddContextButton final : public PlainButton
{
    Q_OBJECT
public:
    static constexpr int kSide = 24;

    explicit AddContextButton(const Theme &theme, QWidget *parent = nullptr);

    QSize sizeHint() const override { return {kSide, kSide}; }

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace Tessaline
