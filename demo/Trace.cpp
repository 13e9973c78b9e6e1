#include "Trace.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QThread>

namespace demo {

using namespace Qt::StringLiterals;

Trace::Trace()
{
    m_clock.start();
}

Trace::~Trace() = default;

bool Trace::writeTo(const QString &path)
{
    m_file.setFileName(path);
    return m_file.open(QIODevice::WriteOnly | QIODevice::Text);
}

qint64 Trace::count() const
{
    const QMutexLocker lock(&m_mutex);
    return m_count;
}

void Trace::add(const QString &kind, QJsonObject fields)
{
    const bool isMain = QThread::currentThread() == thread();
    const QMutexLocker lock(&m_mutex);
    fields.insert("n"_L1, ++m_count);
    fields.insert("ms"_L1, m_clock.elapsed());
    fields.insert("thread"_L1, isMain ? u"main"_s : u"network"_s);
    fields.insert("kind"_L1, kind);
    if (m_file.isOpen()) {
        m_file.write(QJsonDocument(fields).toJson(QJsonDocument::Compact) + '\n');
        m_file.flush();
    }
    QMetaObject::invokeMethod(
        this, [this, fields] { Q_EMIT added(fields); }, Qt::QueuedConnection);
}

} // namespace demo
