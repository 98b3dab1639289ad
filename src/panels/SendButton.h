#pragma once

#include "foundation_ui/PlainButton.h"
#include "panels/ChatInputState.h"

class QVariantAnimation;

namespace Tessaline {

class ProgressIndicator;

/// Sends what is typed, or stops what is being answered.
class SendButton final : public PlainButton
{
    Q_OBJECT
public:
    static constexpr int kSide = 22;

    explicit SendButton(const Theme &theme, QWidget *parent = nullptr);

    void setState(const ChatInputState &state);

    QSize sizeHint() const override { return {kSide, kSide}; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void startTransition();

    ChatInputState m_state;
    ProgressIndicator *m_progress;
    QVariantAnimation *m_transition; // from one picture to the next, which springs up
};

} // namespace Tessaline
