#pragma once

#include "foundation/FileURL.h"

#include <QtCore/QUrl>
#include <QtWidgets/QWidget>

#include <functional>

namespace NetworkImage {
class NetworkImageLoader;
}

namespace Tessaline {

class ChatComposer;
class ChatSection;
class EditorArea;
class EventCenter;
class LocalAIService;
class SessionContext;
class SessionContextView;
class SuggestionActions;
class Theme;
class Workspace;

struct SessionViewParts {
    LocalAIService &ai;
    ChatComposer &composer;
    SuggestionActions &suggestions;
    SessionContext &context;
    Workspace &workspace; // for the active file, whose session is shown
    EditorArea &area;     // for the active project
    EventCenter &events;
    const Theme &theme;
    std::function<QList<FileURL>()> askForFiles;             // to attach; modally
    std::function<void(const QUrl &)> openOutside;           // a link, with the programs of the desktop
    NetworkImage::NetworkImageLoader *imageLoader = nullptr; // of the pictures in answers; null: none are loaded
    QWidget *trailing = nullptr;                             // at the end of the title row; taken over
    int titleRowHeight = 44;
};

/// The column of the assistant: what is attached to the session, over the chat. It follows the active file.
class SessionView final : public QWidget
{
    Q_OBJECT
public:
    static constexpr int kLeastWidth = 320;
    static constexpr int kLeastContextHeight = 180;
    static constexpr int kContextHeight = 280;
    static constexpr int kMostContextHeight = 450;

    /// All parts outlive the view.
    explicit SessionView(SessionViewParts parts, QWidget *parent = nullptr);

    SessionContextView &context() { return *m_context; }
    ChatSection &chat() { return *m_chat; }

    /// Opens a link of an answer: ours inside, all others outside, with care.
    void openLink(const QUrl &url);

protected:
    void showEvent(QShowEvent *event) override;
    bool focusNextPrevChild(bool next) override;

private:
    void followActiveFile();

    SessionViewParts m_parts;
    SessionContextView *m_context;
    ChatSection *m_chat;
    bool m_hasAppeared = false;
};

} // namespace Tessaline
