#pragma once

#include "documents/ProjectReference.h"
#include "foundation/FileURL.h"

#include <QtWidgets/QWidget>

#include <functional>
#include <optional>

class QLineEdit;

namespace Tessaline {

class ChatComposer;
class Label;
class LocalAIService;
class ProgressIndicator;
class SendButton;
class SymbolView;
class Theme;

/// What a question is about, at the moment in which it is sent.
struct ChatSubject {
    std::optional<FileURL> document;
    std::optional<ProjectReference> project;
};

/// The row under the conversation: the field, its button, and what they say of the server.
class ChatInput final : public QWidget
{
    Q_OBJECT
public:
    /// The parts outlive the input.
    ChatInput(LocalAIService &ai, ChatComposer &composer, const Theme &theme, std::function<ChatSubject()> subject,
              QWidget *parent = nullptr);

    QWidget *field() const;

private:
    void update();
    void updateStatus();
    void send();
    void takeFocusFrom(const QWidget &button);
    QWidget *makeRow();
    QWidget *makeRetryRow();
    QWidget *makeClearRow();

    LocalAIService &m_ai;
    ChatComposer &m_composer;
    const Theme &m_theme;
    std::function<ChatSubject()> m_subject;
    QLineEdit *m_field;
    SymbolView *m_icon;
    ProgressIndicator *m_progress;
    SendButton *m_send;
    Label *m_status;
    QWidget *m_retryRow;
    QWidget *m_clear;
};

} // namespace Tessaline
