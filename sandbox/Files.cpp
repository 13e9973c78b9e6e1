#include "Files.h"

#include <QRegularExpression>

#include <algorithm>
#include <map>

using namespace Qt::StringLiterals;

namespace zelvano::sandbox {

namespace {

const char *contentTypeOf(const QString &path)
{
    static const std::map<QString, const char *> types{
        {u"html"_s, "text/html; charset=utf-8"},
        {u"css"_s, "text/css; charset=utf-8"},
        {u"js"_s, "text/javascript; charset=utf-8"},
        {u"mp4"_s, "video/mp4"},
        {u"webm"_s, "video/webm"},
        {u"mkv"_s, "video/x-matroska"},
        {u"jpg"_s, "image/jpeg"},
    };
    const auto type = types.find(path.section(u'.', -1));
    return type == types.end() ? "application/octet-stream" : type->second;
}

void refuse(HttpAnswer &answer, int status, const QByteArray &reason)
{
    answer.status = status;
    answer.setBody(reason + '\n', "text/plain");
}

/// Narrows `first` and `count`, the whole file, to a range such as "bytes=0-99", "bytes=100-" or "bytes=-100". False
/// when the file ends before the range. Other ranges mean the whole file.
bool applyRange(const QByteArray &range, qint64 &first, qint64 &count)
{
    static const QRegularExpression form(u"^bytes=(?:(\\d+)-(\\d*)|-(\\d+))$"_s);
    const auto match = form.match(QString::fromLatin1(range));
    if (!match.hasMatch())
        return true;
    const qint64 size = count;
    const bool isAtEnd = match.hasCaptured(3);
    first = isAtEnd ? std::max<qint64>(size - match.captured(3).toLongLong(), 0) : match.captured(1).toLongLong();
    const qint64 last = isAtEnd || match.captured(2).isEmpty() ? size - 1 : match.captured(2).toLongLong();
    count = std::min(last, size - 1) - first + 1;
    return count > 0;
}

void serve(const std::shared_ptr<QFile> &file, const QByteArray &range, HttpAnswer &answer)
{
    if (file->fileName().isEmpty() || !file->open(QIODevice::ReadOnly))
        return refuse(answer, 404, "not found");
    const qint64 size = file->size();
    qint64 first = 0;
    qint64 count = size;
    if (!applyRange(range, first, count))
        return refuse(answer, 416, "no such range");
    // A film is larger than the memory. A compressed resource cannot be mapped.
    if (const uchar *bytes = file->map(first, count)) {
        answer.setBody(QByteArray::fromRawData(reinterpret_cast<const char *>(bytes), count),
                       contentTypeOf(file->fileName()));
        answer.file = file;
    } else {
        file->seek(first);
        answer.setBody(file->read(count), contentTypeOf(file->fileName()));
    }
    answer.headers += "Accept-Ranges: bytes\r\n";
    if (count < size || !range.isEmpty()) {
        answer.status = 206;
        answer.headers += "Content-Range: bytes " + QByteArray::number(first) + '-' +
                          QByteArray::number(first + count - 1) + '/' + QByteArray::number(size) + "\r\n";
    }
}

void serveResource(const QString &path, const QByteArray &range, HttpAnswer &answer)
{
    QString name = path == "/"_L1 ? u"/console/"_s : path;
    if (name.endsWith(u'/'))
        name += "index.html"_L1;
    if (name.contains(".."_L1))
        return refuse(answer, 404, "not found");
    serve(std::make_shared<QFile>(u":/sandbox"_s + name), range, answer);
}

/// A path holds a number and no name, so none leads out of the folder.
void serveFromFolder(const VideoFolder &folder, const QString &path, const QByteArray &range, HttpAnswer &answer)
{
    const int number = path.section(u'/', 2).section(u'.', 0, 0).toInt();
    if (path.startsWith("/media/"_L1))
        return serve(std::make_shared<QFile>(folder.file(number)), range, answer);
    const auto thumbnail = path.startsWith("/thumbnails/"_L1) ? folder.thumbnail(number) : QByteArray();
    if (thumbnail.isEmpty())
        return refuse(answer, 404, "not found");
    answer.setBody(thumbnail, "image/jpeg");
}

bool isVideoPath(const QString &path)
{
    return path.startsWith("/media/"_L1) || path.startsWith("/thumbnails/"_L1) || path.startsWith("/strips/"_L1);
}

} // namespace

void serveFile(const Request &request, const VideoFolder *folder, HttpAnswer &answer)
{
    const auto found = request.headers.find("range");
    const auto range = found == request.headers.end() ? QByteArray() : found->second;
    if (folder && isVideoPath(request.path))
        serveFromFolder(*folder, request.path, range, answer);
    else
        serveResource(request.path, range, answer);
}

} // namespace zelvano::sandbox
