#pragma once

#include <QUrl>

#include <utility>

namespace zelvano {

/// A medium known by its URL. A value.
class AVURLAsset
{
public:
    explicit AVURLAsset(QUrl url) : m_url(std::move(url)) {}

    QUrl URL() const { return m_url; }

private:
    QUrl m_url;
};

} // namespace zelvano
