#include "documents/AppPreferences.h"

#include "foundation/Preferences.h"

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

} // namespace

AppPreferences::AppPreferences(Preferences &store, QObject *parent) : QObject(parent), m_store(store)
{
    connect(&m_store, &Preferences::valueChanged, this, [this](const QString &key) {
        if (key == PreferenceKeys::kAppTheme)
            Q_EMIT appThemeChanged();
        else if (key == PreferenceKeys::kEditorViewMode)
            Q_EMIT viewModeChanged();
        else if (key == PreferenceKeys::kEditorFontSize)
            Q_EMIT editorFontSizeChanged();
        else if (key == PreferenceKeys::kAiModelSelection)
            Q_EMIT aiModelSelectionChanged();
    });
}

AppTheme AppPreferences::appTheme() const
{
    return appThemeFromRaw(m_store.string(PreferenceKeys::kAppTheme).value_or(QString())).value_or(AppTheme::System);
}

void AppPreferences::setAppTheme(AppTheme theme)
{
    m_store.set(PreferenceKeys::kAppTheme, rawValue(theme));
}

ViewMode AppPreferences::viewMode() const
{
    return viewModeFromRaw(m_store.string(PreferenceKeys::kEditorViewMode).value_or(QString()))
        .value_or(ViewMode::Editor);
}

void AppPreferences::setViewMode(ViewMode mode)
{
    m_store.set(PreferenceKeys::kEditorViewMode, rawValue(mode));
}

double AppPreferences::editorFontSize() const
{
    return m_store.number(PreferenceKeys::kEditorFontSize).value_or(EditorFontSize::kDefault);
}

void AppPreferences::increaseFontSize()
{
    const double size = editorFontSize();
    if (size < EditorFontSize::kMaximum)
        m_store.set(PreferenceKeys::kEditorFontSize, size + EditorFontSize::kStep);
}

void AppPreferences::decreaseFontSize()
{
    const double size = editorFontSize();
    if (size > EditorFontSize::kMinimum)
        m_store.set(PreferenceKeys::kEditorFontSize, size - EditorFontSize::kStep);
}

QString AppPreferences::aiModelSelection() const
{
    return m_store.string(PreferenceKeys::kAiModelSelection).value_or(u"automatic"_s);
}

void AppPreferences::setAiModelSelection(const QString &selection)
{
    m_store.set(PreferenceKeys::kAiModelSelection, selection);
}

} // namespace Tessaline
