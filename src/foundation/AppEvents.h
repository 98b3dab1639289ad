#pragma once

#include <QtCore/QLatin1StringView>
#include <QtCore/QString>

/// The one list of the named events (see EventCenter) and of the keys they carry. File URLs travel as FileURL.
namespace Tessaline::AppEvents {

using EventName = QLatin1StringView;

inline constexpr EventName kCreateNewDocument{"CreateNewDocument"};   // run the new-document flow
inline constexpr EventName kZoomInFont{"ZoomInFont"};                 // raise the editor's text size by one
inline constexpr EventName kZoomOutFont{"ZoomOutFont"};               // lower it by one
inline constexpr EventName kDocumentSaveFailed{"DocumentSaveFailed"}; // kUrl, kMessage: the text stays pending
inline constexpr EventName kFileDidUpdateExternally{"FileDidUpdateExternally"}; // kUrl: reload it if it is active
inline constexpr EventName kProjectFilesChanged{"ProjectFilesChanged"};         // rescan all projects
inline constexpr EventName kInsertMarkdownFormat{"InsertMarkdownFormat"};       // kType: apply this format command
/// With a selection kText, kSourceText, kRect (QRectF) and kIsRendered (bool); nothing if the selection is empty.
inline constexpr EventName kEditorTextSelectionChanged{"EditorTextSelectionChanged"};
inline constexpr EventName kClearEditorTextSelection{"ClearEditorTextSelection"};     // drop the selection
inline constexpr EventName kAddContextConceptTriggered{"AddContextConceptTriggered"}; // kConcept: expand into a context

inline const QString kUrl = QStringLiteral("url");
inline const QString kMessage = QStringLiteral("message");
inline const QString kType = QStringLiteral("type");
inline const QString kText = QStringLiteral("text");
inline const QString kSourceText = QStringLiteral("sourceText");
inline const QString kRect = QStringLiteral("rect");
inline const QString kIsRendered = QStringLiteral("isRendered");
inline const QString kConcept = QStringLiteral("concept");

} // namespace Tessaline::AppEvents
