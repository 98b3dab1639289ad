#include "tests/support/ScriptedServer.h"

#include "tests/support/Waiting.h"

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

const QString kProgram = QStringLiteral(SCRIPTED_SERVER);

QString recordName(qsizetype request, QStringView kind)
{
    return u"record/%1.%2"_s.arg(request + 1, 4, 10, QChar(u'0')).arg(kind);
}

} // namespace

ScriptedServerFolder::ScriptedServerFolder(const QByteArray &script, Port port)
{
    QJsonParseError error;
    QJsonObject object = QJsonDocument::fromJson(script, &error).object();
    EXPECT_EQ(error.error, QJsonParseError::NoError) << error.errorString().toStdString() << " in " << script.data();
    if (port == Port::Free)
        object.insert(u"port"_s, 0);
    object.insert(u"portFile"_s, m_files.url(u"port"_s).path());
    object.insert(u"record"_s, m_files.url(u"record"_s).path());
    m_files.write(u"script.json"_s, QJsonDocument(object).toJson());
    EXPECT_TRUE(QFile::link(kProgram, executable().path()));
}

Environment ScriptedServerFolder::environment() const
{
    Environment environment = ownEnvironment();
    environment.insert("SCRIPTED_SERVER_SCRIPT", m_files.url(u"script.json"_s).path().toUtf8());
    return environment;
}

std::optional<quint16> ScriptedServerFolder::port() const
{
    const QByteArray text = m_files.read(u"port"_s);
    return text.isEmpty() ? std::nullopt : std::optional(text.toUShort());
}

QJsonObject ScriptedServerFolder::process() const
{
    return QJsonDocument::fromJson(m_files.read(u"record/process.json"_s)).object();
}

qint64 ScriptedServerFolder::processId() const
{
    return process().value(u"pid"_s).toInteger();
}

QList<QByteArray> ScriptedServerFolder::requests() const
{
    QList<QByteArray> requests;
    while (m_files.exists(recordName(requests.size(), u"request")))
        requests.append(m_files.read(recordName(requests.size(), u"request")));
    return requests;
}

QList<QByteArray> ScriptedServerFolder::requests(const QByteArray &path) const
{
    QList<QByteArray> found = requests();
    found.removeIf([&path](const QByteArray &request) { return request.split(' ').value(1) != path; });
    return found;
}

bool ScriptedServerFolder::isClosedByClient(qsizetype request) const
{
    return m_files.exists(recordName(request, u"closed"));
}

bool ScriptedServerFolder::isAnswered(qsizetype request) const
{
    return m_files.exists(recordName(request, u"done"));
}

ScriptedServer::ScriptedServer(const QByteArray &script) : ScriptedServerFolder(script)
{
    // NOTE: not by QProcess. Its child shares this process's memory for a moment without the knowledge of the thread
    // sanitizer, which then takes this process for the child and ends it at its next thread.
    const auto printOutput = [](const QByteArray &bytes) {
        std::fwrite(bytes.constData(), 1, static_cast<size_t>(bytes.size()), stderr);
    };
    if (auto launched = launchChildProcess({executable(), environment(), printOutput}))
        m_process = std::move(launched).value();
    EXPECT_TRUE(eventually([this] { return ScriptedServerFolder::port().has_value(); }, std::chrono::seconds(60)))
        << "the scripted server does not listen";
    m_port = ScriptedServerFolder::port().value_or(quint16(0));
}

ScriptedServer::~ScriptedServer()
{
    kill();
}

void ScriptedServer::kill()
{
    if (!m_process)
        return;
    if (const qint64 process = processId(); process > 0 && m_process->isRunning())
        ::kill(static_cast<pid_t>(process), SIGKILL);
    else
        m_process->terminate(); // it has not come far enough to say its number, nor to ignore this
    m_process->waitUntilExit();
}

QByteArray bodyOf(const QByteArray &request)
{
    return request.sliced(request.indexOf("\r\n\r\n") + 4);
}

} // namespace Tessaline
