#pragma once

#include <ZelvanoUI/MpvVideo.h>

#include <QtQml/qqmlregistration.h>

namespace zelvano {

/// The QML element MpvVideo.
class MpvElement : public zelvano::MpvVideo // In full: the description of the module needs it.
{
    Q_OBJECT
    QML_NAMED_ELEMENT(MpvVideo)

public:
    using MpvVideo::MpvVideo;
};

} // namespace zelvano
