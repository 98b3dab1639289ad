#include "panels/AISettingsView.h"

#include "foundation_ui/Fonts.h"
#include "foundation_ui/Label.h"
#include "foundation_ui/SymbolView.h"
#include "foundation_ui/TextButton.h"
#include "panels/FormSection.h"
#include "Services/AISettings.h"

#include <QtWidgets/QComboBox>
#include <QtWidgets/QHBoxLayout>
#include <QtWidgets/QVBoxLayout>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr int kPadding = 8;
constexpr int kDetailSpacing = 5;
constexpr int kDetailInset = 4;
constexpr double kCalloutSize = 12;

} // namespace

AISettingsView::AISettingsView(const Theme &theme, AISettings &settings, QWidget *parent)
    : QWidget(parent), m_theme(theme), m_settings(settings)
{
    setFixedWidth(kSize.width());
    setMinimumHeight(kSize.height());
    const auto label = [&theme](ColorRole role, const QFont &font, const QString &text) {
        return new Label(theme, role, font, text);
    };
    const QFont plain = Fonts::interface(Fonts::kInterfaceSize);

    // 1. The model.
    m_picker = new QComboBox;
    m_picker->setAccessibleName(tr("Model"));  // on Linux its label names it, and its name is what is picked
    m_picker->setFocusPolicy(Qt::StrongFocus); // the wheel scrolls past it
    for (const AISettings::Choice &choice : settings.choices())
        m_picker->addItem(choice.title, choice.value);
    connect(m_picker, &QComboBox::activated, this,
            [this](int index) { m_settings.select(m_picker->itemData(index).toString()); });
    m_apply = new TextButton(theme, tr("Apply and Restart Local AI"), TextButton::Kind::Bordered);
    connect(m_apply, &QAbstractButton::clicked, &settings, &AISettings::apply);

    auto *model = new FormSection(theme);
    model->addRow(tr("Model"), m_picker);
    model->addRow(makeDetail());
    model->addRow(tr("This Computer"), label(ColorRole::SecondaryText, plain, settings.memory()));
    model->addRow(tr("Downloaded weights"), label(ColorRole::SecondaryText, plain, tr("Stored outside the app")));
    auto *button = new QWidget;
    auto *buttonRow = new QHBoxLayout(button);
    buttonRow->setContentsMargins(0, 0, 0, 0);
    buttonRow->addWidget(m_apply);
    buttonRow->addStretch();
    model->addRow(button);

    // 2. The note.
    auto *note = label(ColorRole::SecondaryText, Fonts::interface(Fonts::kCaptionSize),
                       tr("Only approved models are available here. Model weights download on demand to "
                          "~/.cache/tessaline-local-ai and are not included in the application bundle."));
    note->setWordWrap(true);
    auto *about = new FormSection(theme);
    about->addRow(note);

    auto *sections = new QVBoxLayout(this);
    sections->setContentsMargins(kPadding, kPadding, kPadding, kPadding);
    sections->setSpacing(kPadding);
    sections->addWidget(
        label(ColorRole::Heading, Fonts::interface(Fonts::kInterfaceSize, QFont::DemiBold), tr("Local AI Model")));
    sections->addWidget(model);
    sections->addWidget(about);
    sections->addStretch();

    connect(&settings, &AISettings::selectionChanged, this, &AISettingsView::showSelection);
    const auto showApply = [this] { m_apply->setEnabled(m_settings.canApply()); };
    connect(&settings, &AISettings::canApplyChanged, this, showApply);
    showSelection();
    showApply();
}

QWidget *AISettingsView::makeDetail()
{
    auto *detail = new QWidget;
    auto *lines = new QVBoxLayout(detail);
    lines->setContentsMargins(kDetailInset, kDetailInset, kDetailInset, kDetailInset);
    lines->setSpacing(kDetailSpacing);
    const auto line = [&](ColorRole role, const QFont &font) {
        auto *label = new Label(m_theme, role, font);
        lines->addWidget(label);
        return label;
    };
    m_name = line(ColorRole::Heading, Fonts::interface(Fonts::kInterfaceSize, QFont::DemiBold));
    m_size = line(ColorRole::SecondaryText, Fonts::interface(Fonts::kCaptionSize));
    m_summary = line(ColorRole::Text, Fonts::interface(kCalloutSize));
    m_summary->setWordWrap(true);

    m_warning = new QWidget;
    auto *warning = new QHBoxLayout(m_warning);
    warning->setContentsMargins(0, 0, 0, 0);
    warning->setSpacing(kDetailSpacing);
    auto *symbol = new SymbolView(m_theme, ColorRole::AccentText, Fonts::kCaptionSize + 2);
    symbol->setSymbol(u"exclamationmark.triangle.fill"_s);
    m_warningText = new Label(m_theme, ColorRole::Text, Fonts::interface(Fonts::kCaptionSize));
    warning->addWidget(symbol);
    warning->addWidget(m_warningText, 1);
    lines->addWidget(m_warning);
    return detail;
}

void AISettingsView::showSelection()
{
    m_picker->setCurrentIndex(static_cast<int>(m_settings.selectedChoice()));
    const AISettings::Detail detail = m_settings.detail();
    m_name->setText(detail.displayName);
    m_size->setText(detail.size);
    m_summary->setText(detail.summary);
    m_warningText->setText(detail.warning);
    m_warning->setVisible(!detail.warning.isEmpty());
}

} // namespace Tessaline
