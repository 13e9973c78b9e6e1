#include "Bundle.h"
#include "LogCollector.h"
#include "Sandbox.h"
#include "WebPage.h"
#include "ZVTopRecommendationContentView.h"
#include "ZVTopRecommendationView.h"

#include <QDesktopServices>
#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPropertyAnimation>
#include <QScopeGuard>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <functional>
#include <memory>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using zelvano::ZVTopRecommendationView;

namespace {

constexpr QRectF firstFrame{20, 64, 300, 200};

class Owner : public zelvano::ZVTopRecommendationViewDelegate
{
public:
    void didSelecteRecommendation(ZVTopRecommendationView *, qint64 index) override
    {
        selected.append(index);
        if (onSelection)
            onSelection();
    }
    void viewDidDismiss(ZVTopRecommendationView *) override { ++dismissals; }
    void recommendationViewDidLoad() override
    {
        ++showings;
        if (onShowing)
            onShowing();
    }

    QList<qint64> selected;
    int showings = 0;
    int dismissals = 0;
    std::function<void()> onSelection;
    std::function<void()> onShowing;
};

/// An overlay with its owner, in no window.
struct Overlay
{
    const std::shared_ptr<Owner> owner = std::make_shared<Owner>();
    std::unique_ptr<ZVTopRecommendationView> view = std::make_unique<ZVTopRecommendationView>(firstFrame);

    Overlay() { view->setDelegate(owner); }
    bool load(const QUrl &url)
    {
        view->setUrl(url);
        return waitUntil([this] { return view->isReady(); });
    }
    /// Everything that the page asked for before is over when this comes back.
    bool pageAnswers()
    {
        const auto before = owner->selected.size();
        evaluate(*view, u"location.href = 'zelvano://index?77'"_s);
        return waitUntil([&] { return owner->selected.size() > before && owner->selected.last() == 77; });
    }
};

/// The same over a host's window.
struct Stage : Overlay
{
    HostWindow window;
    QQuickItem superview;

    explicit Stage(const QRectF &frame = firstFrame, double superviewWidth = 800)
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
    QPoint at(double x, double y) const { return view->mapToScene({x, y}).toPoint(); }
    QQuickItem *dismissControl() const
    {
        return reinterpret_cast<QQuickItem *>(view->contentView())->findChild<QQuickItem *>(u"dismiss"_s);
    }
    QPoint dismissPoint() const
    {
        const auto *control = dismissControl();
        return control->mapToScene({control->width() / 2, control->height() / 2}).toPoint();
    }
    bool hides()
    {
        return waitUntil([this] { return view->isHidden(); });
    }
};

QByteArray jsonOf(const QJsonArray &videos)
{
    return QJsonDocument(videos).toJson(QJsonDocument::Indented);
}

QJsonArray someVideos(int count)
{
    QJsonArray videos;
    for (int i = 0; i < count; ++i)
        videos.append(QJsonObject{{u"title"_s, u"Video %1"_s.arg(i)}, {u"durationSec"_s, 12}});
    return videos;
}

} // namespace

/// Stands in for the programs that the system would start for an address.
class OpenedAddresses : public QObject
{
    Q_OBJECT

public:
    OpenedAddresses()
    {
        for (const auto &scheme : Schemes)
            QDesktopServices::setUrlHandler(scheme, this, "open");
    }
    ~OpenedAddresses() override
    {
        for (const auto &scheme : Schemes)
            QDesktopServices::unsetUrlHandler(scheme);
    }
    Q_SLOT void open(const QUrl &address) { addresses.append(address); }

    QList<QUrl> addresses;

private:
    inline static const QStringList Schemes{u"mailto"_s, u"tel"_s, u"file"_s, u"http"_s, u"chrome"_s};
};

class tst_TopRecommendationView : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(sandbox.start()); }
    void cleanup() { sandbox.clearFaults(); }

    void withoutItsInterface_data();
    void withoutItsInterface();
    void loadsOneUrlOnly();
    void suggestionsReachThePage();
    void textIsPushedForEachCall();
    void anyTextIsJsonForThePage_data();
    void anyTextIsJsonForThePage();
    void navigations_data();
    void navigations();
    void pageSendsCommands();
    void showingTellsTheOwnerFirst();
    void tapInThePage_data();
    void tapInThePage();
    void swipe_data();
    void swipe();
    void dismissControl_data();
    void dismissControl();
    void escape_data();
    void escape();
    void focusIsGivenBack_data();
    void focusIsGivenBack();
    void clearedDelegateTakesThePageDown();
    void endsWhileLoading_data();
    void endsWhileLoading();
    void hostilePage_data();
    void hostilePage();

private:
    zelvano::sandbox::Sandbox sandbox;
};

void tst_TopRecommendationView::withoutItsInterface_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::newRow("no file") << QByteArray();
    QTest::newRow("broken") << QByteArray("import QtQuick\nItem { nothing: }");
    QTest::newRow("no item") << QByteArray("import QtQml\nQtObject { property var owner }");
    QTest::newRow("without web view") << QByteArray("import QtQuick\nItem { property var owner }");
}

/// A host's own bundle may lack anything: the overlay is empty then, and the video plays on.
void tst_TopRecommendationView::withoutItsInterface()
{
    QFETCH(const QByteArray, file);
    const QTemporaryDir folder;
    const auto write = [&](const QString &name, const QByteArray &text) {
        QFile out(folder.filePath(name));
        QVERIFY(out.open(QIODevice::WriteOnly) && out.write(text) == text.size());
    };
    write(u"Info.json"_s, "{\"CFBundleIdentifier\": \"ZelvanoUI\"}");
    if (!file.isNull())
        write(u"ZVTopRecommendationView.qml"_s, file);
    zelvano::Bundle::load(*zelvano::Bundle::atPath(folder.path()));
    const auto own =
        qScopeGuard([] { zelvano::Bundle::load(*zelvano::Bundle::atPath(u":/ZelvanoUIResources.bundle"_s)); });
    const LogCollector log;
    Stage stage;
    QCOMPARE(log.lines().size(), file.endsWith("var owner }") && !file.contains("QtObject") ? 0 : 1);
    QVERIFY(!stage.view->webView() && !stage.view->contentView());
    stage.view->setUrl(sandbox.url(u"/layout/"_s));
    stage.view->setJsonSuggestions(u"[]"_s);
    stage.view->setHidden(false);
    stage.view->setFrame({0, 0, 10, 10});
    stage.view->didSwipe(1);
    QVERIFY(stage.hides());
    stage.view->setDelegate(nullptr);
    QVERIFY(!stage.view->isReady());
}

void tst_TopRecommendationView::loadsOneUrlOnly()
{
    Overlay overlay;
    overlay.view->setUrl(QUrl());
    QVERIFY(overlay.load(sandbox.url(u"/layout/"_s)));
    overlay.view->setUrl(sandbox.url(u"/second"_s));
    QVERIFY(overlay.pageAnswers());
    QCOMPARE(overlay.view->url(), sandbox.url(u"/layout/"_s));
    QCOMPARE(overlay.view->webView()->property("url").toUrl(), sandbox.url(u"/layout/"_s));
    QCOMPARE(sandbox.hits(u"/second"_s), 0);
}

void tst_TopRecommendationView::suggestionsReachThePage()
{
    Overlay overlay;
    QVERIFY(overlay.load(listeningPage()));
    // Nothing was set: the page is told of an absent object.
    QCOMPARE(evaluate(*overlay.view, u"JSON.stringify(got)"_s).toString(), u"[null]"_s);
    overlay.view->setJsonSuggestions(u"[{\"a\": 1}]"_s);
    QVERIFY(flushMainQueue());
    QCOMPARE(evaluate(*overlay.view, u"JSON.stringify(got)"_s).toString(), u"[null,[{\"a\":1}]]"_s);
    evaluate(*overlay.view, u"location.href = 'zelvano://ready?again'"_s);
    QVERIFY(waitForPage(*overlay.view, u"got.length === 3"_s));
    QCOMPARE(evaluate(*overlay.view, u"JSON.stringify(got[2])"_s).toString(), u"[{\"a\":1}]"_s);
}

void tst_TopRecommendationView::textIsPushedForEachCall()
{
    Overlay overlay;
    QVERIFY(overlay.load(listeningPage()));
    overlay.view->setJsonSuggestions(u"[1]"_s);
    overlay.view->setJsonSuggestions(u"[2]"_s);
    QVERIFY(flushMainQueue());
    QCOMPARE(evaluate(*overlay.view, u"JSON.stringify(got)"_s).toString(), u"[null,[2],[2]]"_s);
    overlay.view->setJsonSuggestions(u"[3]"_s);
    overlay.view.reset(); // With the push pending.
    QVERIFY(flushMainQueue());
}

void tst_TopRecommendationView::anyTextIsJsonForThePage_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("quotes") << u"\"'`\\ \\\" ${got} '); alert(1); ("_s;
    QTest::newRow("script end") << u"</script><script>got = 'taken'</script><!--"_s;
    QTest::newRow("line separators") << u"a\u2028b\u2029c\r\nd\u0085"_s;
    QTest::newRow("control characters") << u"\x01\x1f\x7f\t\b"_s + QChar(u'\0') + u"end"_s;
    QTest::newRow("beyond the first plane") << u"\U0001F600 \u0645\u0631\u062d\u0628\u0627 \u202e right to left"_s;
    QTest::newRow("long") << u"\u00e4\"\\"_s.repeated(200000);
}

void tst_TopRecommendationView::anyTextIsJsonForThePage()
{
    QFETCH(const QString, text);
    Overlay overlay;
    QVERIFY(overlay.load(listeningPage()));
    const QJsonArray videos{QJsonObject{{u"title"_s, text}, {text.left(50), true}}};
    overlay.view->setJsonSuggestions(QString::fromUtf8(jsonOf(videos)));
    QVERIFY(flushMainQueue());
    const auto arrived = evaluate(*overlay.view, u"JSON.stringify(got[1])"_s).toString();
    QCOMPARE(QJsonDocument::fromJson(arrived.toUtf8()).array(), videos);
}

void tst_TopRecommendationView::navigations_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<bool>("loads");
    QTest::addColumn<bool>("ready");
    QTest::addColumn<QList<qint64>>("selected");
    const QList<qint64> none;
    QTest::newRow("ready") << u"zelvano://ready"_s << false << true << none;
    QTest::newRow("ready as a part") << u"zelvano://page/already?x"_s << false << true << none;
    QTest::newRow("both words") << u"zelvano://index?2&ready"_s << false << true << none;
    QTest::newRow("index") << u"zelvano://index?2"_s << false << false << QList<qint64>{2};
    QTest::newRow("index as a part") << u"zelvano://video/reindexed?5"_s << false << false << QList<qint64>{5};
    QTest::newRow("no digits") << u"zelvano://index?abc"_s << false << false << QList<qint64>{0};
    QTest::newRow("nothing behind") << u"zelvano://index?"_s << false << false << QList<qint64>{0};
    QTest::newRow("leading digits") << u"zelvano://index?12abc3"_s << false << false << QList<qint64>{12};
    QTest::newRow("second piece") << u"zelvano://index?3?4"_s << false << false << QList<qint64>{3};
    QTest::newRow("plus") << u"zelvano://index?+7"_s << false << false << QList<qint64>{7};
    QTest::newRow("negative") << u"zelvano://index?-1"_s << false << false << QList<qint64>{-1};
    QTest::newRow("too large") << u"zelvano://index?99999999999"_s << false << false << QList<qint64>{2147483647};
    QTest::newRow("too small") << u"zelvano://index?-99999999999"_s << false << false << QList<qint64>{-2147483648};
    QTest::newRow("endless") << u"zelvano://index?"_s + u"9"_s.repeated(5000) << false << false
                             << QList<qint64>{2147483647};
    QTest::newRow("no position") << u"zelvano://index"_s << false << false << none;
    QTest::newRow("position as path") << u"zelvano://index/2"_s << false << false << none;
    QTest::newRow("neither word") << u"zelvano://other?2"_s << false << false << none;
    QTest::newRow("scheme in capitals") << u"ZELVANO://index?2"_s << false << false << QList<qint64>{2};
    QTest::newRow("web page") << u"http://127.0.0.1/ready?2"_s << true << false << none;
    QTest::newRow("secure web page") << u"https://127.0.0.1/index?2"_s << true << false << none;
    QTest::newRow("command inside") << u"http://127.0.0.1/?zelvano://index?2"_s << true << false << none;
    QTest::newRow("scheme that begins so") << u"zelvano-x://index?2"_s << true << false << none;
    QTest::newRow("no authority") << u"zelvano:index?2"_s << true << false << none;
    QTest::newRow("no address") << QString() << true << false << none;
}

void tst_TopRecommendationView::navigations()
{
    QFETCH(const QString, address);
    QFETCH(const bool, loads);
    QFETCH(const bool, ready);
    QFETCH(const QList<qint64>, selected);
    const LogCollector log;
    Overlay overlay;
    overlay.view->setIsFirstLoad(false);
    QCOMPARE(overlay.view->shouldStartLoadWithRequest(QUrl(address)), loads);
    QCOMPARE(overlay.view->isReady(), ready);
    QCOMPARE(overlay.owner->selected, selected);
    QCOMPARE(overlay.view->isFirstLoad(), !selected.isEmpty());
    const bool isDropped = address.startsWith("zelvano://index"_L1) && !address.contains(u'?');
    QCOMPARE(log.lines().size(), isDropped ? 1 : 0);
}

void tst_TopRecommendationView::pageSendsCommands()
{
    Overlay overlay;
    QVERIFY(overlay.load(listeningPage()));
    QList<qint64> expected;
    const QList<std::pair<QString, qint64>> commands{
        {u"location.href = 'zelvano://index?2'"_s, 2},
        {u"location.assign('zelvano://index?-1')"_s, -1},
        {u"location.replace('ZELVANO://index?99999999999')"_s, 2147483647},
        {u"window.open('zelvano://index?5', '_self')"_s, 5},
        {u"{ const a = document.createElement('a'); a.href = 'zelvano://index?6'; a.click(); }"_s, 6},
    };
    for (const auto &[script, index] : commands) {
        evaluate(*overlay.view, script);
        expected.append(index);
        QVERIFY2(waitUntil([&] { return overlay.owner->selected == expected; }), qPrintable(script));
    }
    for (const auto &ignored :
         {u"zelvano://index"_s, u"zelvano://other?2"_s, u"zelvano:index?2"_s, u"other://index?2"_s}) {
        evaluate(*overlay.view, u"location.href = '%1'"_s.arg(ignored));
        QVERIFY(overlay.pageAnswers());
        expected.append(77);
        QCOMPARE(overlay.owner->selected, expected);
    }
    QCOMPARE(evaluate(*overlay.view, u"got.length"_s).toInt(), 1); // Still the same page.
}

void tst_TopRecommendationView::showingTellsTheOwnerFirst()
{
    Stage stage;
    bool wasHidden = false;
    stage.owner->onShowing = [&] { wasHidden = stage.view->isHidden() && !stage.view->isVisible(); };
    stage.view->setHidden(false);
    QVERIFY(wasHidden);
    QVERIFY(stage.view->isVisible());
    stage.view->setHidden(false);
    QCOMPARE(stage.owner->showings, 2);
    stage.view->setHidden(true);
    QVERIFY(!stage.view->isVisible());
    stage.view->setParentItem(nullptr);
    stage.view->setParentItem(&stage.superview);
    QCOMPARE(stage.owner->showings, 2);
    QVERIFY(stage.view->isHidden());
}

void tst_TopRecommendationView::tapInThePage_data()
{
    QTest::addColumn<Pointer>("pointer");
    QTest::newRow("mouse") << Pointer::Mouse;
    QTest::newRow("touch") << Pointer::Touch;
}

void tst_TopRecommendationView::tapInThePage()
{
    QFETCH(const Pointer, pointer);
    Stage stage({100, 50, 640, 360});
    stage.view->setJsonSuggestions(QString::fromUtf8(jsonOf(someVideos(4))));
    QVERIFY(stage.appear(sandbox.url(u"/layout/"_s)));
    QVERIFY(waitForPage(*stage.view, u"document.querySelectorAll('[data-index]').length === 4"_s));
    tap(stage.window, pointer, centreOfVideo(*stage.view, 2));
    QVERIFY(waitUntil([&] { return !stage.owner->selected.isEmpty(); }));
    QCOMPARE(stage.owner->selected, QList<qint64>{2});
    QVERIFY(!stage.view->isHidden());
    QCOMPARE(stage.window.below.presses + stage.window.below.touches, 0);
}

void tst_TopRecommendationView::swipe_data()
{
    QTest::addColumn<Pointer>("pointer");
    QTest::addColumn<QPoint>("way");
    QTest::addColumn<double>("end");
    QTest::newRow("mouse, right") << Pointer::Mouse << QPoint(120, 10) << 675.0;
    QTest::newRow("mouse, left") << Pointer::Mouse << QPoint(-120, 10) << -300.0;
    QTest::newRow("touch, right") << Pointer::Touch << QPoint(120, -10) << 675.0;
    QTest::newRow("touch, left") << Pointer::Touch << QPoint(-120, 0) << -300.0;
}

void tst_TopRecommendationView::swipe()
{
    QFETCH(const Pointer, pointer);
    QFETCH(const QPoint, way);
    QFETCH(const double, end);
    Stage stage({20, 64, 300, 200}, 375);
    QVERIFY(stage.appear(listeningPage()));
    QElapsedTimer clock;
    clock.start();
    drag(stage.window, pointer, stage.at(150, 100), way);
    QVERIFY(!stage.view->isHidden());
    QVERIFY(stage.hides());
    QVERIFY(clock.elapsed() >= 240);
    QCOMPARE(stage.view->frame(), QRectF(end, 64, 300, 200));
    QVERIFY(stage.owner->selected.isEmpty());
    QCOMPARE(stage.owner->dismissals, 0);
}

void tst_TopRecommendationView::dismissControl_data()
{
    using Action = std::function<void(Stage &)>;
    QTest::addColumn<Action>("action");
    const auto press = [](Qt::Key key) {
        return Action([key](Stage &stage) {
            stage.dismissControl()->forceActiveFocus();
            QTest::keyClick(&stage.window, key);
        });
    };
    QTest::newRow("mouse") << Action([](Stage &stage) { tap(stage.window, Pointer::Mouse, stage.dismissPoint()); });
    QTest::newRow("touch") << Action([](Stage &stage) { tap(stage.window, Pointer::Touch, stage.dismissPoint()); });
    QTest::newRow("space") << press(Qt::Key_Space);
    QTest::newRow("return") << press(Qt::Key_Return);
    QTest::newRow("enter") << press(Qt::Key_Enter);
}

void tst_TopRecommendationView::dismissControl()
{
    QFETCH(const std::function<void(Stage &)>, action);
    Stage stage;
    QVERIFY(stage.appear(listeningPage(u"<style>body { margin: 0 }</style><button style='width: 100%; height: 100vh'"
                                       " onclick=\"location.href = 'zelvano://index?1'\">x</button>"_s)));
    action(stage);
    QVERIFY(stage.hides());
    QVERIFY(stage.pageAnswers());
    QCOMPARE(stage.owner->selected, QList<qint64>{77}); // Not through to the page.
    QCOMPARE(stage.view->frame(), firstFrame);
    QCOMPARE(stage.owner->dismissals, 0);
    QCOMPARE(stage.window.activeFocusItem(), &stage.window.below);
}

void tst_TopRecommendationView::escape_data()
{
    QTest::addColumn<QString>("focus");
    QTest::newRow("host's item") << QString();
    QTest::newRow("page") << u"document.body.focus()"_s;
    QTest::newRow("text field of the page") << u"document.querySelector('input').focus()"_s;
}

void tst_TopRecommendationView::escape()
{
    QFETCH(const QString, focus);
    Stage stage;
    QVERIFY(stage.appear(listeningPage(u"<input>"_s)));
    if (!focus.isNull()) {
        stage.view->webView()->forceActiveFocus();
        evaluate(*stage.view, focus);
    }
    QTest::keyClick(&stage.window, Qt::Key_Escape);
    QVERIFY(stage.hides());
    QVERIFY(stage.window.below.keys.isEmpty());
    QCOMPARE(stage.window.activeFocusItem(), &stage.window.below);
    QTest::keyClick(&stage.window, Qt::Key_Escape); // Hidden, it leaves the key to the host.
    QCOMPARE(stage.window.below.keys, QList<int>{Qt::Key_Escape});
}

void tst_TopRecommendationView::focusIsGivenBack_data()
{
    tapInThePage_data();
}

void tst_TopRecommendationView::focusIsGivenBack()
{
    QFETCH(const Pointer, pointer);
    Stage stage;
    QQuickItem other(stage.window.contentItem());
    QVERIFY(stage.appear(listeningPage(u"<input style='width: 200px; height: 150px'>"_s)));
    other.forceActiveFocus();
    tap(stage.window, pointer, stage.at(100, 80));
    QVERIFY(waitUntil([&] { return stage.view->hasActiveFocus(); }));
    QVERIFY(waitForPage(*stage.view, u"document.activeElement === document.querySelector('input')"_s));
    stage.view->setHidden(true);
    QCOMPARE(stage.window.activeFocusItem(), &other);

    stage.view->setHidden(false);
    QCOMPARE(stage.window.activeFocusItem(), &other); // Showing takes nothing.
    stage.view->webView()->forceActiveFocus();
    stage.view->setDelegate(nullptr);
    QCOMPARE(stage.window.activeFocusItem(), &other);
}

void tst_TopRecommendationView::clearedDelegateTakesThePageDown()
{
    Stage stage;
    QVERIFY(stage.appear(
        listeningPage(u"<script>setInterval(() => { location.href = 'zelvano://index?1'; }, 1)</script>"_s)));
    QVERIFY(waitUntil([&] { return !stage.owner->selected.isEmpty(); }));
    const QPointer<QQuickItem> page(stage.view->webView());
    stage.view->setDelegate(nullptr);
    QVERIFY(!stage.view->webView());
    QVERIFY(!page || !page->window());
    QVERIFY(stage.view->childItems().isEmpty());
    QCOMPARE(stage.view->delegate(), stage.owner);

    const auto heard = stage.owner->selected.size();
    stage.view->setHidden(true);
    stage.view->setHidden(false);
    QCOMPARE(stage.owner->showings, 2);
    stage.view->setJsonSuggestions(u"[]"_s);
    stage.view->setDelegate(nullptr);
    stage.view->didSwipe(1);
    QVERIFY(stage.hides()); // A quarter of a second, in which the page would have spoken often.
    QCOMPARE(stage.owner->selected.size(), heard);
}

void tst_TopRecommendationView::endsWhileLoading_data()
{
    using Kind = zelvano::sandbox::Fault::Kind;
    QTest::addColumn<int>("kind");
    QTest::newRow("silence") << static_cast<int>(Kind::Silence);
    QTest::newRow("drip") << static_cast<int>(Kind::Drip);
    QTest::newRow("cut") << static_cast<int>(Kind::CutWithinAnswer);
}

void tst_TopRecommendationView::endsWhileLoading()
{
    QFETCH(const int, kind);
    zelvano::sandbox::Fault fault;
    fault.kind = static_cast<zelvano::sandbox::Fault::Kind>(kind);
    fault.delay = 5ms;
    sandbox.addFault(u"/layout/"_s, {}, fault);
    const int before = sandbox.hits(u"/layout/"_s);
    Stage stage;
    QVERIFY(stage.window.appear());
    stage.view->setUrl(sandbox.url(u"/layout/"_s));
    stage.view->setHidden(false);
    QVERIFY(waitUntil([&] { return sandbox.hits(u"/layout/"_s) > before; }));
    stage.view->setJsonSuggestions(u"[1]"_s);
    stage.view->didSwipe(1);
    stage.view.reset();
    QVERIFY(flushMainQueue());
    Overlay next; // The engine goes on.
    QVERIFY(next.load(listeningPage()));
}

void tst_TopRecommendationView::hostilePage_data()
{
    QTest::addColumn<QString>("script");
    QTest::newRow("window")
        << u"window.open('about:blank'); window.open('http://127.0.0.1/', 'x', 'width=90,height=90')"_s;
    QTest::newRow("dialogs") << u"alert('a'); confirm('b'); prompt('c'); print()"_s;
    QTest::newRow("leave dialog") << u"onbeforeunload = event => { event.preventDefault(); return 'no' }"_s;
    QTest::newRow("download") << u"{ const a = document.createElement('a'); a.download = 'file.txt';"
                                 "a.href = 'data:application/octet-stream,x'; a.click(); }"_s;
    QTest::newRow("download of a page") << u"{ const a = document.createElement('a'); a.download = 'file.html';"
                                           "a.href = URL.createObjectURL(new Blob(['x'])); a.click(); }"_s;
    QTest::newRow("mail") << u"location.href = 'mailto:a@b.example?subject=x'"_s;
    QTest::newRow("telephone")
        << u"{ const f = document.createElement('iframe'); f.src = 'tel:123'; document.body.append(f); }"_s;
    QTest::newRow("file") << u"location.href = 'file:///etc/passwd'"_s;
    QTest::newRow("file frame") << u"{ const f = document.createElement('iframe'); f.src = 'file:///etc/passwd';"
                                   "document.body.append(f); }"_s;
    QTest::newRow("browser's pages") << u"location.href = 'chrome://settings'"_s;
    QTest::newRow("source") << u"location.href = 'view-source:http://127.0.0.1/'"_s;
    QTest::newRow("new window link") << u"{ const a = document.createElement('a'); a.target = '_blank';"
                                        "a.href = 'data:text/html,x'; a.click(); }"_s;
    QTest::newRow("permissions")
        << u"navigator.geolocation?.getCurrentPosition(() => {}); Notification.requestPermission();"
           "navigator.mediaDevices?.getUserMedia({audio: true, video: true}).catch(() => {})"_s;
    QTest::newRow("file choice") << u"{ const i = document.createElement('input'); i.type = 'file'; i.click(); }"_s;
    QTest::newRow("focus") << u"window.focus(); document.body.tabIndex = 0; document.body.focus()"_s;
    QTest::newRow("close") << u"window.close()"_s;
}

void tst_TopRecommendationView::hostilePage()
{
    QFETCH(const QString, script);
    OpenedAddresses opened;
    const QTemporaryDir downloads;
    Stage stage;
    QVERIFY(stage.appear(listeningPage()));
    auto *profile = stage.view->webView()->property("profile").value<QObject *>();
    QVERIFY(profile && profile->setProperty("downloadPath", downloads.path()));
    const auto windows = QGuiApplication::allWindows();
    const auto page = stage.view->webView()->property("url");

    evaluate(*stage.view, script);
    QVERIFY(stage.pageAnswers());
    QCOMPARE(stage.owner->selected, QList<qint64>{77});
    QCOMPARE(QGuiApplication::allWindows(), windows);
    QCOMPARE(stage.view->webView()->property("url"), page);
    QVERIFY(QDir(downloads.path()).isEmpty());
    QCOMPARE(opened.addresses, QList<QUrl>());
    QVERIFY(stage.window.visibility() == QWindow::Windowed);
    QCOMPARE(stage.window.activeFocusItem(), &stage.window.below);
    QVERIFY(!stage.view->isHidden());
}

int main(int argc, char **argv)
{
    return runUiTest<tst_TopRecommendationView>(argc, argv);
}
#include "tst_TopRecommendationView.moc"
