#pragma once

#include "foundation_ui/PlainButton.h"

namespace Tessaline {

class ProgressIndicator;

/// A tool of the assistant at the end of the format toolbar: a symbol, or a turning ring while it works, and its name.
class AIToolbarButton final : public PlainButton
{
    Q_OBJECT
public:
    static constexpr int kHeight = 22;

    /// `icon` is the name of a symbol.
    AIToolbarButton(const Theme &theme, const QString &icon, const QString &label, QWidget *parent = nullptr);

    void setLoading(bool isLoading);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_icon;
    ProgressIndicator *m_progress;
};

} // namespace Tessaline
