#pragma once

#include "documents/AppTheme.h"
#include "documents/ViewMode.h"

#include <QtCore/QObject>
#include <QtCore/QStringList>

namespace Tessaline {

class Preferences;

/// The keys of the stored preferences, all of them.
namespace PreferenceKeys {
inline const QString kAppTheme = QStringLiteral("appTheme");
inline const QString kEditorViewMode = QStringLiteral("editorViewModeV2");
inline const QString kEditorFontSize = QStringLiteral("editorFontSize");
inline const QString kAiModelSelection = QStringLiteral("aiModelSelection");
inline const QString kLastProjectFolderURLs = QStringLiteral("lastProjectFolderURLs");
inline const QString kLastOpenFileURLs = QStringLiteral("lastOpenFileURLs");
inline const QString kLastActiveFileURL = QStringLiteral("lastActiveFileURL");
inline const QString kLastRootFolderURL =
    QStringLiteral("lastRootFolderURL"); // read only: from before there were several projects
} // namespace PreferenceKeys

/// The editor's text size in points: the default, and the bounds and the step of the buttons and the menu. A stored
/// size outside the bounds stays until it is moved back, one step at a time.
namespace EditorFontSize {
inline constexpr double kDefault = 17.0;
inline constexpr double kMinimum = 10.0;
inline constexpr double kMaximum = 40.0;
inline constexpr double kStep = 1.0;
} // namespace EditorFontSize

/// The preferences of the view, typed, with their defaults. A write through any holder is seen by all others at once.
class AppPreferences final : public QObject
{
    Q_OBJECT
public:
    /// `store` must outlive this object.
    explicit AppPreferences(Preferences &store, QObject *parent = nullptr);

    AppTheme appTheme() const; // System if absent or unknown
    void setAppTheme(AppTheme theme);

    ViewMode viewMode() const; // Editor if absent or unknown
    void setViewMode(ViewMode mode);

    double editorFontSize() const;
    /// Adds or takes one step, unless the size is at or past the bound on that side.
    void increaseFontSize();
    void decreaseFontSize();

    QString aiModelSelection() const; // "automatic" if absent
    void setAiModelSelection(const QString &selection);

Q_SIGNALS:
    void appThemeChanged();
    void viewModeChanged();
    void editorFontSizeChanged();
    void aiModelSelectionChanged();

private:
    Preferences &m_store;
};

} // namespace Tessaline
