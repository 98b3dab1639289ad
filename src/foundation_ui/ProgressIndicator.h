#pragma once

#include <QtCore/QBasicTimer>
#include <QtWidgets/QWidget>

namespace Tessaline {

class Theme;

/// A small turning ring for work of unknown length. It has a timer only while it is on screen, and stands still where
/// the style asks for no motion.
class ProgressIndicator final : public QWidget
{
    Q_OBJECT
public:
    static constexpr int kSide = 16;

    explicit ProgressIndicator(const Theme &theme, QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

private:
    const Theme &m_theme;
    QBasicTimer m_timer;
    int m_step = 0;
};

} // namespace Tessaline
