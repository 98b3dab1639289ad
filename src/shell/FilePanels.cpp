#include "shell/FilePanels.h"

#include <QtCore/QDir>
#include <QtWidgets/QAbstractItemView>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QLineEdit>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr QSize kPanelSize{860, 540}; // of the toolkit's own panel; its usual size cuts the names

/// A kind of file that a new document can be, and the extension of a name that is given without one.
struct FileKind {
    QString filter;
    QString extension;
};

QList<FileKind> fileKinds()
{
    return {{u"Markdown (*.md *.markdown)"_s, u"md"_s},
            {u"Plain text (*.txt *.text)"_s, u"txt"_s},
            {u"All files (*)"_s, QString()}};
}

/// The toolkit's panel, in which a path that was typed is what counts.
class Panel final : public QFileDialog
{
public:
    using QFileDialog::QFileDialog;

protected:
    void accept() override
    {
        // WORKAROUND: Qt 6.4 selects in its list whatever the typed path names on the way, and may lose track of it
        // when such a folder changes meanwhile. What stays selected is taken before what was typed, and a folder cannot
        // be saved to: the panel then does nothing at all. The desktop's own panel has neither of these.
        const auto *field = findChild<QLineEdit *>(u"fileNameEdit"_s);
        auto *list = findChild<QAbstractItemView *>(u"listView"_s);
        if (field && list && field->text().contains(u'/'))
            list->clearSelection();
        QFileDialog::accept();
    }
};

} // namespace

std::optional<FileURL> FilePanels::askForNewDocument(const FileURL &folder)
{
    Panel panel(m_window, QFileDialog::tr("New Document"));
    panel.setAcceptMode(QFileDialog::AcceptSave);
    panel.setFileMode(QFileDialog::AnyFile);
    const QList<FileKind> kinds = fileKinds();
    QStringList filters;
    for (const FileKind &kind : kinds)
        filters.append(kind.filter);
    panel.setNameFilters(filters);
    panel.setDefaultSuffix(kinds.constFirst().extension);
    QObject::connect(&panel, &QFileDialog::filterSelected, &panel, [&panel, kinds](const QString &filter) {
        for (const FileKind &kind : kinds)
            if (kind.filter == filter)
                panel.setDefaultSuffix(kind.extension);
    });
    return run(panel, folder.isEmpty() ? m_lastFolder : folder, u"Untitled.md"_s);
}

std::optional<FileURL> FilePanels::askForProjectFolder()
{
    Panel panel(m_window, QFileDialog::tr("Add Project Folder"));
    panel.setAcceptMode(QFileDialog::AcceptOpen);
    panel.setFileMode(QFileDialog::Directory);
    panel.setOption(QFileDialog::ShowDirsOnly);
    return run(panel, m_lastFolder, QString());
}

QList<FileURL> FilePanels::askForFiles()
{
    Panel panel(m_window, QFileDialog::tr("Attach Reference File"));
    panel.setAcceptMode(QFileDialog::AcceptOpen);
    panel.setFileMode(QFileDialog::ExistingFiles);
    QList<FileURL> files;
    if (run(panel, m_lastFolder, QString()))
        for (const QString &path : panel.selectedFiles())
            files.append(FileURL(path));
    return files;
}

std::optional<FileURL> FilePanels::run(QFileDialog &panel, const FileURL &folder, const QString &name)
{
    panel.setDirectory(folder.isEmpty() ? QDir::homePath() : folder.path());
    panel.selectFile(name);
    panel.resize(kPanelSize);
    if (panel.exec() != QDialog::Accepted || panel.selectedFiles().isEmpty())
        return std::nullopt;
    m_lastFolder = FileURL(panel.directory().absolutePath());
    return FileURL(panel.selectedFiles().first());
}

} // namespace Tessaline
