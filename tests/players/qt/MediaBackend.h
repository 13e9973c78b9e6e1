#pragma once

#include <QDir>
#include <QLibraryInfo>
#include <QMediaFormat>

/// Says why the tests cannot run over Qt's media backend QT_MEDIA_BACKEND. Null when they can.
inline QString missingMediaBackend()
{
    const auto backend = qEnvironmentVariable("QT_MEDIA_BACKEND");
    if (backend == QStringLiteral("mpv"))
        return {};
    const QDir plugins(QLibraryInfo::path(QLibraryInfo::PluginsPath) + QStringLiteral("/multimedia"));
    if (plugins.entryList({QStringLiteral("*%1*").arg(backend)}).isEmpty())
        return QStringLiteral("Qt's media backend \"%1\" is not installed").arg(backend);
    if (!QMediaFormat().supportedVideoCodecs(QMediaFormat::Decode).contains(QMediaFormat::VideoCodec::H264))
        return QStringLiteral("Qt's media backend \"%1\" has no plug-in that decodes H.264").arg(backend);
    return {};
}
