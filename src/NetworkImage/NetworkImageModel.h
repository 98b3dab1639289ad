#pragma once

#include "NetworkImage/ImageSource.h"
#include "NetworkImage/NetworkImageState.h"

#include <QtCore/QObject>

#include <optional>

namespace NetworkImage {

class NetworkImageLoader;

/// What one view shows of a network image: it asks the loader for its source and knows what came of it. A view hands in
/// its source when it comes up and whenever that changes, draws `image`, and calls `cancel` when it disappears. Main
/// thread only.
class NetworkImageModel final : public QObject
{
    Q_OBJECT
public:
    /// `imageLoader` must outlive the model.
    explicit NetworkImageModel(NetworkImageLoader &imageLoader, QObject *parent = nullptr);

    const std::optional<ImageSource> &source() const { return m_source; }
    const NetworkImageState &image() const { return m_image; }

    /// Does nothing if the source is the one that it has. Otherwise `image` is Empty until the new one has come, which
    /// is never within this call, and what was asked for before is not shown any more. No source stays Empty.
    void setSource(const std::optional<ImageSource> &source);

    /// Stops waiting, not the download, which others may share. An image that has come stays. What had not come is
    /// asked for again when the same source is set again, so the model then has no source meanwhile.
    void cancel();

Q_SIGNALS:
    void sourceChanged();
    void imageChanged();

private:
    void load();
    void setImage(const NetworkImageState &image);

    NetworkImageLoader &m_imageLoader;
    std::optional<ImageSource> m_source;
    NetworkImageState m_image;
    quint64 m_load = 0; // the number of the newest load; what came of another one is dropped
    bool m_isLoading = false;
};

} // namespace NetworkImage
