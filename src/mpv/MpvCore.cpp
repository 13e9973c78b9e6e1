#include "MpvCore.h"

#include <ZelvanoUI/MainThread.h>

#include <QLoggingCategory>
#include <QPointer>
#include <QThreadPool>

#include <array>
#include <clocale>
#include <vector>

#include <mpv/client.h>

namespace zelvano {

namespace {

Q_LOGGING_CATEGORY(mpvLog, "zelvano.mpv", QtWarningMsg)

struct Option
{
    const char *name;
    const char *value;
};

constexpr std::array options{
    Option{"vo", "null"}, // Until there is a canvas: mpv ends a silent video that it cannot draw.
    Option{"pause", "yes"},
    Option{"keep-open", "always"}, // At its end the video stays loaded, so that it can be played again.
    Option{"idle", "yes"},
    Option{"ytdl", "no"}, // No other program looks for a video behind a URL.
    Option{"osc", "no"},
    Option{"osd-level", "0"},
    Option{"input-default-bindings", "no"},
    Option{"input-vo-keyboard", "no"},
    Option{"config", "no"},
    Option{"terminal", "no"},
};

/// libmpv does not start in a locale that writes numbers with a comma.
mpv_handle *start()
{
    std::setlocale(LC_NUMERIC, "C"); // NOLINT(concurrency-mt-unsafe): once, on the main thread.
    mpv_handle *handle = mpv_create();
    if (!handle) {
        qCWarning(mpvLog, "Error: libmpv cannot start, no video plays");
        return nullptr;
    }
    for (const auto &option : options)
        mpv_set_option_string(handle, option.name, option.value);
    if (const int error = mpv_initialize(handle); error < 0) {
        qCWarning(mpvLog, "Error: libmpv cannot start, no video plays: %s", mpv_error_string(error));
        mpv_terminate_destroy(handle);
        return nullptr;
    }
    return handle;
}

} // namespace

MpvCore::MpvCore() : m_handle(start())
{
    if (!m_handle)
        return;
    mpv_request_log_messages(m_handle, "warn");
    mpv_set_wakeup_callback(m_handle, &MpvCore::wake, this);
}

std::shared_ptr<MpvCore> MpvCore::create()
{
    return {new MpvCore, MainThreadDeleter{}};
}

/// mpv changes the callback under a lock, so it no longer calls wake() afterwards.
MpvCore::~MpvCore()
{
    if (!m_handle)
        return;
    mpv_set_wakeup_callback(m_handle, nullptr, nullptr);
    command({"stop"}); // The pool may be busy.
    QThreadPool::globalInstance()->start([handle = m_handle] { mpv_terminate_destroy(handle); });
}

void MpvCore::wake(void *core)
{
    auto *self = static_cast<MpvCore *>(core);
    if (!self->m_isAwake.exchange(true))
        QMetaObject::invokeMethod(self, &MpvCore::drain, Qt::QueuedConnection);
}

void MpvCore::announcePicture(void *core)
{
    auto *self = static_cast<MpvCore *>(core);
    if (self->m_hasPicture.exchange(true))
        return;
    const auto announce = [self] {
        self->m_hasPicture = false;
        Q_EMIT self->pictureChanged();
    };
    QMetaObject::invokeMethod(self, announce, Qt::QueuedConnection);
}

/// A receiver of happened() may destroy the core.
void MpvCore::drain()
{
    m_isAwake = false;
    const QPointer<MpvCore> alive(this);
    while (alive) {
        const auto *event = mpv_wait_event(m_handle, 0);
        if (event->event_id == MPV_EVENT_NONE)
            return;
        if (event->event_id == MPV_EVENT_LOG_MESSAGE) {
            const auto *line = static_cast<const mpv_event_log_message *>(event->data);
            qCInfo(mpvLog, "%s: %s", line->prefix, QByteArray(line->text).trimmed().constData());
        } else {
            Q_EMIT happened(event);
        }
    }
}

void MpvCore::command(const QByteArrayList &words, quint64 number)
{
    if (!m_handle)
        return;
    std::vector<const char *> arguments;
    for (const auto &word : words)
        arguments.push_back(word.constData());
    arguments.push_back(nullptr);
    mpv_command_async(m_handle, number, arguments.data());
}

void MpvCore::setFlag(const char *property, bool value, quint64 number)
{
    int flag = value ? 1 : 0;
    if (m_handle)
        mpv_set_property_async(m_handle, number, property, MPV_FORMAT_FLAG, &flag);
}

void MpvCore::ask(const char *property, quint64 number)
{
    if (m_handle)
        mpv_get_property_async(m_handle, number, property, MPV_FORMAT_DOUBLE);
}

} // namespace zelvano
