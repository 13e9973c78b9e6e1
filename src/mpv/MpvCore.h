#pragma once

#include <QByteArrayList>
#include <QObject>

#include <atomic>
#include <memory>

struct mpv_event;
struct mpv_handle;

namespace zelvano {

/// An mpv without a window and input of its own. mpv calls back on its own threads. The signals are emitted on the main
/// thread.
class MpvCore : public QObject
{
    Q_OBJECT

public:
    static std::shared_ptr<MpvCore> create();
    /// Returns at once. mpv ends on a thread of the global pool.
    ~MpvCore() override;
    Q_DISABLE_COPY_MOVE(MpvCore)

    mpv_handle *handle() const { return m_handle; } ///< Null when it could not start.

    /// mpv carries out commands in order. If the number is not 0, a later event with it reports the result.
    void command(const QByteArrayList &words, quint64 number = 0);
    void setFlag(const char *property, bool value, quint64 number = 0);
    /// mpv answers with an event, after its earlier ones. A call that waits for mpv may take 0.2 s: where the main
    /// thread draws, mpv waits for it.
    void ask(const char *property, quint64 number);

    /// An event of mpv, in order.
    Q_SIGNAL void happened(const mpv_event *event);
    /// mpv has another picture to draw.
    Q_SIGNAL void pictureChanged();
    /// For mpv's render context, on any thread.
    static void announcePicture(void *core);

private:
    MpvCore();
    static void wake(void *core);
    void drain();

    mpv_handle *m_handle = nullptr;
    std::atomic<bool> m_isAwake = false;
    std::atomic<bool> m_hasPicture = false;
};

} // namespace zelvano
