#include "documents/StatusView.h"

#include "foundation_ui/Fonts.h"
#include "foundation_ui/Label.h"
#include "foundation_ui/ProgressIndicator.h"
#include "foundation_ui/SymbolView.h"

#include <QtWidgets/QVBoxLayout>

namespace Tessaline {

namespace {

constexpr int kMargin = 24;
constexpr double kTitleSize = 15;

} // namespace

StatusView::StatusView(const Theme &theme, QWidget *parent) : Ground(theme, ColorRole::EditorBackground, parent)
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
}

void StatusView::setStatus(const Status &status)
{
    if (m_content && m_status == status)
        return;
    m_status = status;
    if (m_content) {
        m_content->hide();
        m_content->deleteLater(); // its button may be the one that was clicked
    }
    m_content = new QWidget(this);
    auto *column = new QVBoxLayout(m_content);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(status.spacing);
    column->addStretch();
    const auto addText = [&](const QString &text, ColorRole role, const QFont &font) {
        auto *label = new Label(theme(), role, font, text, m_content);
        label->setWordWrap(true);
        label->setAlignment(Qt::AlignHCenter);
        label->setMaximumWidth(kTextWidth);
        label->setTextInteractionFlags(Qt::NoTextInteraction);
        column->addWidget(label, 0, Qt::AlignHCenter);
    };

    if (!status.symbol.isEmpty()) {
        auto *symbol = new SymbolView(theme(), ColorRole::SecondaryText, kSymbolSize, m_content);
        symbol->setSymbol(status.symbol);
        column->addWidget(symbol, 0, Qt::AlignHCenter);
    }
    if (status.isBusy)
        column->addWidget(new ProgressIndicator(theme(), m_content), 0, Qt::AlignHCenter);
    if (!status.title.isEmpty())
        addText(status.title, ColorRole::Heading, Fonts::interface(kTitleSize, QFont::DemiBold));
    if (!status.text.isEmpty())
        addText(status.text, ColorRole::SecondaryText, Fonts::interface(Fonts::kInterfaceSize));
    if (!status.button.isEmpty()) {
        auto *button = new TextButton(theme(), status.button, status.buttonKind, m_content);
        connect(button, &QAbstractButton::clicked, this, &StatusView::buttonClicked);
        column->addWidget(button, 0, Qt::AlignHCenter);
    }
    column->addStretch();
    layout()->addWidget(m_content);
    m_content->show();
}

} // namespace Tessaline
