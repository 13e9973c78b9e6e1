#pragma once

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QString>

/// Draws a short video; its name selects the container.
inline bool makeClip(const QString &path, int seconds)
{
    const auto picture = QStringLiteral("testsrc=size=160x90:rate=10:duration=%1").arg(seconds);
    const QStringList arguments{QStringLiteral("-v"),       QStringLiteral("error"),   QStringLiteral("-f"),
                                QStringLiteral("lavfi"),    QStringLiteral("-i"),      picture,
                                QStringLiteral("-pix_fmt"), QStringLiteral("yuv420p"), path};
    return QDir().mkpath(QFileInfo(path).path()) && QProcess::execute(QStringLiteral("ffmpeg"), arguments) == 0;
}
