#include <ZelvanoUI/ZVVideoParams.h>

#include "JsonReading.h"

namespace zelvano {

using namespace Qt::StringLiterals;

struct ZVVideoParams::Private
{
    const QJsonObject params;
    QImage image{};
    qint64 index = 0;
    QSizeF size{0, 0};
};

ZVVideoParams::ZVVideoParams(const QJsonObject &params) : d(new Private{params}) {}

ZVVideoParams::~ZVVideoParams() = default;

QJsonObject ZVVideoParams::params() const
{
    return d->params;
}

QString ZVVideoParams::title() const
{
    return json::stringValue(d->params.value("title"_L1));
}

QString ZVVideoParams::videoId() const
{
    return json::stringValue(d->params.value("videoId"_L1));
}

QString ZVVideoParams::costumerVideoId() const
{
    return json::stringValue(d->params.value("costumerVideoId"_L1));
}

QString ZVVideoParams::category() const
{
    return json::stringValue(d->params.value("category"_L1));
}

QJsonValue ZVVideoParams::durationSec() const
{
    return d->params.value("durationSec"_L1);
}

QJsonValue ZVVideoParams::pubDate() const
{
    return d->params.value("pubDate"_L1);
}

QJsonValue ZVVideoParams::percentValue() const
{
    return d->params.value("value"_L1);
}

QString ZVVideoParams::url() const
{
    return json::urlText(d->params.value("url"_L1));
}

QString ZVVideoParams::imageUrl() const
{
    return json::urlText(d->params.value("imageUrl"_L1));
}

QString ZVVideoParams::stripUrl() const
{
    return json::urlText(d->params.value("stripUrl"_L1));
}

QImage ZVVideoParams::image() const
{
    return d->image;
}

void ZVVideoParams::setImage(const QImage &image)
{
    d->image = image;
}

qint64 ZVVideoParams::index() const
{
    return d->index;
}

void ZVVideoParams::setIndex(qint64 index)
{
    d->index = index;
}

QSizeF ZVVideoParams::size() const
{
    return d->size;
}

void ZVVideoParams::setSize(QSizeF size)
{
    d->size = size;
}

} // namespace zelvano
