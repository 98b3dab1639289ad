#pragma once

#include "foundation/FileURL.h"

#include <QtCore/QJsonObject>
#include <QtCore/QObject>
#include <QtCore/QStringList>
#include <QtCore/QThreadPool>

#include <optional>

namespace Tessaline {

/// The user's stored preferences: one JSON object in a file, read once when this is made, and written atomically after
/// each change by a thread of its own (changes made while a write is running are written together, newest last).
///
/// A value of a wrong type counts as absent. An empty list is a value. Keys that this program does not know stay in the
/// file. A file that is no JSON object counts as empty and is set aside with ".damaged" after its name. Main thread
/// only.
class Preferences final : public QObject
{
    Q_OBJECT
public:
    /// The folder is made when the first change is written.
    explicit Preferences(FileURL file, QObject *parent = nullptr);
    ~Preferences() override; // waits for the last write

    std::optional<QString> string(const QString &key) const;
    std::optional<QStringList> stringList(const QString &key) const; // absent if any entry is not a string
    std::optional<double> number(const QString &key) const;

    void set(const QString &key, const QString &value);
    void set(const QString &key, const QStringList &value);
    void set(const QString &key, double value);
    void remove(const QString &key);

    /// Returns once everything set so far is on the disk, or failed. The one place that waits; for the end of the
    /// process.
    void waitForWrites();

Q_SIGNALS:
    /// After the new value can be read, and only if it differs from the old one.
    void valueChanged(const QString &key);

private:
    void setValue(const QString &key, const QJsonValue &value);
    void scheduleWrite();

    FileURL m_file;
    QJsonObject m_values;
    QThreadPool m_writer; // one thread: writes never overtake each other
};

} // namespace Tessaline
