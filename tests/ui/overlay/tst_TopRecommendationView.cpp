#include "Columns.h"
#include "LogCollector.h"
#include "Process.h"
#include "WebPage.h"
#include <ZelvanoUI/Bundle.h>
#include <ZelvanoUI/QtKPViewController.h>
#include <ZelvanoUI/Sandbox.h>

#include <QDesktopServices>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPropertyAnimation>
#include <QScopeGuard>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;
using zelvano::ZVTopRecommendationView;

namespace {

constexpr QRectF firstPlace{20, 64, 300, 200};

class Owner : public zelvano::ZVTopRecommendationViewDelegate
{
public:
    void didSelecteRecommendation(ZVTopRecommendationView *, qint64 index) override { selected.append(index); }
    void viewDidDismiss(ZVTopRecommendationView *) override { QFAIL("The overlay never calls it."); }
    void recommendationViewDidLoad() override { ++showings; }

    QList<qint64> selected;
    int showings = 0;
};

/// An overlay with its owner, in no window.
struct Overlay
{
    const std::shared_ptr<Owner> owner = std::make_shared<Owner>();
    std::unique_ptr<ZVTopRecommendationView> view = std::make_unique<ZVTopRecommendationView>(firstPlace);

    Overlay() { view->setDelegate(owner); }
    bool load(const QUrl &url)
    {
        view->setUrl(url);
        return waitUntil([this] { return view->isReady(); });
    }
    bool hasPicked(qint64 index)
    {
        return waitUntil([&] { return owner->selected == QList<qint64>{index}; });
    }
    /// The page has carried out all commands, and picked no video.
    bool pageAnswers()
    {
        evaluate(*view, u"location.href = 'zelvano://index?77'"_s);
        const bool answers = hasPicked(77);
        owner->selected.clear();
        return answers;
    }
    /// The page's data so far, as JSON.
    QString got() { return evaluate(*view, u"JSON.stringify(got)"_s).toString(); }
};

/// The same over a host's window.
struct Stage : Overlay
{
    HostWindow window;
    QQuickItem superview;

    explicit Stage(const QRectF &frame = firstPlace, double superviewWidth = 800)
    {
        superview.setParentItem(window.contentItem());
        superview.setSize({superviewWidth, 600});
        view->setFrame(frame);
        view->setParentItem(&superview);
    }
    ~Stage() { view.reset(); }
    bool appear(const QUrl &url)
    {
        if (!window.appear() || !load(url))
            return false;
        view->setHidden(false);
        return waitForPicture(*view);
    }
    bool hostHasFocus() const { return window.activeFocusItem() == &window.below; }
    QPoint at(double x, double y) const { return view->mapToScene({x, y}).toPoint(); }
    bool hides()
    {
        return waitUntil([this] { return view->isHidden(); });
    }
};

} // namespace

class tst_TopRecommendationView : public QObject
{
    Q_OBJECT

    zelvano::sandbox::Sandbox sandbox;
    QList<QUrl> opened; ///< What the system would start another program for.

public:
    Q_SLOT void open(const QUrl &address) { opened.append(address); }

private Q_SLOTS:
    void initTestCase()
    {
        QVERIFY(sandbox.start());
        for (const auto &scheme : {u"mailto"_s, u"tel"_s, u"file"_s, u"http"_s, u"chrome"_s})
            QDesktopServices::setUrlHandler(scheme, this, "open");
    }
    /// A host's own bundle may lack anything: the overlay is empty then, and the video plays on.
    void withoutItsInterface()
    {
        const auto use = [](const QString &path) { zelvano::Bundle::load(*zelvano::Bundle::atPath(path)); };
        const auto reset = qScopeGuard([&] { use(u":/ZelvanoUIResources.bundle"_s); });
        const QTemporaryDir folder;
        const auto write = [&](const QString &name, const QByteArray &text) {
            QFile file(folder.filePath(name));
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
        };
        write(u"Info.json"_s, "{\"CFBundleIdentifier\": \"ZelvanoUI\"}");
        const char *const withoutWebView = "import QtQuick\nItem { property var owner }";
        for (const char *text : {"", "import QtQuick\nItem { nothing: }",
                                 "import QtQml\nQtObject { property var owner }", withoutWebView}) {
            if (*text)
                write(u"ZVTopRecommendationView.qml"_s, text);
            use(folder.path());
            const LogCollector log;
            Stage stage;
            QCOMPARE(log.lines().size(), text == withoutWebView ? 0 : 1);
            QVERIFY(!stage.view->webView());
            QCOMPARE(stage.view->contentView() != nullptr, text == withoutWebView);
            stage.view->setUrl(sandbox.url(u"/layout/"_s));
            stage.view->setJsonSuggestions(u"[]"_s);
            stage.view->setHidden(false);
            stage.view->setFrame({0, 0, 10, 10});
            stage.view->didSwipe(1);
            QVERIFY(stage.hides() && !stage.view->isReady());
            stage.view->setDelegate(nullptr);
        }
    }

    void suggestionsReachThePage()
    {
        Overlay overlay;
        QVERIFY(overlay.load(listeningPage()));
        QCOMPARE(overlay.got(), u"[null]"_s); // Without suggestions the page gets an absent object.
        overlay.view->setJsonSuggestions(u"[1]"_s);
        overlay.view->setJsonSuggestions(u"[{\"a\": 2}]"_s);
        QVERIFY(flushMainQueue());
        QCOMPARE(overlay.got(), u"[null,[{\"a\":2}],[{\"a\":2}]]"_s); // Each call pushes the latest text.

        QJsonArray videos; // Any text is JSON for the page.
        for (const auto &text :
             {u"\"'`\\ \\\" ${got} '); alert(1); ("_s, u"</script><script>got = 'taken'</script><!--"_s,
              u"a\u2028b\u2029c\r\nd\u0085"_s, u"\x01\x1f\x7f\t\b"_s + QChar(u'\0') + u"end"_s,
              u"\U0001F600 \u0645\u0631\u062d\u0628\u0627 \u202e right to left"_s, u"\u00e4\"\\"_s.repeated(200000)})
            videos.append(QJsonObject{{u"title"_s, text}, {text.left(50), true}});
        overlay.view->setJsonSuggestions(QString::fromUtf8(QJsonDocument(videos).toJson()));
        QVERIFY(flushMainQueue());
        evaluate(*overlay.view, u"got = []; location.href = 'zelvano://ready?again'"_s);
        QVERIFY(waitForPage(*overlay.view, u"got.length"_s));
        QCOMPARE(QJsonDocument::fromJson(overlay.got().toUtf8()).array().at(0).toArray(), videos);
        overlay.view->setJsonSuggestions(u"[3]"_s);
        overlay.view.reset(); // With the push pending.
        QVERIFY(flushMainQueue());
    }

    void navigations()
    {
        // What follows from an address.
        const std::pair<QByteArray, QString> cases[] = {
            {"zelvano://index?" + QByteArray(5000, '9'), u"picks 2147483647"_s},
            {"zelvano://already/index?2&ready", u"ready"_s},
            {"zelvano://video/reindexed?5", u"picks 5"_s},
            {"ZELVANO://index?2", u"picks 2"_s},
            {"zelvano://index?abc", u"picks 0"_s},
            {"zelvano://index?", u"picks 0"_s},
            {"zelvano://index?12abc3", u"picks 12"_s},
            {"zelvano://index?3?4", u"picks 3"_s},
            {"zelvano://INDEX?3", u"picks 3"_s}, // Qt lowers the host's name.
            {"zelvano://[index?3", u"loads, logs"_s},
            {"zelvano://index?+7", u"picks 7"_s},
            {"zelvano://index?-1", u"picks -1"_s},
            {"zelvano://index?-99999999999", u"picks -2147483648"_s},
            {"zelvano://index/2", u"logs"_s},
            {"zelvano://other?2", u""_s},
            {"http://127.0.0.1/?zelvano://ready", u"loads"_s},
            {"zelvano:index?2", u"loads"_s},
            {"", u"loads"_s},
        };
        for (const auto &[address, expected] : cases) {
            const Case current(address);
            const LogCollector log;
            Overlay overlay;
            overlay.view->setIsFirstLoad(false);
            QStringList seen;
            if (overlay.view->shouldStartLoadWithRequest(QUrl(QString::fromLatin1(address))))
                seen.append(u"loads"_s);
            if (overlay.view->isReady())
                seen.append(u"ready"_s);
            for (const auto index : overlay.owner->selected)
                seen.append(u"picks %1"_s.arg(index));
            seen += QStringList(log.lines().size(), u"logs"_s);
            QCOMPARE(seen.join(u", "_s), expected);
            QCOMPARE(overlay.view->isFirstLoad(), expected.startsWith("picks"_L1));
        }
    }

    void transparentPage()
    {
        Stage stage;
        stage.window.setColor(Qt::red);
        QVERIFY(stage.appear(listeningPage(u"<style>body { margin: 0 }</style><div style='background: #00ff00; "
                                           "width: 50vw; height: 100vh'></div>"_s)));
        const auto *const page = stage.view->webView();
        connect(page, &QQuickItem::widthChanged, page, [&] { QCOMPARE(page->size(), QSizeF(640, 360)); });
        connect(page, &QQuickItem::heightChanged, page, [&] { QCOMPARE(page->size(), QSizeF(640, 360)); });
        stage.view->setFrame({20, 64, 640, 360}); // The page follows, in one step.
        const auto colour = [&](double x) { return stage.window.grabWindow().pixelColor(stage.at(x, 340)); };
        QVERIFY(waitUntil([&] { return colour(310) == QColor(Qt::green) && colour(330) == QColor(Qt::red); }));
    }

    /// However a page lays itself out and sends its command, it is visible, can be tapped, and has rounded corners that
    /// show the host.
    void layouts()
    {
        const auto page = u"<style>body { margin: 0; background: #00ff00 } #t { background: #0000ff; %1 }</style>"
                          "<div id='t' onclick=\"%2\"></div><script>location.href = 'zelvano://ready'</script>"_s;
        const auto command = u"location.href = 'zelvano://index?5'"_s;
        const std::pair<QByteArray, QString> pages[] = {
            {"fixed", page.arg(u"position: fixed; inset: 40px"_s, command)},
            {"absolute", page.arg(u"position: absolute; inset: 40px"_s, u"location.assign('zelvano://index?5')"_s)},
            {"scrolling",
             u"<script>setInterval(() => scrollTo(0, 900), 10)</script>"_s +
                 page.arg(u"margin: 940px 0; height: 140px"_s, u"location.replace('ZELVANO://index?5')"_s)},
            {"taller than the view",
             page.arg(u"height: 2000px; margin: 40px"_s, u"window.open('zelvano://index?5', '_self')"_s)},
            {"no height",
             page.arg(u"float: left; width: 100vw; height: 120px; margin-top: 40px"_s,
                      u"const a = document.createElement('a'); a.href = 'zelvano://index?5'; a.click()"_s)},
            // Chromium drops the rest of a document that sets location.href while it is parsed.
            {"ready while parsing", u"<iframe hidden src='zelvano://ready'></iframe>"_s +
                                        page.arg(u"height: 120px; margin: 40px"_s, command)}};
        for (const auto &[name, html] : pages) {
            const Case current(name);
            Stage stage;
            stage.window.setColor(Qt::red);
            QVERIFY(stage.appear(pageOf(u"<!doctype html>"_s + html)));
            const auto colour = [&](double x, double y) {
                return stage.window.grabWindow().pixelColor(stage.at(x, y));
            };
            QVERIFY(waitUntil([&] { return colour(150, 100) == QColor(Qt::blue); }));
            QVERIFY(colour(150, 20) == QColor(Qt::green) || html.contains("2000px"_L1));
            const bool isRounded = stage.window.rendererInterface()->graphicsApi() != QSGRendererInterface::Software;
            for (const auto &[x, y] : {std::pair(0, 0), {299, 0}, {0, 199}, {299, 199}})
                QCOMPARE(colour(x, y), QColor(isRounded ? Qt::red : Qt::green));
            for (const auto pointer : {Pointer::Mouse, Pointer::Touch}) {
                stage.owner->selected.clear();
                tap(stage.window, pointer, stage.at(150, 100));
                QVERIFY(stage.hasPicked(5));
            }
            QVERIFY(!stage.view->isHidden() && stage.window.below.presses == 0);
        }
    }

    void swipe()
    {
        for (const auto pointer : {Pointer::Mouse, Pointer::Touch}) {
            for (const bool toTheRight : {true, false}) {
                Stage stage(firstPlace, 375);
                QVERIFY(
                    stage.appear(listeningPage(u"<script>onclick = click => { if (Math.abs(click.clientX - 150) > 110)"
                                               " location.href = 'zelvano://index?1' }</script>"_s)));
                for (const QPoint way : {QPoint(55, 0), QPoint(100, 60)}) // Too short, too steep.
                    drag(stage.window, pointer, stage.at(150, 100), toTheRight ? way : -way);
                QCoreApplication::processEvents();
                QVERIFY(stage.view->findChildren<QPropertyAnimation *>().isEmpty());
                drag(stage.window, pointer, stage.at(150, 100), {toTheRight ? 120 : -120, 10});
                const auto *movement = stage.view->findChild<QPropertyAnimation *>();
                QVERIFY(!stage.view->isHidden() && movement && movement->duration() == 250);
                QCOMPARE(movement->easingCurve(), QEasingCurve(QEasingCurve::OutQuad));
                QVERIFY(stage.hides());
                QCOMPARE(stage.view->frame(), QRectF(toTheRight ? 675 : -300, 64, 300, 200));
                QVERIFY(stage.owner->selected.isEmpty()); // A mouse that swipes clicks nothing.
            }
        }
    }

    /// However the overlay closes, the page notices nothing, and the host has the focus again.
    void closing()
    {
        Stage stage;
        QQmlEngine engine;
        const auto mirroring = qmlItem(engine, mirroringItem);
        mirroring->setParentItem(stage.window.contentItem());
        stage.superview.setParentItem(mirroring.get());
        QVERIFY(
            stage.appear(listeningPage(u"<input style='width: 200px; height: 150px'><script>onclick = click => "
                                       "{ if (click.clientX > 250) location.href = 'zelvano://index?1' }</script>"_s)));
        auto *const page = stage.view->webView();
        auto *const control = stage.view->contentView()->findChild<QQuickItem *>(u"dismiss"_s);
        QCOMPARE(control->x() + control->width(), 300.0); // Not mirrored.
        QCOMPARE(spoken(control), u"Button: Close recommendations"_s);
        QVERIFY(spoken(control->parentItem()).endsWith(": Recommended videos"_L1) && control->activeFocusOnTab());
        const auto press = [&](Qt::Key key, QQuickItem *focused) {
            focused->forceActiveFocus();
            QTest::keyClick(&stage.window, key);
        };
        const std::pair<QByteArray, std::function<void()>> ways[] = {
            {"tap", [&] { tap(stage.window, Pointer::Mouse, centreOf(control)); }},
            {"screen reader", [&] { pressByScreenReader(control); }},
            {"Space", [&] { press(Qt::Key_Space, control); }},
            {"Return", [&] { press(Qt::Key_Return, control); }},
            {"Enter", [&] { press(Qt::Key_Enter, control); }},
            {"Escape", [&] { press(Qt::Key_Escape, &stage.window.below); }},
            {"Escape in the page", [&] { press(Qt::Key_Escape, page); }},
            {"Escape in an input",
             [&] {
                 tap(stage.window, Pointer::Touch, stage.at(100, 80));
                 QVERIFY(waitForPage(*stage.view, u"document.activeElement.localName === 'input'"_s));
                 QTest::keyClick(&stage.window, Qt::Key_Escape);
             }},
            {"by the player, while another window is active",
             [&] {
                 page->forceActiveFocus();
                 HostWindow another;
                 QVERIFY(another.appear());
                 stage.view->setHidden(true);
             }},
        };
        for (const auto &[way, close] : ways) {
            const Case current(way);
            stage.view->setHidden(false);
            QVERIFY(stage.hostHasFocus()); // Showing takes none.
            close();
            stage.window.requestActivate();
            QVERIFY(stage.hides() && waitUntil([&] { return stage.window.below.hasActiveFocus(); }));
        }
        QVERIFY(stage.pageAnswers() && stage.view->frame() == firstPlace && stage.window.below.keys.isEmpty());
        QTest::keyClick(&stage.window, Qt::Key_Escape); // A hidden overlay leaves the key to the host.
        QCOMPARE(stage.window.below.keys, QList<int>{Qt::Key_Escape});
        stage.view->setHidden(false);
        page->forceActiveFocus();
        stage.view->setDelegate(nullptr);
        QVERIFY(stage.hostHasFocus());
        stage.view->setParentItem(nullptr);
        stage.superview.forceActiveFocus(); // In a window that is no longer the overlay's.
    }

    /// The overlay that was shown last takes Escape, then the other one, then the host's own shortcut.
    void escapeIsForTheTopmost()
    {
        Stage stage;
        QQmlEngine engine;
        const auto host =
            qmlItem(engine, "Item { property int uses; Shortcut { sequence: 'Esc'; onActivated: ++uses } }");
        host->setParentItem(stage.window.contentItem());
        ZVTopRecommendationView second(firstPlace);
        second.setParentItem(&stage.superview);
        QVERIFY(stage.window.appear());
        second.setHidden(false);
        stage.view->setHidden(false);
        QCOMPARE(stage.superview.childItems().last(), stage.view.get());

        QQuickItem dialog(&stage.superview);
        dialog.setZ(1);
        dialog.forceActiveFocus();
        QTest::keyClick(&stage.window, Qt::Key_Escape);
        QVERIFY(!stage.view->isHidden() && !second.isHidden() && host->property("uses") == 1);
        stage.window.below.forceActiveFocus();
        for (const auto &[first, other, uses] : {std::tuple(true, false, 1), {true, true, 1}, {true, true, 2}}) {
            QTest::keyClick(&stage.window, Qt::Key_Escape);
            QCOMPARE(stage.view->isHidden(), first);
            QCOMPARE(second.isHidden(), other);
            QCOMPARE(host->property("uses"), uses);
        }
    }

    /// The first valid address counts, and is tried again after a failure.
    void loads()
    {
        using zelvano::sandbox::Fault;
        for (const auto kind : {Fault::Kind::CutBeforeAnswer, Fault::Kind::HttpStatus}) {
            Fault fault;
            fault.kind = kind;
            sandbox.addFault(u"/layout/"_s, {}, fault);
            const LogCollector log;
            Overlay overlay;
            const auto failures = [&] {
                return log.beginningWith(u"Error: the layout page cannot be loaded ("_s).size();
            };
            overlay.view->setUrl(QUrl());
            overlay.view->setUrl(sandbox.url(u"/layout/"_s));
            QVERIFY(waitUntil([&] { return failures() == 1 || overlay.view->isReady(); }));
            overlay.view->setJsonSuggestions(u"[{}]"_s);
            overlay.view->setUrl(sandbox.url(u"/second"_s));
            QVERIFY(waitUntil([&] { return overlay.view->isReady(); }));
            overlay.view->pageDidFail(-3, u"A ready page did not fail."_s);
            overlay.view->setUrl(sandbox.url(u"/second"_s));
            QVERIFY(overlay.pageAnswers());
            QCOMPARE(overlay.view->webView()->property("url").toUrl(), sandbox.url(u"/layout/"_s));
            QCOMPARE(sandbox.hits(u"/second"_s), 0);
            QVERIFY(failures() <= 1);
        }
        const LogCollector log;
        Overlay().view->pageDidFail(-2, u"<html>No\n <b>page</b></html>"_s); // Chromium's reasons are HTML.
        QCOMPARE(log.lines(), QStringList{u"Error: the layout page cannot be loaded (-2): No page"_s});
    }

    /// The page's console is silent unless a developer turns the category on.
    void console()
    {
        const LogCollector log;
        Stage stage; // Fails on a warning of another category.
        stage.view->setUrl(pageOf(u"<script>console.warn('noise'); var pushed; "
                                  "function updateSuggestions(json) { pushed = json }</script>"_s));
        QVERIFY(waitForPage(*stage.view, u"window.updateSuggestions"_s));
        stage.view->setJsonSuggestions(u"[]"_s); // The page need not be ready.
        QVERIFY(flushMainQueue() && evaluate(*stage.view, u"pushed.length === 0"_s).toBool());
        evaluate(*stage.view, u"console.warn('noise'); nothing()"_s);
        QCOMPARE(log.lines(), QStringList());
        QLoggingCategory::setFilterRules(u"zelvano.page=true"_s);
        evaluate(*stage.view, u"console.log('heard')"_s);
        QVERIFY(waitUntil([&] { return !log.lines().isEmpty() && log.lines().last().endsWith(": heard"_L1); }));
        QLoggingCategory::setFilterRules(u"qt.webenginecontext=false"_s);
    }

    void clearedDelegateTakesThePageDown()
    {
        Stage stage;
        QVERIFY(stage.appear(
            listeningPage(u"<script>setInterval(() => { location.href = 'zelvano://index?1'; }, 1)</script>"_s)));
        QVERIFY(waitUntil([&] { return !stage.owner->selected.isEmpty(); }));
        const QPointer<QQuickItem> page(stage.view->webView());
        stage.view->setDelegate(nullptr);
        QVERIFY(!stage.view->webView() && stage.view->childItems().isEmpty() && (!page || !page->window()));
        QCOMPARE(stage.view->delegate(), stage.owner);

        const auto heard = stage.owner->selected.size();
        stage.view->setHidden(true);
        for (int time = 0; time < 2; ++time) // The owner hears of it each time.
            stage.view->setHidden(false);
        QCOMPARE(stage.owner->showings, 3);
        stage.view->setJsonSuggestions(u"[]"_s);
        stage.view->setDelegate(nullptr);
        stage.view->didSwipe(1);
        QVERIFY(stage.hides()); // A quarter of a second, in which the page would have spoken often.
        QCOMPARE(stage.owner->selected.size(), heard);
    }

    void rendererEnds_data()
    {
        addColumns<bool, bool, bool>({"wasShown", "isShown", "isEnded"});
        QTest::newRow("before the first showing") << false << false << false;
        QTest::newRow("shown") << true << true << false;
        QTest::newRow("hidden") << true << false << false;
        QTest::newRow("teardown") << true << true << true;
        QTest::newRow("teardown while hidden") << true << false << true;
    }

    void rendererEnds()
    {
        QFETCH(const bool, wasShown);
        QFETCH(const bool, isShown);
        QFETCH(const bool, isEnded);
        for (int rounds = figure("ZELVANO_ROUNDS", 5); rounds > 0; --rounds) {
            const LogCollector log;
            Stage stage;
            QVERIFY(wasShown ? stage.appear(listeningPage()) : stage.window.appear() && stage.load(listeningPage()));
            stage.view->setHidden(!isShown);
            const int showings = stage.owner->showings;
            QVERIFY(killRenderers() > 0);
            stage.view->setJsonSuggestions(u"[]"_s); // For a page that is gone.
            if (isEnded) {
                if (rounds % 2 == 0)
                    QTest::qWait(rounds % 5); // Before, while or after the end is noticed.
                stage.view->setDelegate(nullptr);
                stage.view.reset();
                QTest::qWait(20);
                continue;
            }
            QVERIFY(waitUntil([&] { return !stage.view->isReady(); }));
            QVERIFY(stage.view->isHidden());
            QVERIFY(waitUntil([&] { return stage.view->isReady(); }));
            QCOMPARE(log.beginningWith(u"Error: the renderer process of a web page ended (status 2, "_s).size(), 1);
            QVERIFY(stage.view->isHidden() && stage.owner->showings == showings);
            stage.view->setHidden(false);
            QVERIFY(waitForPicture(*stage.view) && stage.pageAnswers());
        }
    }

    /// Chromium crashes when the profile of a page ends while a download starts in it.
    void downloadsDuringTeardown()
    {
        const auto page = listeningPage(u"<script>setInterval(() => { const a = document.createElement('a');"
                                        "a.download = 'file'; a.href = Math.random() < 0.5"
                                        " ? URL.createObjectURL(new Blob(['x'.repeat(100000)]))"
                                        " : 'data:application/octet-stream,x'; a.click(); }, 1)</script>"_s);
        QList<QPointer<QObject>> profiles;
        for (int round = 0; round < figure("ZELVANO_ROUNDS", 25); ++round) {
            Stage stage;
            stage.window.show();
            stage.view->setHidden(false);
            QVERIFY(stage.load(page));
            const auto player = zelvano::QtKPViewController::create(page);
            auto *const web = round % 2 ? player->webView() : stage.view->webView();
            QVERIFY(waitUntil([&] { return web->property("loadProgress") == 100; }));
            for (const auto *view : {player->webView(), stage.view->webView()})
                profiles.append(view->property("profile").value<QObject *>());
        }
        QVERIFY(profiles.last()); // A profile outlives its page.
        QVERIFY(waitUntil([&] { return profiles.count(nullptr) == profiles.size(); }));
    }

    /// Chromium asks for permissions only for a secure page, one from this computer for example.
    void refusedToThePage()
    {
        Stage stage;
        QVERIFY(stage.appear(sandbox.url(u"/layout/"_s)));
        evaluate(*stage.view, u"window.answers = [];"
                              "Notification.requestPermission().then(answer => answers.push(answer));"
                              "navigator.geolocation.getCurrentPosition(() => answers.push('place'),"
                              "                                         error => answers.push(error.code));"
                              "const script = document.createElement('script');" // Of the host's compiled-in resources.
                              "script.onload = script.onerror = event => answers.push(event.type);"
                              "document.body.append(script); script.src = 'qrc:///qtwebchannel/qwebchannel.js'"_s);
        waitForPage(*stage.view, u"answers.length == 3"_s);
        QCOMPARE(evaluate(*stage.view, u"answers.sort().join() + typeof QWebChannel"_s).toString(),
                 u"1,denied,errorundefined"_s);
    }

    void hostilePage()
    {
        const auto link = u"const a = document.createElement('a'); %1; a.click()"_s;
        const std::pair<QByteArray, QString> scripts[] = {
            {"window", u"window.open('about:blank'); window.open('http://127.0.0.1/', 'x', 'width=90,height=90')"_s},
            {"other commands", u"location.href = 'zelvano://other?2'; location.href = 'other://index?2'"_s},
            {"dialogs", u"alert('a'); confirm('b'); prompt('c'); print()"_s},
            {"mail", u"location.href = 'mailto:a@b.example?subject=x'"_s},
            {"file", u"location.href = 'file:///etc/passwd'"_s},
            {"browser's pages", u"location.href = 'chrome://settings'"_s},
            {"telephone", u"const f = document.createElement('iframe'); f.src = 'tel:1'; document.body.append(f)"_s},
            {"download", link.arg(u"a.download = 'file'; a.href = 'data:application/octet-stream,x'"_s)},
            {"download of a page",
             link.arg(u"a.download = 'file.html'; a.href = URL.createObjectURL(new Blob(['x']))"_s)},
            {"new window link", link.arg(u"a.target = '_blank'; a.href = 'data:text/html,x'"_s)},
            {"focus", u"window.focus(); document.body.tabIndex = 0; document.body.focus()"_s},
            {"close", u"window.close()"_s}};
        for (const auto &[name, script] : scripts) {
            const Case current(name);
            const QTemporaryDir downloads;
            Stage stage;
            QVERIFY(stage.appear(listeningPage()));
            auto *profile = stage.view->webView()->property("profile").value<QObject *>();
            QVERIFY(profile && profile->setProperty("downloadPath", downloads.path()));
            const auto windows = QGuiApplication::allWindows();
            const auto page = stage.view->webView()->property("url");

            evaluate(*stage.view, script);
            QVERIFY(stage.pageAnswers());
            QCOMPARE(QGuiApplication::allWindows(), windows);
            QCOMPARE(stage.view->webView()->property("url"), page);
            QVERIFY(QDir(downloads.path()).isEmpty());
            QCOMPARE(opened, QList<QUrl>());
            QVERIFY(stage.window.visibility() == QWindow::Windowed && stage.hostHasFocus() && !stage.view->isHidden());
        }
    }
};

UI_TEST_MAIN(tst_TopRecommendationView)
#include "tst_TopRecommendationView.moc"
