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
    /// `environment` must outlive the store.
    explicit PictureStore(const DisplayEnvironment &environment, QObject *parent = nullptr);

    /// What is known of the picture of a source as written. Without a loader, and for what is no URL, it stays Empty.
    NetworkImage::NetworkImageState state(const QString &source);
    /// The loaded picture, null if there is none (yet). For renderers.
    QImage image(const QString &source);
    void clear();

Q_SIGNALS:
    /// Something came of a picture that was asked for.
    void changed();

private:
    const DisplayEnvironment &m_environment;
    QHash<QString, NetworkImage::NetworkImageModel *> m_models; // children of this
};

} // namespace MarkdownUI
