#include <ZelvanoUI/Player.h>

#include <QStringList>

namespace zelvano {

using namespace Qt::StringLiterals;

bool Player::acceptsNextVideo(const QUrl &) const
{
    return true;
}

bool Player::isMediaAddress(const QUrl &url)
{
    static const QStringList schemes{u"http"_s, u"https"_s, u"rtsp"_s, u"rtsps"_s,
                                     u"rtmp"_s, u"rtmps"_s, u"file"_s, u"qrc"_s};
    return schemes.contains(url.scheme());
}

} // namespace zelvano

#include "ZelvanoUI/moc_Player.cpp"
