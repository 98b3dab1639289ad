#include "documents/FontSizeAdjuster.h"

#include "documents/AppPreferences.h"
#include "foundation_ui/Fonts.h"
#include "foundation_ui/IconButton.h"
#include "foundation_ui/Label.h"

#include <algorithm>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr double kSymbolSize = 16;
constexpr int kButtonWidth = 20;
constexpr int kButtonReach = 4; // the ground of a button reaches into the field, where there is no text

} // namespace

FontSizeAdjuster::FontSizeAdjuster(AppPreferences &preferences, const Theme &theme, QWidget *parent)
    : QWidget(parent), m_preferences(preferences),
      m_size(new Label(theme, ColorRole::Text, Fonts::interface(Fonts::kInterfaceSize), {}, this))
{
    auto *decrease = new IconButton(theme, u"minus"_s, u"Decrease Font Size (Cmd -)"_s, this);
    auto *increase = new IconButton(theme, u"plus"_s, u"Increase Font Size (Cmd +)"_s, this);
    connect(decrease, &QAbstractButton::clicked, this, [this] { m_preferences.decreaseFontSize(); });
    connect(increase, &QAbstractButton::clicked, this, [this] { m_preferences.increaseFontSize(); });
    connect(&preferences, &AppPreferences::editorFontSizeChanged, this, &FontSizeAdjuster::showSize);

    for (IconButton *button : {decrease, increase})
        button->setSymbolSize(kSymbolSize);
    constexpr int kHeight = IconButton::kSide;
    constexpr int kFieldStart = kButtonWidth - kButtonReach;
    m_size->setAlignment(Qt::AlignCenter);
    decrease->setGeometry(0, 0, kButtonWidth, kHeight);
    m_size->setGeometry(kFieldStart, 0, kFieldWidth, kHeight);
    increase->setGeometry(kFieldStart + kFieldWidth - kButtonReach, 0, kButtonWidth, kHeight);
    m_size->lower();
    setFixedSize(increase->geometry().right() + 1, kHeight);
    showSize();
}

void FontSizeAdjuster::showSize()
{
    // Truncated towards zero. A stored size may be any number, also one that no integer holds.
    constexpr double kLargestShown = 1e15;
    const double size = std::clamp(m_preferences.editorFontSize(), -kLargestShown, kLargestShown);
    m_size->setText(QString::number(static_cast<qint64>(size)));
}

} // namespace Tessaline
