#pragma once

#include "MarkdownUI/DisplayEnvironment.h"

#include "NetworkImage/NetworkImageState.h"

#include <QtCore/QHash>
#include <QtCore/QObject>

#include <functional>

namespace NetworkImage {
class NetworkImageModel;
}

namespace MarkdownUI {

/// The pictures of one display, each asked for once, when the block that shows it is laid out for the first time.
class PictureStore final : public QObject
{
    Q_OBJECT
public:
    /// What the pictures of a display may take in memory: one of the largest that are decoded, or hundreds of the
    /// usual.
    static constexpr qsizetype kMostBytes = qsizetype(256) << 20;

    /// `environment` must outlive the store.
    explicit PictureStore(const DisplayEnvironment &environment, QObject *parent = nullptr,
                          qsizetype mostBytes = kMostBytes);

    /// What is known of the picture of a source as written. Without a loader, for what is no URL, and for what comes
    /// when the memory is used up, it stays Empty.
    NetworkImage::NetworkImageState state(const QString &source);
    /// The loaded picture, null if there is none (yet). For renderers.
    QImage image(const QString &source);
    void clear();

Q_SIGNALS:
    /// Something came of a picture that was asked for.
    void changed();

private:
    void take(NetworkImage::NetworkImageModel &model);

    const DisplayEnvironment &m_environment;
    const qsizetype m_mostBytes;
    qsizetype m_bytes = 0;                                      // of all that have come
    QHash<QString, NetworkImage::NetworkImageModel *> m_models; // children of this
};

} // namespace MarkdownUI
