#pragma once

#include "foundation_ui/Theme.h"

#include <QtWidgets/QWidget>

namespace Tessaline {

/// Who says it: a round initial and a name in a capsule.
class ChatSenderPill final : public QWidget
{
    Q_OBJECT
public:
    enum class Sender { User, Assistant };
    static constexpr int kHeight = 24;

    /// `theme` must outlive the pill.
    ChatSenderPill(const Theme &theme, Sender sender, QWidget *parent = nullptr);

    QString label() const;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const Theme &m_theme;
    Sender m_sender;
};

} // namespace Tessaline
