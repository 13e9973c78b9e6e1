#include "NativeViews.h"
#include <ZelvanoUI/ZVListView.h>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDBusVariant>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using namespace zelvano;

/// The list as a screen reader sees it, on AT-SPI's real bus. It waits for no answer with a blocked event loop: the
/// application that answers is this process.
class tst_ScreenReader : public QObject
{
    Q_OBJECT

public Q_SLOTS:
    void stateChanged(const QDBusMessage &message)
    {
        const auto arguments = message.arguments();
        if (arguments.value(0) != u"focused"_s || arguments.value(1) != 1)
            return;
        focused = message;
        const auto answer = call(message.service(), message.path(), u"org.freedesktop.DBus.Properties"_s, u"Get"_s,
                                 {u"org.a11y.atspi.Accessible"_s, u"Name"_s});
        if (focused.path() == message.path()) // A later event may have come meanwhile.
            name = answer.value<QDBusVariant>().variant().toString();
    }

private Q_SLOTS:
    void initTestCase()
    {
        const auto address = call(u"org.a11y.Bus"_s, u"/org/a11y/bus"_s, u"org.a11y.Bus"_s, u"GetAddress"_s);
        if (address.toString().isEmpty() || QGuiApplication::platformName() != u"xcb"_s)
            QSKIP("needs a session bus with at-spi2-core and an X server: dbus-run-session xvfb-run -a ...");
        bus = QDBusConnection::connectToBus(address.toString(), u"screen reader"_s);
        QVERIFY(bus.connect({}, {}, u"org.a11y.atspi.Event.Object"_s, u"StateChanged"_s, this,
                            SLOT(stateChanged(QDBusMessage))));
        // Qt sends only the events that somebody has registered for.
        call(u"org.a11y.atspi.Registry"_s, u"/org/a11y/atspi/registry"_s, u"org.a11y.atspi.Registry"_s,
             u"RegisterEvent"_s, {u"object:state-changed:focused"_s});
    }

    void focusAndPress()
    {
        NativeStage<ZVListView> stage;
        QVERIFY(stage.fill(12));
        stage.items()->forceActiveFocus(Qt::TabFocusReason);
        const auto moves = [&] { // Qt connects to the bus while the test runs.
            stage.key(Qt::Key_Right);
            stage.key(Qt::Key_Home);
            return waitUntil([&] { return name == u"Video 0, 1:00, 1 of 12"_s; }, 100ms);
        };
        QVERIFY(waitUntil(moves, 8s));
        const std::pair<Qt::Key, QString> steps[] = {{Qt::Key_Right, u"Video 1, 1:01, 2 of 12"_s},
                                                     {Qt::Key_Down, u"Video 3, 1:03, 4 of 12"_s},
                                                     {Qt::Key_Left, u"Video 2, 1:02, 3 of 12"_s},
                                                     {Qt::Key_End, u"Video 11, 1:11, 12 of 12"_s}};
        for (const auto &[key, expected] : steps) {
            stage.key(key);
            QVERIFY2(waitUntil([&] { return name == expected; }, 2s), qPrintable(name));
        }
        const auto action = u"org.a11y.atspi.Action"_s;
        for (int i = 0; i < 4 && stage.picks->videos.empty(); ++i) {
            if (call(focused.service(), focused.path(), action, u"GetName"_s, {i}) == u"Press"_s)
                call(focused.service(), focused.path(), action, u"DoAction"_s, {i});
        }
        QVERIFY(stage.waitForPicks(1));
        QCOMPARE(stage.picks->videos[0]->title(), u"Video 11"_s);
    }

private:
    QVariant call(const QString &service, const QString &path, const QString &interface, const QString &method,
                  const QVariantList &arguments = {}) const
    {
        auto message = QDBusMessage::createMethodCall(service, path, interface, method);
        message.setArguments(arguments);
        const auto answer = bus.asyncCall(message);
        waitUntil([&] { return answer.isFinished(); }, 3s);
        return answer.isFinished() && answer.isValid() ? answer.reply().arguments().value(0) : QVariant();
    }

    QDBusConnection bus = QDBusConnection::sessionBus(); ///< Then the screen readers' own.
    QDBusMessage focused;                                ///< The last event.
    QString name;                                        ///< Of its object.
};

UI_TEST_MAIN(tst_ScreenReader)
#include "tst_ScreenReader.moc"
