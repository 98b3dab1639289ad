#pragma once

#include "foundation_ui/PlainButton.h"
#include "panels/ChatInputState.h"

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
    ChatInputState m_state;
    ProgressIndicator *m_progress;
};

} // namespace Tessaline
