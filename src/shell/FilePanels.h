#pragma once

#include "foundation/FileURL.h"

#include <QtCore/QPointer>
#include <QtWidgets/QWidget>

#include <optional>

class QFileDialog;

namespace Tessaline {

/// The dialogs for files and folders, the desktop's own where it has some. Both run until the person has answered;
/// absent if the person gave up. Main thread only.
class FilePanels
{
public:
    /// The window that the dialogs belong to.
    void setWindow(QWidget *window) { m_window = window; }

    /// Asks where a new document is to be, beginning in `folder` (empty for the last one used) with the name
    /// "Untitled.md". A name without an extension gets that of the kind that is chosen beside it, Markdown at first.
    std::optional<FileURL> askForNewDocument(const FileURL &folder);
    /// Asks for one folder.
    std::optional<FileURL> askForProjectFolder();
    /// Asks for files of any kind; empty if the person gave up.
    QList<FileURL> askForFiles();

private:
    std::optional<FileURL> run(QFileDialog &panel, const FileURL &folder, const QString &name);

    QPointer<QWidget> m_window;
    FileURL m_lastFolder; // that a panel ended in; empty for the person's home
};

} // namespace Tessaline
