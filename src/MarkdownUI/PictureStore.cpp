#include "MarkdownUI/PictureStore.h"

#include "NetworkImage/NetworkImageLoader.h"
#include "NetworkImage/NetworkImageModel.h"

#include <QtCore/QUrl>

namespace MarkdownUI {

PictureStore::PictureStore(const DisplayEnvironment &environment, QObject *parent)
    : QObject(parent), m_environment(environment)
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
    connect(model, &NetworkImage::NetworkImageModel::imageChanged, this, &PictureStore::changed);
    return model->image();
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
}

} // namespace MarkdownUI
