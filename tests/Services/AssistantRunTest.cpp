#include "tests/Services/RunningAssistant.h"
#include "tests/support/Waiting.h"

#include <QtCore/QFile>
#include <QtCore/QRegularExpression>

#include <gtest/gtest.h>

#include <csignal>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

const QString kData = QStringLiteral(ASSISTANT_RUN_DATA);

QString read(const QString &path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return QString::fromUtf8(file.readAll());
}

/// The text with what differs from run to run replaced: `folder`, moments, and identifiers by the order in which they
/// come up.
QString settled(QString text, const FileURL &folder)
{
    static const QRegularExpression kTime(uR"(\[\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\])"_s);
    static const QRegularExpression kSeconds(uR"("\d{10}\.\d+")"_s);
    static const QRegularExpression kIdentifier(u"[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}"_s);
    text.replace(QString(folder.path()).replace(u'/', u"\\/"_s), u"FOLDER"_s);
    text.replace(kTime, u"[TIME]"_s).replace(kSeconds, u"\"SECONDS\""_s);
    for (int number = 1;; ++number) {
        const QRegularExpressionMatch match = kIdentifier.match(text);
        if (!match.hasMatch())
            return text;
        text.replace(match.captured(), u"ID %1"_s.arg(number));
    }
}

/// Compares with the file of this name among the kept expectations.
void expectKept(const QString &name, const QString &text)
{
    EXPECT_EQ(text.toStdString(), read(kData + u'/' + name).toStdString()) << "in " << name.toStdString();
}

/// The requests that a person's doings led to, each with its path and its body.
QString requestsIn(const ScriptedServerFolder &server)
{
    QString text;
    for (const QByteArray &request : server.requests())
        if (const QByteArray path = request.split(' ').value(1); path != "/health")
            text += QString::fromUtf8(path + '\n' + bodyOf(request) + "\n\n");
    return text;
}

} // namespace

/// A day at the desk: the server comes up, one answer is stopped and another finished, the document is switched, the
/// application ends.
TEST(AssistantRun, LeavesTheSessionsTheLogAndTheRequestsThatAreKept)
{
    const TemporaryFiles documents{{u"a.md"_s, "# Night\n\nThe night was cold.\n\n- [ ] end\n"},
                                   {u"b.md"_s, "Ophelia’s song"}};
    const FileURL a = documents.url(u"a.md"_s);
    const FileURL b = documents.url(u"b.md"_s);
    DiskAccess disk;
    ::testing::internal::CaptureStdout();
    RunningAssistant assistant(read(kData + u"/script.json"_s).toUtf8(), disk);
    LocalAIService &service = assistant.service();
    const auto answer = [&service] { return service.chatMessages().constLast().content; };

    // 1. The server comes up.
    service.startServer();
    ASSERT_TRUE(eventually([&] { return service.isServerRunning(); }, 60s)) << service.serverStatus().toStdString();
    service.switchActiveFile(a);
    ASSERT_TRUE(eventually([&] { return service.suggestedContexts().contains(u"Elsinore"_s); }, 60s));

    // 2. An answer is stopped.
    service.setAttachedContexts({{u"Hamlet"_s, u"Play"_s, u"A prince of Denmark"_s, std::nullopt},
                                 {u"notes.md"_s, std::nullopt, u"- cold\n- dark"_s, u"Notes on the weather"_s},
                                 {u"Elsinore"_s, u"Concept"_s, u"Reference card for Elsinore"_s, std::nullopt}});
    service.saveSession(a);
    const QList<ContextItem> excerpts{{u"acts/one.md"_s, u"Project · Play"_s, u"Who’s there?"_s, std::nullopt},
                                      {u"README.md"_s, u"Project · Play"_s, QString(), std::nullopt}};
    const QString text = read(a.path());
    const auto stopped = service.sendMessage(u"Shorten the beginning."_s, text, service.attachedContexts(), excerpts);
    ASSERT_TRUE(eventually([&] { return answer() == u"Here is a shorter beginning: “Elsinore"; }, 60s));
    EXPECT_EQ(service.contextStatus(), u"Using document + 5 sources · ~1.2K tokens"_s);
    service.cancelGeneration();
    ASSERT_TRUE(eventually([&] { return stopped.isReady(); }, 60s));
    EXPECT_EQ(service.contextStatus(), u"Generation stopped"_s);

    // 3. Another is finished.
    const auto finished = service.sendMessage(u"Go on."_s, text, service.attachedContexts(), {});
    ASSERT_TRUE(eventually([&] { return finished.isReady(); }, 60s));
    EXPECT_TRUE(answer().endsWith(u">>>>>>> REPLACE"));

    // 4. Another document.
    service.switchActiveFile(b);
    ASSERT_TRUE(eventually([&] { return service.suggestedContexts() == QStringList{u"Ophelia"_s}; }, 60s));
    EXPECT_TRUE(service.chatMessages().isEmpty());

    // 5. The end, when all that the server wrote has been read.
    ASSERT_TRUE(eventually([&] { return assistant.files().read(u"data/server.log"_s).contains("listening"); }, 60s));
    service.saveSession(*service.activeFileURL());
    service.stopServer();
    const std::string console = ::testing::internal::GetCapturedStdout();

    const auto session = [&](const FileURL &document, const QString &name) {
        return settled(read(service.sessionDirectory(document)->appending(name).path()), documents.folder());
    };
    for (const QString &name : {u"chat_history.json"_s, u"contexts.json"_s, u"metadata.json"_s}) {
        expectKept(u"a/"_s + name, session(a, name));
        expectKept(u"b/"_s + name, session(b, name));
    }
    expectKept(u"server.log"_s, settled(read(assistant.files().url(u"data/server.log"_s).path()), documents.folder()));
    expectKept(u"requests.txt"_s, requestsIn(assistant.server()));
    EXPECT_TRUE(console.ends_with("Stopping Local AI Server subprocess...\nLocal AI Server stopped.\n")) << console;
    EXPECT_NE(kill(static_cast<pid_t>(assistant.server().processId()), 0), 0);
    EXPECT_TRUE(isFree(assistant.port()));
}

} // namespace Tessaline
