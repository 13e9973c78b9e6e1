#pragma once

#include <ZelvanoUI/ZVVideoParams.h>

#include <QMetaType>
#include <QString>
#include <qqmlintegration.h>

#include <memory>
#include <utility>

namespace zelvano {

/// One recommended video, a value in QML. Texts are empty when the service sent none. URLs are the service's texts.
class RecommendedVideo
{
    Q_GADGET
    QML_VALUE_TYPE(recommendedVideo)
    Q_PROPERTY(QString title READ title CONSTANT FINAL)
    Q_PROPERTY(QString videoId READ videoId CONSTANT FINAL)
    /// The host's own identifier of the video. The service spells it this way.
    Q_PROPERTY(QString costumerVideoId READ costumerVideoId CONSTANT FINAL)
    /// A code such as "FORYOU", "MOSTVIEWED" or "MOSTRECENT".
    Q_PROPERTY(QString category READ category CONSTANT FINAL)
    Q_PROPERTY(QString url READ url CONSTANT FINAL)
    Q_PROPERTY(QString imageUrl READ imageUrl CONSTANT FINAL)
    Q_PROPERTY(QString stripUrl READ stripUrl CONSTANT FINAL)
    /// Seconds; NaN when the service sent none.
    Q_PROPERTY(double durationSec READ durationSec CONSTANT FINAL)

public:
    RecommendedVideo() = default;
    explicit RecommendedVideo(std::shared_ptr<ZVVideoParams> params) : m_params(std::move(params)) {}

    QString title() const { return read(&ZVVideoParams::title); }
    QString videoId() const { return read(&ZVVideoParams::videoId); }
    QString costumerVideoId() const { return read(&ZVVideoParams::costumerVideoId); }
    QString category() const { return read(&ZVVideoParams::category); }
    QString url() const { return read(&ZVVideoParams::url); }
    QString imageUrl() const { return read(&ZVVideoParams::imageUrl); }
    QString stripUrl() const { return read(&ZVVideoParams::stripUrl); }
    double durationSec() const { return read(&ZVVideoParams::durationSec).toDouble(qQNaN()); }

    /// An empty record for a default value.
    std::shared_ptr<ZVVideoParams> params() const
    {
        return m_params ? m_params : std::make_shared<ZVVideoParams>(QJsonObject());
    }

    friend bool operator==(const RecommendedVideo &, const RecommendedVideo &) = default;

private:
    template<class Value> Value read(Value (ZVVideoParams::*getter)() const) const
    {
        return m_params ? (m_params.get()->*getter)() : Value();
    }

    std::shared_ptr<ZVVideoParams> m_params;
};

} // namespace zelvano
