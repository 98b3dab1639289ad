#pragma once

#include "foundation/FileURL.h"
#include "foundation_ui/Ground.h"

#include <QtCore/QUrl>

#include <functional>

namespace NetworkImage {
class NetworkImageLoader;
}

namespace Tessaline {

class EditorArea;
class EventCenter;
class FramelessWindow;
class SessionView;
class Workspace;
struct AssistantPanels;

struct SessionColumnParts {
    AssistantPanels &assistant;
    Workspace &workspace;
    EditorArea &area;
    EventCenter &events;
    const Theme &theme;
    FramelessWindow &window;                                 // that the title row's buttons act on
    std::function<QList<FileURL>()> askForFiles;             // to attach
    std::function<void(const QUrl &)> openOutside;           // a link
    NetworkImage::NetworkImageLoader *imageLoader = nullptr; // of the pictures in answers; null: none are loaded
};

/// The right column, the place of the assistant, with the window's buttons in its title row.
class SessionColumn final : public Ground
{
    Q_OBJECT
public:
    /// All parts must outlive the column.
    explicit SessionColumn(const SessionColumnParts &parts, QWidget *parent = nullptr);

    SessionView &session() { return *m_session; }

private:
    SessionView *m_session;
};

} // namespace Tessaline
