#pragma once

#include "documents/AppPreferences.h"
#include "documents/DocumentStore.h"
#include "documents/EditorArea.h"
#include "documents/Workspace.h"
#include "foundation/AppEvents.h"
#include "foundation/EventCenter.h"
#include "foundation/Preferences.h"
#include "Services/LocalAIService.h"
#include "tests/support/Printers.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TemporaryFiles.h"
#include "tests/support/Waiting.h"

#include <gtest/gtest.h>

#include <iostream>
#include <memory>

namespace Tessaline {

/// A child that runs until it is terminated; what answers in its name is the scripted server.
class IdleChild final : public ChildProcess
{
public:
    bool isRunning() const override { return m_isRunning; }
    void terminate() override { m_isRunning = false; }
    void waitUntilExit() override { m_isRunning = false; }
    int terminationStatus() const override { return 0; }
    void setTerminationHandler(std::function<void()>) override {}

private:
    bool m_isRunning = true;
};

/// Documents on the real disk, an editor area, and the assistant's service, whose server does what a script says once
/// `serve` was called.
class PanelsFixture : public ::testing::Test
{
protected:
    PanelsFixture()
    {
        ::testing::internal::CaptureStdout();
        m_workspace.setActiveFileURL(m_document);
        makeService(WireOptions());
    }

    ~PanelsFixture() override
    {
        const std::string printed = m_isConsoleRead ? std::string() : ::testing::internal::GetCapturedStdout();
        if (HasFailure())
            std::cout << printed; // the failures are among it
    }

    /// Starts the server and waits until the service says that it runs.
    void serve(const QByteArray &script)
    {
        m_server = std::make_unique<ScriptedServer>(script);
        WireOptions options;
        options.address.port = m_server->port();
        makeService(options);
        m_ai->startServer();
        ASSERT_TRUE(eventually([this] { return m_ai->isServerRunning(); }));
    }

    /// The text of the document in the editor area, as if it had been opened.
    void open()
    {
        m_area.appear();
        m_area.loadFile(m_document, EditorArea::LoadPolicy::Force);
        ASSERT_TRUE(eventually([this] { return m_area.hasText(m_document); }));
    }

    /// What an editor does when the person types.
    void type(const QString &inserted)
    {
        ChunkedText text = m_area.text(m_document);
        const TextChange change = text.replace(text.size(), 0, inserted);
        m_area.setText(m_document, text, change, nullptr);
    }

    QByteArray onDisk() const { return m_files.read(QStringLiteral("a.md")); }

    QString console()
    {
        m_isConsoleRead = true;
        return QString::fromStdString(::testing::internal::GetCapturedStdout());
    }

    /// The body of the n-th request to the path.
    QByteArray body(const QByteArray &path, qsizetype index = 0) const
    {
        return bodyOf(m_server->requests(path).value(index));
    }

    const TemporaryFiles m_files{{QStringLiteral("a.md"), "One. Two. Three."}, {QStringLiteral("program"), ""}};
    const FileURL m_document = m_files.url(QStringLiteral("a.md"));
    DiskAccess m_disk;
    EventCenter m_events;
    Preferences m_stored{m_files.url(QStringLiteral("preferences.json"))};
    AppPreferences m_preferences{m_stored};
    Workspace m_workspace{m_stored};
    DocumentStore m_documents{m_events, m_disk, std::chrono::hours(1)}; // saved when it is asked for
    EditorArea m_area{EditorAreaServices{m_workspace, m_preferences, m_documents, m_events, m_disk,
                                         [](const FileURL &) { return std::nullopt; }}};
    std::unique_ptr<ScriptedServer> m_server;
    std::unique_ptr<LocalAIService> m_ai;

private:
    void makeService(const WireOptions &wire)
    {
        m_ai.reset();
        ServerSupervisorParts server{.preferences = m_stored,
                                     .checkHealth = {},
                                     .cancelRequests = {},
                                     .dataFolder = m_files.url(QStringLiteral("data")),
                                     .candidates = {m_files.url(QStringLiteral("program"))},
                                     .environment = {}};
        server.launch = [](const ChildCommand &) -> Result<std::shared_ptr<ChildProcess>> {
            return std::shared_ptr<ChildProcess>(std::make_shared<IdleChild>());
        };
        m_ai = std::make_unique<LocalAIService>(
            LocalAIServiceParts{.server = std::move(server), .documents = m_documents, .wire = wire});
    }

    bool m_isConsoleRead = false;
};

} // namespace Tessaline
