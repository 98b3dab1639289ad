#include "shell/WindowButtons.h"

#include "shell/FramelessWindow.h"

#include <QtGui/QPainter>
#include <QtWidgets/QHBoxLayout>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

enum class Sign { Minimize, Maximize, Restore, Close };

/// Draws its sign of plain lines, one device pixel off no edge: these three are smaller than the symbols' grid allows.
class WindowButton final : public PlainButton
{
public:
    WindowButton(const Theme &theme, Sign sign, const QString &help, QWidget *parent) : PlainButton(theme, parent)
    {
        setFixedSize(WindowButtons::kSide, WindowButtons::kSide);
        setSign(sign, help);
    }

    void setSign(Sign sign, const QString &help)
    {
        m_sign = sign;
        setHelp(help);
        update();
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(stateTone());
        painter.drawRoundedRect(rect(), cornerRadius(), cornerRadius());

        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(theme().color(ColorRole::SecondaryText), 1, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
        // Lines of one pixel lie on the middles of pixels.
        const QPointF centre(WindowButtons::kSide / 2 - 0.5, WindowButtons::kSide / 2 - 0.5);
        switch (m_sign) {
        case Sign::Minimize:
            painter.drawLine(centre + QPointF(-3.5, 0), centre + QPointF(3.5, 0));
            break;
        case Sign::Maximize:
            painter.drawRect(QRectF(centre + QPointF(-5, -5), QSizeF(10, 10)));
            break;
        case Sign::Restore:
            painter.drawRect(QRectF(centre + QPointF(-5, -3), QSizeF(8, 8)));
            painter.drawPolyline(QPolygonF{centre + QPointF(-3, -5), centre + QPointF(5, -5), centre + QPointF(5, 3)});
            break;
        case Sign::Close:
            painter.drawLine(centre + QPointF(-4, -4), centre + QPointF(4, 4));
            painter.drawLine(centre + QPointF(-4, 4), centre + QPointF(4, -4));
            break;
        }
    }

private:
    Sign m_sign = Sign::Close;
};

} // namespace

WindowButtons::WindowButtons(const Theme &theme, FramelessWindow &window, QWidget *parent) : QWidget(parent)
{
    auto *minimize = new WindowButton(theme, Sign::Minimize, tr("Minimize"), this);
    auto *maximize = new WindowButton(theme, Sign::Maximize, tr("Maximize"), this);
    auto *close = new WindowButton(theme, Sign::Close, tr("Close"), this);

    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(kGap);
    for (WindowButton *button : {minimize, maximize, close})
        row->addWidget(button);

    connect(minimize, &QAbstractButton::clicked, &window, &QWidget::showMinimized);
    connect(maximize, &QAbstractButton::clicked, &window, &FramelessWindow::toggleMaximized);
    connect(close, &QAbstractButton::clicked, &window, &QWidget::close);
    connect(&window, &FramelessWindow::maximizedChanged, maximize, [maximize](bool isMaximized) {
        maximize->setSign(isMaximized ? Sign::Restore : Sign::Maximize, isMaximized ? tr("Restore") : tr("Maximize"));
    });
}

} // namespace Tessaline
