#include "foundation/Preferences.h"

#include "foundation/ConsoleLine.h"
#include "foundation/FileAccess.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

void writeValues(const FileURL &file, const QJsonObject &values)
{
    QDir().mkpath(file.deletingLastPathComponent().path());
    const Result<void> written = writeBytesAtomically(file, QJsonDocument(values).toJson());
    if (!written)
        printConsoleLine(u"Failed to store the preferences in %1: %2"_s.arg(file.path(), written.failure().text));
}

} // namespace

Preferences::Preferences(FileURL file, QObject *parent) : QObject(parent), m_file(std::move(file))
{
    m_writer.setMaxThreadCount(1);
    const Result<QByteArray> bytes = readBytes(m_file);
    if (!bytes)
        return;
    const QJsonDocument document = QJsonDocument::fromJson(bytes.value());
    m_values = document.object();
    if (!document.isObject() && !bytes.value().trimmed().isEmpty()) {
        const QString kept = m_file.path() + u".damaged"_s;
        QFile::remove(kept);
        QFile::rename(m_file.path(), kept);
    }
}

Preferences::~Preferences()
{
    waitForWrites();
}

std::optional<QString> Preferences::string(const QString &key) const
{
    const QJsonValue value = m_values.value(key);
    return value.isString() ? std::optional(value.toString()) : std::nullopt;
}

std::optional<QStringList> Preferences::stringList(const QString &key) const
{
    const QJsonValue value = m_values.value(key);
    if (!value.isArray())
        return std::nullopt;
    QStringList strings;
    for (const QJsonValue &entry : value.toArray()) {
        if (!entry.isString())
            return std::nullopt;
        strings.append(entry.toString());
    }
    return strings;
}

std::optional<double> Preferences::number(const QString &key) const
{
    const QJsonValue value = m_values.value(key);
    return value.isDouble() ? std::optional(value.toDouble()) : std::nullopt;
}

void Preferences::set(const QString &key, const QString &value)
{
    setValue(key, value);
}

void Preferences::set(const QString &key, const QStringList &value)
{
    setValue(key, QJsonArray::fromStringList(value));
}

void Preferences::set(const QString &key, double value)
{
    setValue(key, value);
}

void Preferences::remove(const QString &key)
{
    setValue(key, QJsonValue(QJsonValue::Undefined));
}

void Preferences::setValue(const QString &key, const QJsonValue &value)
{
    if (m_values.value(key) == value)
        return;
    m_values.insert(key, value); // an undefined value removes the key
    scheduleWrite();
    Q_EMIT valueChanged(key);
}

void Preferences::scheduleWrite()
{
    // A write that has not begun is replaced: what it would have written is older.
    m_writer.clear();
    m_writer.start([file = m_file, values = m_values] { writeValues(file, values); });
}

void Preferences::waitForWrites()
{
    m_writer.waitForDone();
}

} // namespace Tessaline
