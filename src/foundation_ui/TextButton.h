#pragma once

#include "foundation_ui/PlainButton.h"

namespace Tessaline {

/// A button with a text: the prominent one of a view (the accent, once per view at most), a bordered one, one that
/// takes something away for good, or one that is only text until the pointer is over it.
class TextButton final : public PlainButton
{
    Q_OBJECT
public:
    enum class Kind { Prominent, Bordered, Destructive, Plain };
    static constexpr int kHeight = 28;

    TextButton(const Theme &theme, const QString &text, Kind kind, QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    Kind m_kind;
};

} // namespace Tessaline
