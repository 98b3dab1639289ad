#include "panels/FormSection.h"

#include "foundation_ui/Fonts.h"
#include "foundation_ui/Hairline.h"
#include "foundation_ui/Label.h"

#include <QtGui/QPainter>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QVBoxLayout>

namespace Tessaline {

namespace {

constexpr double kCardRadius = 8;

} // namespace

FormSection::FormSection(const Theme &theme, QWidget *parent)
    : QWidget(parent), m_theme(theme), m_rows(new QVBoxLayout(this))
{
    m_rows->setContentsMargins(kSidePadding, 2, kSidePadding, 2);
    m_rows->setSpacing(0);
    connect(&theme, &Theme::changed, this, qOverload<>(&QWidget::update));
}

void FormSection::addRow(QWidget *row)
{
    if (m_rows->count() > 0)
        m_rows->addWidget(new Hairline(m_theme, Qt::Horizontal));
    auto *padded = new QVBoxLayout;
    padded->setContentsMargins(0, kRowPadding, 0, kRowPadding);
    padded->addWidget(row);
    m_rows->addLayout(padded);
}

void FormSection::addRow(const QString &label, QWidget *control)
{
    auto *row = new QWidget;
    auto *columns = new QHBoxLayout(row);
    columns->setContentsMargins(0, 0, 0, 0);
    columns->setSpacing(12);
    auto *words = new Label(m_theme, ColorRole::Text, Fonts::interface(Fonts::kInterfaceSize), label);
    words->setElideMode(Qt::ElideNone);
    words->setBuddy(control);
    columns->addWidget(words);
    columns->addStretch();
    columns->addWidget(control);
    addRow(row);
}

void FormSection::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(m_theme.color(ColorRole::BubbleBorder));
    painter.setBrush(m_theme.color(ColorRole::Control));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kCardRadius, kCardRadius);
}

} // namespace Tessaline
