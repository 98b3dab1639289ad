#include "MarkdownUI/PictureStore.h"

#include "NetworkImage/NetworkImageLoader.h"
#include "NetworkImage/NetworkImageModel.h"

#include <QtCore/QUrl>

#include <optional>
#include <variant>

namespace MarkdownUI {

PictureStore::PictureStore(const DisplayEnvironment &environment, QObject *parent, qsizetype mostBytes)
    : QObject(parent), m_environment(environment), m_mostBytes(mostBytes)
{}

NetworkImage::NetworkImageState PictureStore::state(const QString &source)
{
    if (const NetworkImage::NetworkImageModel *const known = m_models.value(source))
        return known->image();
    const std::optional<QString> url = resolvedURL(source, m_environment.imageBaseURL);
    if (!m_environment.imageLoader || !url)
        return NetworkImage::Empty();
    auto *const model = new NetworkImage::NetworkImageModel(*m_environment.imageLoader, this);
    m_models.insert(source, model);
    model->setSource(NetworkImage::ImageSource{QUrl(*url)});
    connect(model, &NetworkImage::NetworkImageModel::imageChanged, this, [this, model] { take(*model); });
    return model->image();
}

void PictureStore::take(NetworkImage::NetworkImageModel &model)
{
    if (const auto *const success = std::get_if<NetworkImage::Success>(&model.image())) {
        const qsizetype bytes = success->image.sizeInBytes();
        if (bytes > m_mostBytes - m_bytes) {
            model.setSource(std::nullopt); // comes here again, without an image
            return;
        }
        m_bytes += bytes;
    }
    Q_EMIT changed();
}

QImage PictureStore::image(const QString &source)
{
    const NetworkImage::NetworkImageState known = state(source);
    const auto *const success = std::get_if<NetworkImage::Success>(&known);
    return success ? success->image : QImage();
}

void PictureStore::clear()
{
    qDeleteAll(m_models);
    m_models.clear();
    m_bytes = 0;
}

} // namespace MarkdownUI
