#pragma once

#include "documents/EditorAreaView.h"

#include <QtWidgets/QWidget>

namespace Tessaline {

/// The editor or the two editors of one file in one mode, and the wires between them and the text of the file.
class EditorHost final : public QWidget
{
    Q_OBJECT
public:
    static constexpr int kMinimumPaneWidth = 200; // of each of two editors side by side

    /// The parts must outlive the host; there must be a text for `url`.
    EditorHost(const FileURL &url, ViewMode mode, const EditorAreaViewParts &parts, QWidget *parent);
    ~EditorHost() override;

    /// The name of an editor: the path and a suffix for the mode. A change of it makes a new editor.
    static QString identity(const FileURL &url, ViewMode mode, EditorKind kind);
    bool isFor(const FileURL &url, ViewMode mode) const { return m_url == url && m_mode == mode; }

    const QList<DocumentEditor *> &editors() const { return m_editors; }
    /// The one that has or last had the focus, else the first.
    DocumentEditor *current() const { return m_current; }

Q_SIGNALS:
    void currentChanged();

private:
    DocumentEditor *makePane(EditorKind kind, QWidget *parent);
    void noteFocus(QWidget *now);

    FileURL m_url;
    ViewMode m_mode;
    const EditorAreaViewParts &m_parts;
    QList<DocumentEditor *> m_editors;
    DocumentEditor *m_current = nullptr;
    QMetaObject::Connection m_focusConnection;
};

} // namespace Tessaline
